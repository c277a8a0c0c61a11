// A bitmap as a photograph that comes from a file.
#pragma once

#include "platform/foundation/FileManager.h"
#include "platform/graphics/Bitmap.h"

#include <cstdio>
#include <cstdlib>
// After <cstdio>, which it needs and does not include.
#include <jpeglib.h>

namespace quillomat::benchmarks {

/// Quality 90, colours halved both ways.
inline Bytes jpegOf(const Bitmap& bitmap) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* out = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&info, &out, &length);
    info.image_width = static_cast<JDIMENSION>(bitmap.width());
    info.image_height = static_cast<JDIMENSION>(bitmap.height());
    info.input_components = 4;
    info.in_color_space = JCS_EXT_RGBX;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 90, TRUE);
    jpeg_start_compress(&info, TRUE);
    for (int y = 0; y < bitmap.height(); ++y) {
        JSAMPROW row = const_cast<JSAMPROW>(bitmap.row(y)); // NOLINT: the library only reads it
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    const auto* bytes = reinterpret_cast<const std::byte*>(out);
    Bytes document(bytes, bytes + length);
    std::free(out); // NOLINT: the library allocates it with malloc
    return document;
}

} // namespace quillomat::benchmarks
