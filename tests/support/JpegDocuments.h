// JPEG documents made for tests: any sampling of the colours, one scan or several, with a profile or without.
#pragma once

#include "platform/foundation/FileManager.h"
#include "platform/graphics/Bitmap.h"

#include <cstdio>
#include <cstdlib>
#include <vector>
// After <cstdio>, which it needs and does not include.
#include <jpeglib.h>

namespace quillomat::testing {

struct JpegKind {
    int across = 2; // pixels of brightness to one of colour
    int down = 2;
    bool isGray = false;
    bool hasInks = false; // of four components, whatever they mean
    bool isProgressive = false;
    unsigned int restartRows = 0;
    Bytes profile = {};
};

inline Bytes jpegOf(const Bitmap& bitmap, const JpegKind& kind = {}) {
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
    info.in_color_space = kind.hasInks ? JCS_CMYK : JCS_EXT_RGBX;
    jpeg_set_defaults(&info);
    if (kind.isGray) {
        jpeg_set_colorspace(&info, JCS_GRAYSCALE);
    } else if (!kind.hasInks) {
        info.comp_info[0].h_samp_factor = kind.across;
        info.comp_info[0].v_samp_factor = kind.down;
    }
    jpeg_set_quality(&info, 90, TRUE);
    if (kind.isProgressive) {
        jpeg_simple_progression(&info);
    }
    info.restart_in_rows = static_cast<int>(kind.restartRows);
    jpeg_start_compress(&info, TRUE);
    if (!kind.profile.empty()) {
        jpeg_write_icc_profile(&info, reinterpret_cast<const JOCTET*>(kind.profile.data()),
                               static_cast<unsigned int>(kind.profile.size()));
    }
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

} // namespace quillomat::testing
