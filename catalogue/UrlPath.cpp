#include "catalogue/UrlPath.h"

#include <cstddef>

namespace quillomat {

namespace {

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// The characters of RFC 3986 that may stand in a path, query or fragment.
bool isAddressCharacter(char c) {
    constexpr std::string_view punctuation = "-._~!$&'()*+,;=:@/?#";
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           punctuation.find(c) != std::string_view::npos;
}

} // namespace

bool needsNoEscaping(std::string_view name) {
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == '%' && i + 2 < name.size() && isHexDigit(name[i + 1]) && isHexDigit(name[i + 2])) {
            i += 2;
        } else if (!isAddressCharacter(name[i])) {
            return false;
        }
    }
    return true;
}

} // namespace quillomat
