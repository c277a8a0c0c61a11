// Any bytes are a document or are refused in words; a document that is written is read again as the same.
#include "platform/foundation/Value.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

using namespace quillomat;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Result<Value> value = parseJson(std::as_bytes(std::span(data, size)));
    if (!value) {
        if (value.reason().empty() || value.reason().find('\n') != std::string::npos) {
            std::abort();
        }
        return 0;
    }
    for (const JsonStyle style : {JsonStyle::indented, JsonStyle::compact}) {
        const std::string text = writeJson(*value, style);
        const Result<Value> again = parseJson(text);
        if (!again || !(*again == *value)) {
            std::abort();
        }
    }
    return 0;
}
