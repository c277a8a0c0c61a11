#include "editor/MockupDefinition.h"

#include "platform/foundation/Conversions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace quillomat {

namespace {

struct CoordinateKeys {
    std::string_view definition;
    std::string_view imported;
};

// In the order in which a converted record lists its full-resolution corners.
constexpr std::array<CoordinateKeys, 8> fullResolutionOrder{{
    {"topLeftX", "left_top_x"},
    {"topLeftY", "left_top_y"},
    {"bottomLeftX", "left_bottom_x"},
    {"bottomLeftY", "left_bottom_y"},
    {"topRightX", "right_top_x"},
    {"topRightY", "right_top_y"},
    {"bottomRightY", "right_bottom_y"},
    {"bottomRightX", "right_bottom_x"},
}};

// In the order in which it lists its preview corners.
constexpr std::array<CoordinateKeys, 8> previewOrder{{
    {"topLeftY", "left_top_y"},
    {"topLeftX", "left_top_x"},
    {"bottomLeftX", "left_bottom_x"},
    {"bottomLeftY", "left_bottom_y"},
    {"topRightX", "right_top_x"},
    {"topRightY", "right_top_y"},
    {"bottomRightY", "right_bottom_y"},
    {"bottomRightX", "right_bottom_x"},
}};

constexpr std::int32_t halfMarker = 10;

std::string loweredByHalfMarker(const Value& coordinate) {
    const std::int64_t lowered = std::int64_t{intValue(coordinate)} - halfMarker;
    return std::to_string(std::max(lowered, std::int64_t{std::numeric_limits<std::int32_t>::min()}));
}

void addIfPresent(Value::Object& record, std::string_view key, const Value& value) {
    if (value.isPresent())
        record.emplace_back(key, value);
}

} // namespace

std::int32_t MockupDefinition::integer(std::string_view key) const {
    return intValue(record_[key]);
}

bool MockupDefinition::boolean(std::string_view key) const {
    return boolValue(record_[key]);
}

std::string MockupDefinition::text(std::string_view key) const {
    return record_[key].stringValue();
}

Size MockupDefinition::canvasSize() const {
    return {static_cast<double>(integer("finalFrameWidth")), static_cast<double>(integer("finalFrameHeight"))};
}

Rect MockupDefinition::frameRect() const {
    return makeRect(0, 0, static_cast<double>(integer("frameWidth")), static_cast<double>(integer("frameHeight")));
}

Rect MockupDefinition::glareRect() const {
    return makeRect(static_cast<double>(integer("glareX")), static_cast<double>(integer("glareY")),
                    static_cast<double>(integer("glareWidth")), static_cast<double>(integer("glareHeight")));
}

std::int32_t MockupDefinition::renderCornerRadius() const {
    return isPresent("cornerRadius") ? integer("cornerRadius") : 30;
}

Quad MockupDefinition::storedCorners(std::string_view finalCode, std::string_view transformSide) const {
    const auto coordinate = [&](std::string_view name) {
        std::string key(finalCode);
        key.append(name).append(transformSide);
        return static_cast<double>(integer(key));
    };
    return {.topLeft = {coordinate("topLeftX"), coordinate("topLeftY")},
            .topRight = {coordinate("topRightX"), coordinate("topRightY")},
            .bottomLeft = {coordinate("bottomLeftX"), coordinate("bottomLeftY")},
            .bottomRight = {coordinate("bottomRightX"), coordinate("bottomRightY")}};
}

Value definitionFromImport(const Value& imported) {
    Value::Object record;
    for (const auto& [definitionKey, importedKey] : fullResolutionOrder)
        record.emplace_back("F" + std::string(definitionKey),
                            Value::string(loweredByHalfMarker(imported[importedKey])));
    record.emplace_back("cornerRadius",
                        imported.contains("corner_radius") ? imported["corner_radius"] : Value::string("10"));
    if (imported.contains("author"))
        record.emplace_back("creator", Value::string(" Mockup created by " + describe(imported["author"])));
    for (const auto& [definitionKey, importedKey] : previewOrder)
        addIfPresent(record, definitionKey, imported[importedKey]);
    for (const std::string_view key : {"glareHeight", "frameHeight", "finalFrameHeight"})
        addIfPresent(record, key, imported["template_height"]);
    for (const std::string_view key : {"glareWidth", "frameWidth", "finalFrameWidth"})
        addIfPresent(record, key, imported["template_width"]);
    record.emplace_back("overlay", Value::string(""));
    record.emplace_back("glareX", Value::string("0"));
    record.emplace_back("glareY", Value::string("0"));
    record.emplace_back("doubleImage", Value::string("false"));
    record.emplace_back("customTransform", Value::string("false"));
    return Value::object(std::move(record));
}

bool isFlattenedAtHalfSize(Size box) {
    constexpr std::int32_t tallestAtFullSize = 2730;
    return truncatedInteger(box.height) > tallestAtFullSize;
}

std::int32_t truncatedInteger(double number) {
    if (std::isnan(number))
        return 0;
    constexpr double lowest = std::numeric_limits<std::int32_t>::min();
    constexpr double highest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(number, lowest, highest));
}

} // namespace quillomat
