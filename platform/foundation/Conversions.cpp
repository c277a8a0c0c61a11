#include "platform/foundation/Conversions.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace quillomat {

namespace {

bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

void skipSpace(std::string_view& text) {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
}

/// Takes an optional sign off the front; true when it was a minus.
bool takeSign(std::string_view& text) {
    if (text.empty() || (text.front() != '-' && text.front() != '+')) {
        return false;
    }
    const bool negative = text.front() == '-';
    text.remove_prefix(1);
    return negative;
}

std::size_t digitsFrom(std::string_view text, std::size_t start) {
    std::size_t count = 0;
    while (start + count < text.size() && isDigit(text[start + count])) {
        ++count;
    }
    return count;
}

/// An unsigned decimal number at the front of a text: where it ends, and its parts.
struct Decimal {
    std::string_view text;
    std::size_t wholeDigits = 0;
    std::string_view exponent;
};

std::optional<Decimal> scanDecimal(std::string_view text) {
    Decimal decimal;
    decimal.wholeDigits = digitsFrom(text, 0);
    std::size_t end = decimal.wholeDigits;
    std::size_t fractionDigits = 0;
    if (end < text.size() && text[end] == '.') {
        fractionDigits = digitsFrom(text, end + 1);
        end += 1 + fractionDigits;
    }
    if (decimal.wholeDigits + fractionDigits == 0) {
        return std::nullopt;
    }
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        const bool isSigned = end + 1 < text.size() && (text[end + 1] == '-' || text[end + 1] == '+');
        const std::size_t first = end + (isSigned ? 2 : 1);
        if (const std::size_t count = digitsFrom(text, first); count > 0) {
            decimal.exponent = text.substr(end + 1, first + count - end - 1);
            end = first + count;
        }
    }
    decimal.text = text.substr(0, end);
    return decimal;
}

/// Whether a number that no double holds is too large for it (and not too small).
bool isTooLarge(const Decimal& decimal) {
    const std::string_view mantissa = decimal.text.substr(0, decimal.text.find_first_of("eE"));
    const std::size_t first = mantissa.find_first_of("123456789");
    if (first == std::string_view::npos) {
        return false;
    }
    std::int64_t magnitude = static_cast<std::int64_t>(decimal.wholeDigits) - static_cast<std::int64_t>(first);
    std::string_view exponent = decimal.exponent;
    const bool negative = takeSign(exponent);
    if (!exponent.empty()) {
        // An exponent beyond 64 bits keeps this value, which decides alone: no text has that many digits.
        std::int64_t power = std::int64_t{1} << 62;
        std::from_chars(exponent.data(), exponent.data() + exponent.size(), power);
        power = std::min(power, std::int64_t{1} << 62);
        magnitude += negative ? -power : power;
    }
    return magnitude > 0;
}

float saturate(double number) {
    constexpr auto limit = static_cast<double>(std::numeric_limits<float>::max());
    if (std::isnan(number)) {
        return 0;
    }
    return static_cast<float>(std::clamp(number, -limit, limit));
}

std::int32_t saturate(std::int64_t number) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}

std::int32_t truncate(double number) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(number)) {
        return 0;
    }
    return static_cast<std::int32_t>(
        std::clamp<double>(number, static_cast<double>(Limits::min()), static_cast<double>(Limits::max())));
}

} // namespace

std::int32_t intValue(std::string_view text) {
    skipSpace(text);
    const bool negative = takeSign(text);
    constexpr std::int64_t enough = std::int64_t{1} << 32;
    std::int64_t number = 0;
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1)) {
        number = std::min(number * 10 + (text.front() - '0'), enough);
    }
    return saturate(negative ? -number : number);
}

std::int32_t intValue(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::boolean:
        return value.booleanValue() ? 1 : 0;
    case Value::Kind::integer:
        return saturate(value.integerValue());
    case Value::Kind::real:
        return truncate(value.realValue());
    case Value::Kind::string:
        return intValue(std::string_view(value.stringValue()));
    default:
        return 0;
    }
}

float floatValue(std::string_view text) {
    skipSpace(text);
    const bool negative = takeSign(text);
    const auto decimal = scanDecimal(text);
    if (!decimal) {
        return 0;
    }
    float number = 0;
    const char* const end = decimal->text.data() + decimal->text.size();
    if (std::from_chars(decimal->text.data(), end, number).ec == std::errc::result_out_of_range) {
        number = isTooLarge(*decimal) ? std::numeric_limits<float>::max() : 0;
    }
    return negative ? -number : number;
}

float floatValue(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::boolean:
        return value.booleanValue() ? 1 : 0;
    case Value::Kind::integer:
        return static_cast<float>(value.integerValue());
    case Value::Kind::real:
        return saturate(value.realValue());
    case Value::Kind::string:
        return floatValue(std::string_view(value.stringValue()));
    default:
        return 0;
    }
}

bool boolValue(std::string_view text) {
    skipSpace(text);
    takeSign(text);
    while (!text.empty() && text.front() == '0') {
        text.remove_prefix(1);
    }
    constexpr std::string_view affirmative = "YyTt123456789";
    return !text.empty() && affirmative.find(text.front()) != std::string_view::npos;
}

bool boolValue(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::boolean:
        return value.booleanValue();
    case Value::Kind::integer:
        return value.integerValue() != 0;
    case Value::Kind::real:
        return value.realValue() != 0;
    case Value::Kind::string:
        return boolValue(std::string_view(value.stringValue()));
    default:
        return false;
    }
}

std::string describe(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::nothing:
        return "(null)";
    case Value::Kind::null:
        return "<null>";
    case Value::Kind::boolean:
        return value.booleanValue() ? "1" : "0";
    case Value::Kind::integer:
        return std::to_string(value.integerValue());
    case Value::Kind::real:
        return numberText(value.realValue());
    case Value::Kind::string:
        return value.stringValue();
    default:
        return writeJson(value, JsonStyle::compact);
    }
}

std::string numberText(double number) {
    const double magnitude = std::abs(number);
    const bool isPlain = magnitude == 0 || (magnitude >= 1e-5 && magnitude < 1e17);
    std::array<char, 64> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                      isPlain || !std::isfinite(number) ? std::chars_format::fixed : std::chars_format::scientific);
    return {buffer.data(), end.ptr};
}

std::string replaceAll(std::string_view text, std::string_view what, std::string_view with) {
    std::string result;
    if (what.empty()) {
        return std::string(text);
    }
    for (std::size_t at = text.find(what); at != std::string_view::npos; at = text.find(what)) {
        result.append(text.substr(0, at)).append(with);
        text.remove_prefix(at + what.size());
    }
    return result.append(text);
}

} // namespace quillomat
