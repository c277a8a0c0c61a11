# Fish completion of the quillomat command.

function __quillomat_mockups
    set -l given
    set -l words (commandline -opc)
    for i in (seq 2 (count $words))
        if contains -- $words[$i] --documents --resources; and test $i -lt (count $words)
            set -a given $words[$i] $words[(math $i + 1)]
        end
    end
    quillomat $given list 2>/dev/null | cut -f 2 | sort -u
end

function __quillomat_needs_mockup
    __fish_seen_subcommand_from show render delete; or return 1
    set -l mockups (__quillomat_mockups)
    for word in (commandline -opc)
        contains -- $word $mockups; and return 1
    end
    return 0
end

set -l commands list show render replay import delete update publish
complete -c quillomat -f
complete -c quillomat -n "not __fish_seen_subcommand_from $commands" -a list -d 'Rows and their mockups'
complete -c quillomat -n "not __fish_seen_subcommand_from $commands" -a show -d "A mockup's definition"
complete -c quillomat -n "not __fish_seen_subcommand_from $commands" -a render -d 'Put screenshots into a mockup'
complete -c quillomat -n "not __fish_seen_subcommand_from $commands" -a replay -d 'Draw again what render --dump wrote'
complete -c quillomat -n "not __fish_seen_subcommand_from $commands" -a import -d 'Copy frames into the documents directory'
complete -c quillomat -n "not __fish_seen_subcommand_from $commands" -a delete -d 'Remove an imported mockup'
complete -c quillomat -n "not __fish_seen_subcommand_from $commands" -a update -d 'Fetch the published catalogue'
complete -c quillomat -n "not __fish_seen_subcommand_from $commands" -a publish -d 'Make the folder a web server serves'
complete -c quillomat -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'

complete -c quillomat -l documents -x -a '(__fish_complete_directories)' -d 'Documents directory'
complete -c quillomat -l resources -x -a '(__fish_complete_directories)' -d 'Application resources'
complete -c quillomat -l server -x -d "The maker's web server"
complete -c quillomat -l cacert -r -F -d 'Trust this authority as well'
complete -c quillomat -l screen-scale -x -d 'Scale for intermediate pictures'
complete -c quillomat -l memory -x -d 'Ceiling for one render'
complete -c quillomat -l trace -r -F -d 'File for the stages of the work'
complete -c quillomat -l json -d 'Machine-readable results'
complete -c quillomat -s v -l verbose -d 'Log lines on standard error'
complete -c quillomat -s h -l help -d 'Help'

complete -c quillomat -n __quillomat_needs_mockup -a '(__quillomat_mockups)' -d Mockup
complete -c quillomat -n '__fish_seen_subcommand_from render' -s s -l screenshot -r -F -d 'A screenshot'
complete -c quillomat -n '__fish_seen_subcommand_from render' -s b -l background -r -F -d 'A picture behind everything'
complete -c quillomat -n '__fish_seen_subcommand_from render' -l crop -x -d 'Part of the background: X,Y,W,H'
complete -c quillomat -n '__fish_seen_subcommand_from render' -l blur -d 'Blur the background'
complete -c quillomat -n '__fish_seen_subcommand_from render' -l glare -d "Draw the mockup's glare"
complete -c quillomat -n '__fish_seen_subcommand_from render replay' -l best -d 'The smallest file'
complete -c quillomat -n '__fish_seen_subcommand_from render' -l dump -r -F -d 'File for what is drawn'
complete -c quillomat -n '__fish_seen_subcommand_from replay' -F
complete -c quillomat -n '__fish_seen_subcommand_from render replay' -s o -l output -r -F -d 'The picture to write'
complete -c quillomat -n '__fish_seen_subcommand_from import' -F
complete -c quillomat -n '__fish_seen_subcommand_from import' -l replace -d 'Replace stored files'
complete -c quillomat -n '__fish_seen_subcommand_from update' -l check -d 'Only compare'
complete -c quillomat -n '__fish_seen_subcommand_from publish' -l row -x -d 'Row that imported frames join'
complete -c quillomat -n '__fish_seen_subcommand_from publish' -x -a '(__fish_complete_directories)'
