// The record of one mockup: reading its values, and making one from a user's imported definition file.
#pragma once

#include "geometry/Quad.h"
#include "platform/foundation/Geometry.h"
#include "platform/foundation/Value.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace quillomat {

/// Reads one record. Values may be numbers or text, an absent key reads 0 or false, a JSON null is present and reads 0;
/// nothing is validated or clamped beyond 32 bits. A record that is not an object has no keys.
class MockupDefinition {
public:
    MockupDefinition() = default;
    explicit MockupDefinition(Value record) : record_(std::move(record)) {}

    [[nodiscard]] const Value& record() const { return record_; }
    [[nodiscard]] bool isPresent(std::string_view key) const { return record_[key].isPresent(); }
    [[nodiscard]] std::int32_t integer(std::string_view key) const;
    [[nodiscard]] bool boolean(std::string_view key) const;
    /// The string; empty for everything else.
    [[nodiscard]] std::string text(std::string_view key) const;

    /// The full-resolution render's size in pixels, as it stands there: zero, negative and enormous values included.
    [[nodiscard]] Size canvasSize() const;
    /// Where the frame picture goes: at the canvas origin, with a size of its own that need not be the canvas's.
    [[nodiscard]] Rect frameRect() const;
    [[nodiscard]] Rect glareRect() const;
    /// The radius of the screens in the full-resolution render: 30 when the record has none; a present 0 is 0.
    [[nodiscard]] std::int32_t renderCornerRadius() const;
    [[nodiscard]] bool hasSecondScreen() const { return boolean("doubleImage"); }
    [[nodiscard]] bool keepsSquareCorners() const { return boolean("noCorner"); }
    /// Whether a user imported the mockup. The key's presence counts, not its value.
    [[nodiscard]] bool hasCreator() const { return isPresent("creator"); }

    /// The stored corner coordinates, which are the markers' top-left corners. `finalCode` "F" names the
    /// full-resolution set and `transformSide` "2" the second screen; both may be empty.
    [[nodiscard]] Quad storedCorners(std::string_view finalCode, std::string_view transformSide) const;

private:
    Value record_;
};

/// The record of an imported definition file. A file that could not be read still gives one, without sizes and preview
/// corners. The full-resolution corners become text, lowered by half a marker, so that the markers' centres land on
/// the file's coordinates; the preview corners are passed on untouched, neither lowered nor scaled, on purpose.
[[nodiscard]] Value definitionFromImport(const Value& imported);

/// Whether a first screen of that box is flattened at half its size in the full-resolution render, and enlarged again.
[[nodiscard]] bool isFlattenedAtHalfSize(Size box);

/// A number as the 32-bit integer it is truncated to, saturating; NaN gives 0.
[[nodiscard]] std::int32_t truncatedInteger(double number);

} // namespace quillomat
