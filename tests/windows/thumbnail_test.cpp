// Thumbnails over the system of Windows: what does not fit into memory, several threads.
#include "src/pictures/open_picture.h"
#include "src/windows/system.h"
#include "tests/portable/jpeg_builder.h"
#include "tests/windows/plugin_fixture.h"

#include <filesystem>

namespace vell::test {
namespace {

// Grey, with a slope across and another one down.
std::string large_jpeg(bool is_progressive) {
    test::JpegKind kind{4000, 3000, JCS_GRAYSCALE};
    kind.is_progressive = is_progressive;
    return test::jpeg_file(kind, [&](JDIMENSION y, std::span<unsigned char> row) {
        for (std::size_t x = 0; x < row.size(); ++x)
            row[x] = static_cast<unsigned char>(x * 128 / row.size() + y * 127 / kind.height);
    });
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
    const std::string progressive = large_jpeg(true);
    const pictures::Picture expected = thumbnail(large_jpeg(false));
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
