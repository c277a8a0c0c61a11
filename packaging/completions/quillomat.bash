# Bash completion of the quillomat command.

# The catalogue as the line so far names it, mockup names only.
_quillomat_mockups() {
    local i options=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${words[i]} in
            --documents | --resources) options+=("${words[i]}" "${words[i + 1]}") ;;
        esac
    done
    quillomat "${options[@]}" list 2>/dev/null | cut -f 2 | sort -u
}

_quillomat() {
    local cur prev words cword
    _init_completion -n = || return

    local global="--documents --resources --server --cacert --screen-scale --memory --trace --json -v --verbose --help"
    local commands="list show render replay import delete update publish"
    local command="" i takes="--documents --resources --server --cacert --screen-scale --memory --trace \
        -s --screenshot -b --background --crop --dump -o --output --row"
    local place=0
    for ((i = 1; i < cword; i++)); do
        if [[ " $takes " == *" ${words[i]} "* ]]; then
            ((i++))
        elif [[ ${words[i]} != -* ]]; then
            if [[ -z $command ]]; then command=${words[i]}; else ((place++)); fi
        fi
    done

    case $prev in
        --documents | --resources) _filedir -d; return ;;
        --cacert | --trace | --dump) _filedir; return ;;
        --server | --screen-scale | --memory | --crop | --row) return ;;
        -s | --screenshot | -b | --background) _filedir '@(png|jpg|jpeg|webp|heic|heif|avif)'; return ;;
        -o | --output) _filedir png; return ;;
    esac

    if [[ $cur == -* ]]; then
        local own=""
        case $command in
            "") own="--version" ;;
            render) own="-s --screenshot -b --background --crop --blur --glare --best --dump -o --output" ;;
            replay) own="--best -o --output" ;;
            import) own="--replace" ;;
            update) own="--check" ;;
            publish) own="--row" ;;
        esac
        COMPREPLY=($(compgen -W "$own $global" -- "$cur"))
        return
    fi

    case $command in
        "") COMPREPLY=($(compgen -W "$commands" -- "$cur")) ;;
        show | render | delete)
            if ((place == 0)); then
                local IFS=$'\n'
                COMPREPLY=($(compgen -W "$(_quillomat_mockups)" -- "$cur"))
            fi
            ;;
        import) _filedir '@(cfg|png)' ;;
        replay) _filedir ;;
        publish) _filedir -d ;;
    esac
} && complete -F _quillomat quillomat
