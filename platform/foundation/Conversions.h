// The platform's forgiving readings of a number or string: what every definition value passes through.
#pragma once

#include "platform/foundation/Value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace quillomat {

/// Text: leading white space, an optional sign, then digits; saturates at 32 bits; 0 when no digits come first.
[[nodiscard]] std::int32_t intValue(std::string_view text);
/// Numbers drop their fraction and saturate (NaN reads 0); text as above; booleans read 0 or 1; everything else reads
/// 0.
[[nodiscard]] std::int32_t intValue(const Value& value);

/// Text: leading white space, then a decimal number with optional sign, fraction and exponent; 0 when there is none.
/// Too large numbers saturate, so what comes out is finite always.
[[nodiscard]] float floatValue(std::string_view text);
[[nodiscard]] float floatValue(const Value& value);

/// Text: after leading white space, sign and zeros, true when the next character is Y, y, T, t or a digit 1-9.
[[nodiscard]] bool boolValue(std::string_view text);
/// Numbers are true unless 0; text as above; everything else is false.
[[nodiscard]] bool boolValue(const Value& value);

/// The text of a value where a format has "%@": strings as they are, numbers as decimal text, booleans as 1 and 0, a
/// missing value "(null)", a JSON null "<null>", containers in a readable one-line JSON form.
[[nodiscard]] std::string describe(const Value& value);

/// A number as decimal text: the shortest one that reads back as the same number, without a fraction when it has none
/// (12, 0.1, -0.5), with an exponent only where the digits alone would be unreadable.
[[nodiscard]] std::string numberText(double number);

/// `text` with every occurrence of `what` (not empty) replaced, left to right, without looking at the result again.
[[nodiscard]] std::string replaceAll(std::string_view text, std::string_view what, std::string_view with);

} // namespace quillomat
