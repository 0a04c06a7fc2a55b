// Files that live in memory.
#include "src/system/file_access.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace vell::files {
namespace {

std::string read(File& file, std::size_t count) {
    std::string bytes(count, '?');
    bytes.resize(file.read(bytes).value());
    return bytes;
}

std::string all(File& file) {
    EXPECT_TRUE(file.seek(SeekFrom::Start, 0));
    return read(file, 1000);
}

int seek(File& file, SeekFrom from, std::int64_t offset) {
    const auto done = file.seek(from, offset);
    return done ? 0 : number(done.error());
}

TEST(MemoryFile, ReadsFromItsPositionToItsEnd) {
    const auto file = memory_file("0123456789");
    EXPECT_EQ(read(*file, 4), "0123");
    EXPECT_EQ(seek(*file, SeekFrom::Current, 2), 0);
    EXPECT_EQ(read(*file, 2), "67");
    EXPECT_EQ(seek(*file, SeekFrom::End, -1), 0);
    EXPECT_EQ(read(*file, 5), "9");
    EXPECT_EQ(read(*file, 5), "");
    EXPECT_EQ(seek(*file, SeekFrom::End, 100), 0);
    EXPECT_EQ(read(*file, 5), "");
    EXPECT_EQ(file->size().value(), 10U);
}

TEST(MemoryFile, PositionsAreUnsigned32BitNumbers) {
    using Limits = std::numeric_limits<std::int64_t>;
    constexpr std::int64_t last = 0xFFFFFFFF;
    const auto file = memory_file("0123456789");
    EXPECT_EQ(seek(*file, SeekFrom::Start, 3), 0);
    struct {
        SeekFrom from;
        std::int64_t offset;
        int expected;
    } const refused[] = {
        {SeekFrom::Start, -1, -40},
        {SeekFrom::Current, -4, -40},
        {SeekFrom::End, Limits::min(), -40},
        {SeekFrom::Start, last + 1, -1309},
        {SeekFrom::Current, last - 2, -1309},
        {SeekFrom::End, last - 9, -1309},
        {SeekFrom::End, Limits::max(), -1309},
    };
    for (const auto& c : refused)
        EXPECT_EQ(seek(*file, c.from, c.offset), c.expected) << c.offset;
    EXPECT_EQ(read(*file, 1), "3"); // a refused seek moves nothing

    EXPECT_EQ(seek(*file, SeekFrom::Start, last), 0);
    EXPECT_EQ(seek(*file, SeekFrom::Current, 1), -1309);
    EXPECT_EQ(number(file->write("x").error()), -1309);
    EXPECT_EQ(seek(*file, SeekFrom::Current, 9 - last), 0);
    EXPECT_EQ(read(*file, 9), "9");
}

TEST(MemoryFile, WritesOverwriteAndExtend) {
    const auto file = memory_file("0123456789");
    EXPECT_EQ(seek(*file, SeekFrom::Start, 8), 0);
    EXPECT_TRUE(file->write("abcd"));
    EXPECT_EQ(seek(*file, SeekFrom::Start, 0), 0);
    EXPECT_TRUE(file->write("xy"));
    EXPECT_TRUE(file->write(""));
    EXPECT_EQ(read(*file, 3), "234");
    EXPECT_EQ(all(*file), "xy234567abcd");
    EXPECT_EQ(seek(*file, SeekFrom::End, 2), 0);
    EXPECT_TRUE(file->write("!"));
    EXPECT_EQ(all(*file), std::string("xy234567abcd\0\0!", 15));
}

TEST(MemoryFile, TheEndIsSetAtThePosition) {
    const auto file = memory_file("0123456789");
    EXPECT_EQ(seek(*file, SeekFrom::Start, 4), 0);
    EXPECT_TRUE(file->set_end_of_file());
    EXPECT_EQ(file->size().value(), 4U);
    EXPECT_EQ(seek(*file, SeekFrom::Current, 2), 0);
    EXPECT_EQ(file->size().value(), 4U); // seeking alone adds nothing
    EXPECT_TRUE(file->set_end_of_file());
    EXPECT_EQ(all(*file), std::string("0123\0\0", 6));
}

} // namespace
} // namespace vell::files
