// Opening archives, sound and hostile, and taking entries out of them.
#include "src/archive/zip_reader.h"
#include "src/base/bytes.h"
#include "tests/portable/fake_system.h"
#include "tests/portable/real_files.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <array>
#include <cstring>

namespace vell::archive {
namespace {

// An archive with one entry whose every field can be changed, and its records behind each other.
struct Archive {
    std::string name = "a";
    std::string data = "hello";
    std::string extra;
    LocalFileHeader local;
    CentralDirectoryHeader central;
    EndOfCentralDirectory end;
    std::string before_end; // such as a Zip64 locator
    std::string behind;

    Archive() {
        central.crc32 = crc(data);
        central.compressed_size = central.uncompressed_size = 5;
        end.entries_on_disk = end.total_entries = 1;
    }
    static std::uint32_t crc(std::string_view bytes) {
        return static_cast<std::uint32_t>(
            crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
    }
    std::string bytes(int copies_of_record = 1) const {
        std::string result;
        formats::append_record(result, local);
        result += data;
        CentralDirectoryHeader record = central;
        record.file_name_length = static_cast<std::uint16_t>(name.size());
        record.extra_field_length = static_cast<std::uint16_t>(extra.size());
        EndOfCentralDirectory last = end;
        last.directory_offset += static_cast<std::uint32_t>(result.size());
        const std::size_t start = result.size();
        for (int i = 0; i < copies_of_record; ++i) {
            formats::append_record(result, record);
            result += name + extra;
        }
        last.directory_size += static_cast<std::uint32_t>(result.size() - start);
        result += before_end;
        formats::append_record(result, last);
        return result + behind;
    }
};

Result<ZipReader> open(const std::string& bytes) {
    return ZipReader::open(files::memory_file(bytes));
}
bool opens(const Archive& archive) {
    const auto reader = open(archive.bytes());
    EXPECT_TRUE(reader || reader.error() == ErrorCode::CorruptStructure);
    return reader.has_value();
}

// The data of an entry, or "<failed>".
std::string extracted(ZipReader& reader, std::uint32_t index = 0) {
    std::string data;
    const auto done = reader.extract(index, [&](std::uint64_t, std::string_view piece) {
        EXPECT_LE(data.size() + piece.size(), reader.entry(index)->uncompressed_size);
        data += piece;
        return Result<void>();
    });
    return done ? data : "<failed>";
}
std::string extracted(const Archive& archive) {
    auto reader = open(archive.bytes());
    return reader ? extracted(*reader) : "<refused>";
}

TEST(ZipReader, RefusesRecordsThatContradictEachOther) {
    const auto refused = [](const char* what, const auto& change) {
        Archive archive;
        change(archive);
        EXPECT_FALSE(opens(archive)) << what;
    };
    EXPECT_TRUE(opens(Archive()));
    refused("entry counts differ", [](Archive& a) { a.end.entries_on_disk = 2; });
    refused("disks differ", [](Archive& a) { a.end.disk_number = 1; });
    refused("second disk", [](Archive& a) { a.end.disk_number = a.end.directory_disk = 2; });
    refused("more entries than the size holds",
            [](Archive& a) { a.end.entries_on_disk = a.end.total_entries = 2; });
    refused("directory begins elsewhere", [](Archive& a) { a.end.directory_offset = 1; });
    refused("rest of the directory is no record", [](Archive& a) { a.end.directory_size = 1; });
    refused("stored sizes differ", [](Archive& a) { a.central.uncompressed_size = 4; });
    refused("data from nothing", [](Archive& a) {
        a.central.method = 8;
        a.central.compressed_size = 0;
    });
    refused("entry on another disk", [](Archive& a) { a.central.disk_number_start = 2; });
    refused("data beyond the end", [](Archive& a) { a.central.local_header_offset = 0x1000; });
    refused("sizes of Zip64 in a classic archive",
            [](Archive& a) { a.central.compressed_size = a.central.uncompressed_size = ~0u; });
    refused("comment beyond the directory", [](Archive& a) { a.central.file_comment_length = 1; });
    refused("too far from the end", [](Archive& a) { a.behind.assign(65'536, ' '); });
    refused("Zip64 record beyond the end",
            [](Archive& a) { a.before_end = "PK\6\7" + std::string(16, '\x7F'); });
    refused("Zip64 record that is none",
            [](Archive& a) { a.before_end = "PK\6\7" + std::string(16, '\0'); });
    for (const std::size_t size : {0, 21, 200'000})
        EXPECT_FALSE(open(std::string(size, 'P'))) << size;
}

TEST(ZipReader, AcceptsWhatTheFormatAllows) {
    Archive archive;
    archive.central.disk_number_start = 1;
    EXPECT_TRUE(opens(archive));
    archive.end.disk_number = archive.end.directory_disk = 1;
    EXPECT_TRUE(opens(archive));
    archive.behind.assign(65'535, ' '); // the longest comment, its length not believed
    EXPECT_TRUE(opens(archive));
    // Every place of the signature relative to the blocks that are searched.
    for (std::size_t length = 4'000; length < 4'200; ++length) {
        archive.behind.assign(length, 'K');
        ASSERT_TRUE(opens(archive)) << length;
    }
    archive.behind = "PK\5\6"; // no room for a record
    EXPECT_TRUE(opens(archive));
    EXPECT_TRUE(open("PK\5\6" + std::string(18, '\0')));
}

// The directory of a Zip64 archive over the same entry.
std::string zip64(std::uint64_t entries, std::uint64_t size, std::uint64_t offset,
                  std::uint64_t place) {
    std::string bytes = "any ";
    const auto add = [&](std::initializer_list<std::uint64_t> fields) {
        for (const std::uint64_t field : fields)
            append_integer<std::uint64_t>(bytes, field, ByteOrder::Little);
    };
    add({44, 0, 0});
    bytes.resize(24);
    add({entries, entries, size, offset});
    bytes += "PK\6\7" + std::string(4, '\0');
    add({place});
    return bytes + std::string(4, '\0');
}

TEST(ZipReader, ReadsZip64Directories) {
    Archive archive;
    archive.end.total_entries = archive.end.entries_on_disk = 0xFFFF;
    archive.central.compressed_size = archive.central.uncompressed_size = ~0u;
    archive.extra = std::string("\1\0\x10\0\5\0\0\0\0\0\0\0\5\0\0\0\0\0\0\0", 20);
    const std::uint64_t offset = 35;
    const std::uint64_t size = 46 + 1 + 20;
    archive.before_end = zip64(1, size, offset, offset + size);
    EXPECT_TRUE(opens(archive));
    EXPECT_EQ(extracted(archive), "<failed>"); // 4 GiB are not there
    archive.extra[13] = '\x7F';                // the compressed size is not believed, either
    EXPECT_FALSE(opens(archive));
    archive.extra[13] = '\0';
    constexpr std::uint64_t huge = 0x4000'0000'0000'0000;
    for (const auto& end :
         {zip64(2, size, offset, offset + size), zip64(huge, huge, offset, offset + size),
          zip64(1, size, ~std::uint64_t{0}, offset + size),
          zip64(~std::uint64_t{0} / 46 + 2, size, offset, offset + size)}) {
        archive.before_end = end;
        EXPECT_FALSE(opens(archive));
    }
}

TEST(ZipReader, KnowsWhereZip64HasTheNumbersOfAnEntry) {
    using Numbers = std::array<std::uint64_t, 3>;
    constexpr std::uint64_t see = 0xFFFF'FFFF, first = 0x1'0000'0005, second = 0x2'0000'0007;
    const auto told = [](const Numbers& numbers, const std::string& extra_field) {
        const auto [uncompressed, compressed, offset] =
            formats::zip::with_zip64({numbers[0], numbers[1], numbers[2]}, extra_field);
        return Numbers{uncompressed, compressed, offset};
    };
    const std::string other("UT\1\0x", 5);
    const std::string two("\1\0\x10\0\5\0\0\0\1\0\0\0\7\0\0\0\2\0\0\0", 20);
    EXPECT_EQ(told({see, see, see}, other + two + other), (Numbers{first, second, see}));
    EXPECT_EQ(told({5, see, see}, two), (Numbers{5, first, second}));
    EXPECT_EQ(told({see, 5, see}, two), (Numbers{first, 5, second}));
    EXPECT_EQ(told({5, 6, 7}, two), (Numbers{5, 6, 7}));
    for (const std::string& cut : {std::string(), other, two.substr(0, 3), two.substr(0, 11)})
        EXPECT_EQ(told({see, see, 5}, cut), (Numbers{see, see, 5}));

    Archive archive;
    archive.extra = two;
    EXPECT_EQ(open(archive.bytes())->entry(0)->extra_field, two);
}

TEST(ZipReader, CountsEntriesThatTheRecordCannot) {
    Archive archive;
    archive.end.total_entries = archive.end.entries_on_disk = 70'000 - 65'536;
    const auto reader = open(archive.bytes(70'000));
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->entry_count(), 70'000u);
    EXPECT_EQ(reader->entry(69'999)->name, "a");
    EXPECT_FALSE(reader->entry(70'000));
}

TEST(ZipReader, ExtractsNothingThatItCannotVouchFor) {
    const auto failed = [](const char* what, const auto& change) {
        Archive archive;
        change(archive);
        EXPECT_EQ(extracted(archive), "<failed>") << what;
    };
    EXPECT_EQ(extracted(Archive()), "hello");
    failed("encrypted", [](Archive& a) { a.central.flags = 0x0001; });
    failed("patched data", [](Archive& a) { a.central.flags = 0x0020; });
    failed("unknown method", [](Archive& a) { a.central.method = 1; });
    failed("checksum", [](Archive& a) { a.central.crc32 ^= 1; });
    failed("no local header", [](Archive& a) { a.central.local_header_offset = 1; });
    failed("data pushed beyond the end", [](Archive& a) { a.local.extra_field_length = 60'000; });
    failed("no deflate stream", [](Archive& a) { a.central.method = 8; });
    // Folders and empty entries are nothing, whatever else is said of them.
    Archive folder;
    folder.name = "a/";
    folder.central.crc32 = 0;
    folder.central.flags = 1;
    EXPECT_EQ(extracted(folder), "");
    folder.name = "a";
    folder.central.external_attributes = 0x30;
    EXPECT_EQ(extracted(folder), "");
    Archive empty;
    empty.central.compressed_size = empty.central.uncompressed_size = 0;
    empty.central.method = 99;
    EXPECT_EQ(extracted(empty), "");
}

TEST(ZipReader, ExpandsNeitherMoreNorLessThanRecorded) {
    Archive archive;
    archive.data = std::string("\x4B\x04\x00", 3); // "a" in either format
    archive.central.compressed_size = 3;
    archive.central.uncompressed_size = 1;
    archive.central.crc32 = Archive::crc("a");
    for (const Method method : {Method::Deflated, Method::Deflate64}) {
        archive.central.method = static_cast<std::uint16_t>(method);
        archive.central.uncompressed_size = 1;
        EXPECT_EQ(extracted(archive), "a");
        archive.central.uncompressed_size = 2;
        EXPECT_EQ(extracted(archive), "<failed>");
    }
}

TEST(ZipReader, FailsWithTheSinkAndTheFile) {
    auto reader = open(Archive().bytes());
    ASSERT_TRUE(reader);
    const auto full = reader->extract(0, [](std::uint64_t, std::string_view) {
        return Result<void>(Failure{ErrorCode::OutOfMemory});
    });
    EXPECT_EQ(full.error(), ErrorCode::ExtractionFailed);
    for (int failing = 1;; ++failing) {
        test::FakeSystem system;
        system.add_folder(u"D");
        system.add(u"zip", Archive().bytes());
        system.fail(failing, ErrorCode::OutOfMemory);
        bool done = false;
        if (auto file = system.open_shared(test::native(u"zip")))
            if (auto opened = ZipReader::open(*std::move(file)))
                if (auto made = system.hold(test::native(u"D"), files::FollowLink::No)
                                    .value()
                                    ->open_new(u"a"))
                    done = opened->extract_to_file(0, **made).has_value();
        EXPECT_EQ(system.open_files(), 0);
        if (system.operations() < failing) {
            EXPECT_TRUE(done);
            break;
        }
        EXPECT_FALSE(done) << failing;
        // Without the entry's time, unless only the closing has failed.
        const test::FakeItem* made = system.find(u"D\\a");
        EXPECT_TRUE(!made || made->modified == test::noon || system.operations() == failing)
            << failing;
    }
}

// Entries of an archive by the bytes that they take: each begins at an offset with a local header
// of 30 bytes, an extra field, and its data.
TEST(ZipReader, KnowsEntriesThatShareBytes) {
    struct Part {
        std::uint32_t offset;
        std::uint16_t extra;
        std::uint32_t data;
        const char* name = "f";
        std::uint32_t uncompressed = 1;
    };
    const auto is_sound = [](const std::vector<Part>& parts) {
        std::string bytes(400, '\0');
        std::string directory;
        for (const Part& part : parts) {
            LocalFileHeader local;
            local.extra_field_length = part.extra;
            std::string header;
            formats::append_record(header, local);
            bytes.replace(part.offset, header.size(), header);
            CentralDirectoryHeader central;
            central.method = 8;
            central.compressed_size = part.data;
            central.uncompressed_size = part.uncompressed;
            central.local_header_offset = part.offset;
            central.file_name_length = static_cast<std::uint16_t>(std::strlen(part.name));
            formats::append_record(directory, central);
            directory += part.name;
        }
        EndOfCentralDirectory end;
        end.entries_on_disk = end.total_entries = static_cast<std::uint16_t>(parts.size());
        end.directory_size = static_cast<std::uint32_t>(directory.size());
        end.directory_offset = static_cast<std::uint32_t>(bytes.size());
        bytes += directory;
        formats::append_record(bytes, end);
        auto reader = open(bytes);
        EXPECT_TRUE(reader);
        return reader && reader->check_overlaps().has_value();
    };
    EXPECT_TRUE(is_sound({{100, 10, 60}, {0, 0, 70}, {200, 0, 100}})); // in any order
    EXPECT_TRUE(is_sound({{0, 0, 10}, {60, 0, 10}}));                  // between them a descriptor
    EXPECT_FALSE(is_sound({{0, 0, 70}, {0, 0, 70}}));
    EXPECT_FALSE(is_sound({{0, 0, 71}, {100, 0, 60}}));
    EXPECT_FALSE(is_sound({{100, 0, 60}, {0, 1, 70}}));
    EXPECT_FALSE(is_sound({{0, 0, 300}, {40, 0, 10}, {200, 0, 10}}));
    EXPECT_FALSE(is_sound({{0, 200, 50}, {100, 100, 50}})); // extra fields that quote headers
    // What gives no data takes no place, nor does what lies beyond the archive.
    EXPECT_TRUE(is_sound({{0, 0, 70}, {0, 0, 70, "f/"}, {0, 0, 2, "f", 0}, {0, 0, 0, "f", 0}}));
    EXPECT_TRUE(is_sound({{0, 0, 70}, {50, 60'000, 70}}));
    // However many there are.
    Archive counted;
    counted.end.total_entries = counted.end.entries_on_disk = 70'000 - 65'536;
    auto many = open(counted.bytes(70'000));
    ASSERT_TRUE(many);
    EXPECT_EQ(many->check_overlaps().error(), ErrorCode::CorruptStructure);
}

// Extracts everything; of each entry only the beginning where not all is wanted.
void take_apart(const std::string& bytes, std::size_t most) {
    auto reader = open(bytes);
    if (reader)
        static_cast<void>(reader->check_overlaps());
    for (std::uint32_t i = 0; reader && i < reader->entry_count(); ++i) {
        const std::uint32_t recorded = reader->entry(i)->uncompressed_size;
        static_cast<void>(reader->extract(i, [&](std::uint64_t offset, std::string_view piece) {
            EXPECT_LE(offset + piece.size(), recorded);
            return offset < most ? Result<void>() : Failure{ErrorCode::OutOfMemory};
        }));
    }
}

// Every archive of the collection, cut and changed: a result or a code, within its bounds.
TEST(ZipReader, TakesTheCollectionApart) {
    const auto archives = test::real_files({"zip", "zip-refused"});
    if (archives.empty())
        GTEST_SKIP() << test::no_real_files;
    EXPECT_GT(archives.size(), 100u);
    for (const auto& path : archives) {
        const std::string whole = test::bytes_of(path);
        take_apart(whole, whole.max_size());
        constexpr std::size_t beginning = 100'000;
        const std::size_t step = std::max<std::size_t>(1, whole.size() / 50);
        for (std::size_t at = 0; at < whole.size(); at += step) {
            take_apart(whole.substr(0, at), beginning);
            std::string bytes = whole;
            bytes[at] = static_cast<char>(bytes[at] ^ 0xFF);
            take_apart(bytes, beginning);
        }
    }
}

} // namespace
} // namespace vell::archive
