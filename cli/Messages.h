// What the command says: results on standard output, everything else on standard error, one line each.
#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"

#include <string>
#include <string_view>

namespace quillomat {

/// How a command ends.
enum class ExitStatus { done = 0, failed = 1, wrongUsage = 2 };

/// "quillomat: what: why" on standard error; control characters (in names from outside) become "?".
void complain(std::string_view what, std::string_view why);
/// "quillomat: warning: what: why".
void warn(std::string_view what, std::string_view why);
/// Complains and gives the status of a failure.
ExitStatus fail(std::string_view what, std::string_view why);
ExitStatus failUsage(std::string_view what, std::string_view why);

/// One line of results.
void printLine(std::string_view line);
/// One JSON document as the result.
void printJson(const Value& value);

/// Hands on what was printed; fails when the reader went away or the disk is full.
[[nodiscard]] Status finishResults();

/// Whether results go to a person's terminal.
[[nodiscard]] bool isResultOnTerminal();
/// What the system says about one of its error numbers, in our style.
[[nodiscard]] std::string systemReason(int error);
/// The text with every control character replaced by "?", also those of two bytes that some terminals obey.
[[nodiscard]] std::string printable(std::string_view text);

} // namespace quillomat
