// The archives that are written, byte for byte and at their limits.
#include "src/archive/zip_reader.h"
#include "src/archive/zip_writer.h"
#include "src/base/bytes.h"
#include "tests/portable/fake_system.h"

#include <gtest/gtest.h>

namespace vell::archive {
namespace {

using namespace std::string_literals;
using test::FakeSystem;
using test::native;

constexpr EntryOptions thorough{9, false};

// A writer of the file "zip" in memory, beside a file "a".
class ZipWriting : public ::testing::Test {
  protected:
    static std::unique_ptr<files::File> new_archive(FakeSystem& system) {
        system.add(u"a", "abc");
        system.add(u"zip", "");
        return *system.open(native(u"zip"), files::Permission::Write);
    }
    std::string written() { return system.at(u"zip"); }
    // Whether a file of that name gets in.
    bool takes(const std::string& name, int level = thorough.level) {
        return writer.add_file(system, name, native(u"a"), {level, false}).has_value();
    }

    FakeSystem system;
    ZipWriter writer{new_archive(system)};
};

std::string from_hex(std::string_view digits) {
    std::string bytes;
    for (std::size_t at = 0; at < digits.size(); at += digits[at] == ' ' ? 1 : 2)
        if (digits[at] != ' ')
            bytes += static_cast<char>(std::stoi(std::string(digits.substr(at, 2)), nullptr, 16));
    return bytes;
}

TEST_F(ZipWriting, WritesEveryRecordAsTheFormatHasIt) {
    ASSERT_TRUE(writer.add_folder("f/", dos_time(system.local_time()), {0, false}));
    ASSERT_TRUE(writer.add_file(system, "f/\xC3\xA4", native(u"a"), {9, true}));
    ASSERT_TRUE(writer.finish());
    // 2024-02-29 12:34:56: date 0x585D, time 0x645C. Behind the signature of a local header stand
    // version, flags, method, time, date, checksum, both sizes, the lengths of name and extra data.
    const std::string expected =
        from_hex("504B0304 0000 0000 0000 5C64 5D58 00000000 00000000 00000000 0200 0000") + "f/" +
        from_hex("504B0304 0000 0008 0000 5C64 5D58 C2412435 03000000 03000000 0400 0000") +
        "f/\xC3\xA4" + "abc" +
        from_hex("504B0102 0000 0000 0000 0000 5C64 5D58 00000000 00000000 00000000 0200 0000 0000"
                 "0000 0000 10000000 00000000") +
        "f/" +
        from_hex("504B0102 0000 0000 0008 0000 5C64 5D58 C2412435 03000000 03000000 0400 0000 0000"
                 "0000 0000 00000000 20000000") +
        "f/\xC3\xA4" + from_hex("504B0506 0000 0000 0200 0200 62000000 45000000 0000");
    EXPECT_EQ(written(), expected);
}

TEST_F(ZipWriting, StoresTheSmallestFilesAndDeflatesOthers) {
    const std::string text(200'000, 'x');
    const std::size_t sizes[] = {0, 1, 3, 4, 65'536, 65'537, 200'000};
    for (const std::size_t size : sizes) {
        system.add(u"a", text.substr(0, size));
        ASSERT_TRUE(writer.add_file(system, "d", native(u"a"), thorough));
        ASSERT_TRUE(writer.add_file(system, "s", native(u"a"), {0, false}));
        ASSERT_TRUE(writer.add_file(system, "6", native(u"a"), {-1, true}));
    }
    ASSERT_TRUE(writer.finish());
    auto reader = ZipReader::open(files::memory_file(written()));
    ASSERT_TRUE(reader);
    ASSERT_EQ(reader->entry_count(), std::size(sizes) * 3);
    for (std::uint32_t i = 0; i < reader->entry_count(); ++i) {
        const EntryInfo entry = *reader->entry(i);
        const std::size_t size = sizes[i / 3];
        EXPECT_EQ(entry.method, size < 4 || i % 3 == 1 ? 0 : 8) << i;
        EXPECT_EQ(entry.uncompressed_size, size);
        EXPECT_EQ(entry.utf8_name, i % 3 == 2);
        std::string data;
        EXPECT_TRUE(reader->extract(i, [&](std::uint64_t offset, std::string_view piece) {
            EXPECT_EQ(offset, data.size());
            data += piece;
            return Result<void>();
        }));
        EXPECT_EQ(data, text.substr(0, size));
    }
}

TEST_F(ZipWriting, RefusesNamesLevelsAndLateEntries) {
    for (const std::string& name : {""s, "/a"s, "a\\b"s, "a:b"s, std::string(65'536, 'n')})
        EXPECT_FALSE(takes(name)) << name.substr(0, 9);
    EXPECT_TRUE(takes(std::string(65'535, 'n')));
    EXPECT_FALSE(takes("a", 11));
    EXPECT_TRUE(takes("a", 10));
    EXPECT_FALSE(writer.add_folder("a", {}, {0, false}));
    EXPECT_TRUE(writer.finish());
    EXPECT_FALSE(writer.add_folder("a/", {}, {0, false}));
    EXPECT_FALSE(takes("a"));
    EXPECT_FALSE(writer.finish());
}

TEST_F(ZipWriting, HoldsSixteenBitsOfEntries) {
    for (int i = 0; i < 65'535; ++i)
        ASSERT_TRUE(writer.add_folder(std::to_string(i) + "/", {}, {0, false}));
    EXPECT_FALSE(writer.add_folder("one more/", {}, {0, false}));
    ASSERT_TRUE(writer.finish());
    const auto reader = ZipReader::open(files::memory_file(written()));
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->entry_count(), 65'535u);
}

TEST_F(ZipWriting, RefusesFourGigabytesAndSourcesThatEndEarly) {
    const auto adding = [&](test::FakeItem source) {
        system.add(u"source", std::move(source));
        return writer.add_file(system, "source", native(u"source"), thorough).error();
    };
    EXPECT_EQ(adding({.length = 0x1'0000'0000}), ErrorCode::AddFailed);
    EXPECT_EQ(written().size(), 0u); // before anything was read or written
    EXPECT_EQ(adding({.bytes = std::string(70'000, 'x'), .reported_length = 100'000}),
              ErrorCode::AddFailed);
    // What the failed add left does not show.
    ASSERT_TRUE(writer.finish());
    EXPECT_EQ(written().size(), 22u);
}

TEST(ZipWriter, AFailedAddLeavesAValidArchive) {
    for (int failing = 1;; ++failing) {
        FakeSystem system;
        system.add(u"first", std::string(100'000, 'a'));
        system.add(u"second", std::string(100'000, 'b') + std::string(50'000, 'c'));
        system.add(u"zip", "");
        ZipWriter writer(*system.open(native(u"zip"), files::Permission::Write));
        ASSERT_TRUE(writer.add_file(system, "first", native(u"first"), thorough));
        system.fail(failing, ErrorCode::OutOfMemory);
        const bool added =
            writer.add_file(system, "second", native(u"second"), {0, false}).has_value();
        const int operations = system.operations();
        system.fail(0, ErrorCode::Ok);
        EXPECT_EQ(system.open_files(), 1); // the archive
        ASSERT_TRUE(writer.add_file(system, "third", native(u"first"), thorough));
        ASSERT_TRUE(writer.finish());
        auto reader = ZipReader::open(files::memory_file(system.at(u"zip")));
        ASSERT_TRUE(reader) << failing;
        ASSERT_EQ(reader->entry_count(), added ? 3u : 2u);
        for (std::uint32_t i = 0; i < reader->entry_count(); ++i)
            EXPECT_TRUE(
                reader->extract(i, [](std::uint64_t, std::string_view) { return Result<void>(); }));
        if (operations < failing)
            break;
        EXPECT_FALSE(added) << failing;
    }
}

TEST(ZipWriter, ReportsWhyASourceDoesNotOpen) {
    constexpr std::pair<ErrorCode, int> codes[] = {
        {ErrorCode::Busy, -54},         {ErrorCode::AlreadyExists, -1301}, {ErrorCode::NotFound, 2},
        {ErrorCode::FolderNotFound, 2}, {ErrorCode::OutOfMemory, 12},      {ErrorCode::BadName, 22},
    };
    for (const auto& [opening, expected] : codes)
        EXPECT_EQ(number(source_error(opening)), expected);
}

TEST(DosTime, CoversTheYearsOfTheFormat) {
    using params::CalendarTime;
    for (const CalendarTime time :
         {CalendarTime{1980, 1, 1, 0, 0, 0}, CalendarTime{2107, 12, 31, 23, 59, 58},
          CalendarTime{2000, 2, 29, 1, 2, 4}})
        EXPECT_EQ(calendar_time(dos_time(time)), time);
    EXPECT_EQ(dos_time({1979, 12, 31, 23, 59, 59}), DosTime());
    EXPECT_EQ(dos_time({2108, 1, 1, 0, 0, 0}), DosTime());
    // Parts that no calendar has carry over.
    EXPECT_EQ(calendar_time({}), (CalendarTime{1979, 11, 30, 0, 0, 0}));
    EXPECT_EQ(calendar_time({0xFFFF, 0xFFFF}), (CalendarTime{2108, 4, 1, 8, 4, 2}));
}

} // namespace
} // namespace vell::archive
