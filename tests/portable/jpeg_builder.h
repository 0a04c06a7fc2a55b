// JPEG files of any kind that the library writes.
#pragma once

#include <cstdio>

#include <jpeglib.h>

#include <cstdlib>
#include <span>
#include <string>
#include <vector>

namespace vell::test {

struct JpegKind {
    JDIMENSION width;
    JDIMENSION height;
    J_COLOR_SPACE colours = JCS_RGB; // of the rows, and of the file but for RGB
    int across = 1;                  // how much finer the first component is
    int down = 1;
    int quality = 75;
    unsigned restart_interval = 0; // MCUs
    bool is_progressive = false;
};

// `fill` writes the samples of a row: fill(y, samples).
template <typename Fill>
std::string jpeg_file(const JpegKind& kind, Fill fill) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &bytes, &size);
    jpeg.image_width = kind.width;
    jpeg.image_height = kind.height;
    jpeg.in_color_space = kind.colours;
    jpeg.input_components = kind.colours == JCS_GRAYSCALE ? 1 : kind.colours == JCS_RGB ? 3 : 4;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, kind.quality, TRUE);
    jpeg.comp_info[0].h_samp_factor = kind.across;
    jpeg.comp_info[0].v_samp_factor = kind.down;
    jpeg.restart_interval = kind.restart_interval;
    if (kind.is_progressive)
        jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    std::vector<unsigned char> row(std::size_t{kind.width} *
                                   static_cast<std::size_t>(jpeg.input_components));
    for (JDIMENSION y = 0; y < kind.height; ++y) {
        fill(y, std::span(row));
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&jpeg, &rows, 1);
    }
    jpeg_finish_compress(&jpeg);
    std::string file(reinterpret_cast<char*>(bytes), size);
    jpeg_destroy_compress(&jpeg);
    std::free(bytes);
    return file;
}

} // namespace vell::test
