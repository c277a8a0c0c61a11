#include "cli/Messages.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <unistd.h>

namespace quillomat {

namespace {

void writeTo(std::FILE* stream, std::string text) {
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), stream);
}

} // namespace

std::string printable(std::string_view text) {
    std::string result(text);
    unsigned char previous = 0;
    for (char& c : result) {
        const auto code = static_cast<unsigned char>(c);
        const bool isSecondHalf = previous == 0xc2 && code >= 0x80 && code < 0xa0;
        if (code < 0x20 || code == 0x7f || isSecondHalf) {
            c = '?';
        }
        previous = code;
    }
    return result;
}

void complain(std::string_view what, std::string_view why) {
    writeTo(stderr, "quillomat: " + printable(what) + ": " + printable(why));
}

void warn(std::string_view what, std::string_view why) {
    writeTo(stderr, "quillomat: warning: " + printable(what) + ": " + printable(why));
}

ExitStatus fail(std::string_view what, std::string_view why) {
    complain(what, why);
    return ExitStatus::failed;
}

ExitStatus failUsage(std::string_view what, std::string_view why) {
    complain(what, why);
    return ExitStatus::wrongUsage;
}

void printLine(std::string_view line) {
    writeTo(stdout, std::string(line));
}

void printJson(const Value& value) {
    const std::string text = writeJson(value);
    std::fwrite(text.data(), 1, text.size(), stdout);
}

Status finishResults() {
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        return Failure{errno != 0 ? systemReason(errno) : std::string("could not be written to")};
    }
    return {};
}

std::string systemReason(int error) {
    std::string text = std::generic_category().message(error);
    if (!text.empty()) {
        text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    }
    return text;
}

bool isResultOnTerminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

} // namespace quillomat
