#include "cli/Messages.h"

#include <cstdio>
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
    for (char& c : result) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x20 || code == 0x7f) {
            c = '?';
        }
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

bool isResultOnTerminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

} // namespace quillomat
