#include "platform/foundation/NumericOrder.h"

#include <cstddef>

namespace quillomat {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Takes the digit run off the front of `text` and gives it back without its leading zeros.
std::string_view takeDigits(std::string_view& text) {
    std::size_t length = 0;
    while (length < text.size() && isDigit(text[length])) {
        ++length;
    }
    std::string_view digits = text.substr(0, length);
    text.remove_prefix(length);
    while (!digits.empty() && digits.front() == '0') {
        digits.remove_prefix(1);
    }
    return digits;
}

/// Without leading zeros the longer run is the larger number, and runs of one length compare as text.
std::weak_ordering compareRuns(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return a.size() <=> b.size();
    }
    return a <=> b;
}

} // namespace

std::weak_ordering compareNumerically(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            if (const auto order = compareRuns(takeDigits(a), takeDigits(b)); order != 0) {
                return order;
            }
            continue;
        }
        // The bytes of UTF-8 sort as its code points do.
        const auto left = static_cast<unsigned char>(a.front());
        const auto right = static_cast<unsigned char>(b.front());
        if (left != right) {
            return left <=> right;
        }
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return !a.empty() <=> !b.empty();
}

} // namespace quillomat
