// Thumbnails over the system of Windows: what does not fit into memory, several threads.
#include "src/pictures/open_picture.h"
#include "src/windows/system.h"
#include "tests/windows/plugin_fixture.h"

#include <cstdio>

#include <jpeglib.h>

#include <filesystem>

namespace vell::test {
namespace {

enum class Scans : std::uint8_t { One, Progressive };

// Grey, with a slope across and another one down.
std::string large_jpeg(Scans scans) {
    constexpr unsigned width = 4000;
    constexpr unsigned height = 3000;
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &bytes, &size);
    jpeg.image_width = width;
    jpeg.image_height = height;
    jpeg.input_components = 1;
    jpeg.in_color_space = JCS_GRAYSCALE;
    jpeg_set_defaults(&jpeg);
    if (scans == Scans::Progressive)
        jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    std::vector<unsigned char> row(width);
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x)
            row[x] = static_cast<unsigned char>(x * 128 / width + y * 127 / height);
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&jpeg, &rows, 1);
    }
    jpeg_finish_compress(&jpeg);
    std::string file(reinterpret_cast<char*>(bytes), size);
    jpeg_destroy_compress(&jpeg);
    std::free(bytes);
    return file;
}

std::size_t temporary_files() {
    std::size_t count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::temp_directory_path()))
        count += entry.path().filename().wstring().starts_with(L"VELLTEMP");
    return count;
}

TEST(Thumbnails, OfLargeProgressivePicturesGoThroughTemporaryFiles) {
    const auto thumbnail = [](const std::string& file) {
        BytesInMemory bytes(file);
        std::vector<std::string> notes;
        return pictures::thumbnail_of({bytes, {}, {100}, 1}, windows::system(), notes).value();
    };
    const std::string progressive = large_jpeg(Scans::Progressive);
    const pictures::Picture expected = thumbnail(large_jpeg(Scans::One));
    ASSERT_EQ(expected.width, 100U);
    const std::size_t before = temporary_files();
    in_threads(4, [&](std::size_t) {
        const pictures::Picture picture = thumbnail(progressive);
        EXPECT_EQ(picture.pixels, expected.pixels);
    });
    EXPECT_EQ(temporary_files(), before);
}

} // namespace
} // namespace vell::test
