// Recordings as files: what was drawn, with its pictures, to be drawn again elsewhere.
//
// Layout, numbers little-endian:
//   bytes 0-7    "QMRECORD"
//   bytes 8-11   the format's version, 1
//   bytes 12-15  length of the header
//   header       a JSON object in UTF-8:
//                {"canvas": [width, height], "draws": [draw ...], "pictures": [picture ...]}
//   documents    the pictures' encoded documents, one behind the other up to the end of the file
// A picture is {"document": length} (the next so many bytes: a PNG, a JPEG ...), {"whole": picture, "part": [x, y,
// width, height]}, or {"canvas": ..., "draws": ...}; it refers only to pictures before it. A draw is {"map": [9
// numbers], "rect": [x, y, width, height], "radius", "fill": [red, green, blue, alpha], "picture", "pictureRect",
// "filter": "smooth", "borderWidth", "borderColor", "opacity", "clips": [{"map", "rect", "radius"} ...]}; what has its
// default is left out. Numbers that are not finite are the strings "nan", "inf" and "-inf".
#pragma once

#include "platform/foundation/FileManager.h"
#include "platform/foundation/Result.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/Recording.h"

#include <cstddef>
#include <span>
#include <string>

namespace quillomat {

/// The same recording gives the same bytes. Pictures that are encoded documents are stored as they are, pixels as PNG.
[[nodiscard]] Result<Bytes> writeRecordingFile(const Recording& recording);

/// Whether the bytes begin as a recording file does.
[[nodiscard]] bool isRecordingFile(std::span<const std::byte> bytes);

/// Reads what `writeRecordingFile` writes, from anybody. `limits` holds for each canvas and picture, and four times its
/// pixels for all that would be drawn and decoded together.
[[nodiscard]] Result<Recording> readRecordingFile(std::span<const std::byte> bytes, const ImageLimits& limits = {});

/// The recording as lines of text for people and golden tests: numbers are rounded to a thousandth, pictures are told
/// by their kind and size.
[[nodiscard]] std::string describeRecording(const Recording& recording);

} // namespace quillomat
