// The functions on archives over a system in memory.
#include "src/archive/held_folders.h"
#include "src/archive/zip_functions.h"
#include "src/archive/zip_reader.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/table_text.h"
#include "tests/portable/zip_builder.h"

#include <gtest/gtest.h>

namespace vell::archive {
namespace {

using test::FakeSystem;

// Whose host decodes one letter of DOS.
class FakeCall : public test::FakeCall {
  public:
    using test::FakeCall::FakeCall;
    std::u16string decode(std::string_view bytes, params::TextEncoding encoding) override {
        std::u16string text = test::FakeCall::decode(bytes, encoding);
        if (encoding == params::TextEncoding::AsciiDos)
            std::ranges::replace(text, u'\u0084', u'\u00E4');
        return text;
    }
};

class Zip : public ::testing::Test {
  protected:
    Zip() {
        system.add_folder(u"C:\\out");
        system.add(u"C:\\in\\.git\\config", "git");
        system.add_folder(u"C:\\in\\empty");
        system.add(u"C:\\in\\sub\\\u00E4.txt", std::string(5'000, 'z'));
        system.add(u"C:\\in\\a.txt", "hello");
        system.add(u"C:\\in\\hidden.lnk", "12").attributes |= bit(files::Attribute::Hidden);
    }

    std::u16string result_of(params::Body body, FakeCall& call) {
        return utf16_from_utf8(test::answer_of(call, body(call, system)));
    }
    std::u16string create(std::vector<std::u16string> parameters) {
        FakeCall call(std::move(parameters));
        return result_of(create_zip, call);
    }
    std::u16string expand(std::vector<std::u16string> parameters) {
        FakeCall call(std::move(parameters));
        return result_of(unzip, call);
    }
    std::u16string names(std::vector<std::u16string> parameters) {
        FakeCall call(std::move(parameters));
        return result_of(get_zip_info, call);
    }

    // Puts C:\x.zip there.
    void archive(const std::vector<std::string>& entries) {
        system.add(u"C:\\x.zip", test::zip_of(entries));
    }
    // Expands entries into C:\out.
    std::u16string expand_entries(const std::vector<std::string>& entries,
                                  const std::u16string& switches = u"") {
        archive(entries);
        return expand({switches, u"C:\\x.zip", u"C:\\out"});
    }

    FakeSystem system;
};

TEST_F(Zip, ArchivesAFolderAndExpandsItAgain) {
    EXPECT_EQ(create({u"", u"C:\\in\\", u"C:\\out\\archive"}), u"0");
    EXPECT_EQ(names({u"", u"C:\\out\\archive.zip"}),
              u"in/.git/\rin/.git/config\rin/empty/\rin/sub/\rin/sub/\u00E4.txt\rin/a.txt\r"
              u"in/hidden.lnk\r");
    EXPECT_EQ(expand({u"", u"C:\\out\\archive.zip"}), u"0");
    EXPECT_EQ(system.find(u"C:\\out\\in\\a.txt")->modified, test::noon);
    EXPECT_EQ(system.open_files(), 0);

    EXPECT_EQ(create({u"-DontAddEnclosingFolder -ForceUTF8Filenames", u"C:\\in", u"C:\\in\\b.zip"}),
              u"0"); // without itself
    EXPECT_EQ(names({u"", u"C:\\in\\b.zip"}),
              u".git/\r.git/config\rempty/\rsub/\rsub/\u00E4.txt\ra.txt\rhidden.lnk\r");
    const std::u16string json = names({u"-Format=JSON", u"C:\\in\\b.zip"});
    const auto tells = [&](std::u16string_view entry) {
        return json.find(entry) != std::u16string::npos;
    };
    EXPECT_TRUE(tells(uR"([{"Name":".git/","Type":"folder","Size":0,"CompressedSize":0,)"));
    EXPECT_TRUE(tells(uR"({"Name":"a.txt","Type":"file","Size":5,"CompressedSize":10,)"
                      uR"("Modified":"2024-02-29T12:34:56","Method":"Deflate",)"
                      uR"("CRC32":"3610A686","Encrypted":false})"));
    EXPECT_TRUE(tells(uR"("Method":"Deflate")"));
    auto reader = ZipReader::open(files::memory_file(system.at(u"C:\\in\\b.zip")));
    for (std::uint32_t i = 0; i < reader->entry_count(); ++i)
        EXPECT_TRUE(reader->entry(i)->utf8_name);
}

TEST_F(Zip, LeavesLinksOut) {
    system.find(u"C:\\in\\sub")->link = system.find(u"C:\\in\\a.txt")->link = u"elsewhere";
    EXPECT_EQ(create({u"-DontAddEnclosingFolder", u"C:\\in", u"C:\\l.zip"}), u"0");
    EXPECT_EQ(names({u"", u"C:\\l.zip"}), u".git/\r.git/config\rempty/\rhidden.lnk\r");
}

TEST_F(Zip, ArchivesAFile) {
    EXPECT_EQ(create({u"-ForceUTF8Filenames", u"C:\\in\\a.txt", u"C:\\my.zips"}), u"0");
    auto reader = ZipReader::open(files::memory_file(system.at(u"C:\\my.zips")));
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->entry(0)->name, "a.txt");
    EXPECT_FALSE(reader->entry(0)->utf8_name);
    EXPECT_EQ(create({u"", u"C:\\in\\sub\\\u00E4.txt", u"C:\\b."}), u"0");
    reader = ZipReader::open(files::memory_file(system.at(u"C:\\b..zip")));
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->entry(0)->name, "\xC3\xA4.txt");
    EXPECT_TRUE(reader->entry(0)->utf8_name);
}

TEST_F(Zip, ReportsWhatKeepsAnArchiveFromBeingMade) {
    constexpr std::pair<ErrorCode, const char16_t*> creating[] = {
        {ErrorCode::FolderNotFound, u"$$-4402"}, {ErrorCode::Busy, u"$$-4401"},
        {ErrorCode::AlreadyExists, u"$$-1301"},  {ErrorCode::BadName, u"$$-208"},
        {ErrorCode::OutOfMemory, u"$$-108"},
    };
    for (const auto& [code, result] : creating) {
        system.fail(1, code);
        EXPECT_EQ(create({u"", u"C:\\in", u"C:\\a.zip"}), result);
    }
    for (const int operation : {3, 4}) { // opening the first file, behind a folder entry
        system.fail(operation, ErrorCode::Busy);
        EXPECT_EQ(create({u"", u"C:\\in\\a.txt", u"C:\\a.zip"}),
                  operation == 3 ? u"$$-54" : u"$$-4278");
    }
}

TEST_F(Zip, WritesAnArchiveThatOthersLookAtWhileItIsMade) {
    system.watch_new_files = true;
    EXPECT_EQ(create({u"", u"C:\\in", u"C:\\a.zip"}), u"0");
    EXPECT_FALSE(system.at(u"C:\\a.zip").empty());
}

TEST_F(Zip, LeavesNoArchiveBehindWhenItFails) {
    const auto before = system.all();
    for (int failing = 1;; ++failing) {
        system.fail(failing, ErrorCode::OutOfMemory);
        const std::u16string result = create({u"", u"C:\\in", u"C:\\a.zip"});
        EXPECT_EQ(system.open_files(), 0);
        if (result == u"0") {
            EXPECT_LT(system.operations(), failing);
            break;
        }
        EXPECT_EQ(system.all(), before) << failing;
    }
}

TEST_F(Zip, ChoosesTheFolderByWhatIsAtTheTop) {
    const char16_t* const overwrite = u"-OverwriteExisting";
    for (const auto& row : test::wide_table("unzips.txt", 5)) {
        std::vector<std::string> entries(1);
        for (const char16_t unit : row[0])
            if (unit == u' ')
                entries.emplace_back();
            else
                entries.back() += static_cast<char>(unit);
        SCOPED_TRACE(entries.back());
        EXPECT_EQ(expand_entries(entries, row[1]), row[2]);
        if (!row[3].empty()) {
            EXPECT_EQ(system.at(u"C:\\out\\" + row[3]), utf8_from_utf16(row[4]));
        }
    }
    for (const auto& [path, bytes] : system.all())
        if (path.starts_with(u"C:\\out\\x\\"))
            system.erase(path);
    system.add(u"C:\\out\\x", "a file");
    EXPECT_EQ(expand_entries({"p", "q"}), u"$$-48");
    EXPECT_EQ(expand_entries({"p", "q"}, overwrite), u"$$-4282");
}

TEST_F(Zip, TakesTheOptionsOfTheStep) {
    archive({"p", "q"});
    const auto step = [&](std::int32_t flat, std::int32_t overwrite) {
        FakeCall call({u"", u"C:\\x.zip", u"C:\\out", u"", u"", u""});
        call.set_step_option(3, flat);
        call.set_step_option(4, overwrite);
        return result_of(unzip, call);
    };
    EXPECT_EQ(step(1, 0), u"0");
    EXPECT_EQ(system.at(u"C:\\out\\q"), "q");
    EXPECT_EQ(step(1, params::Call::not_given), u"$$-48");
    EXPECT_EQ(step(1, 1), u"0");
}

TEST_F(Zip, MakesOneFolderAboveAnItem) {
    EXPECT_EQ(expand_entries({"A/b"}), u"0");
    EXPECT_EQ(system.at(u"C:\\out\\A\\b"), "A/b");
    EXPECT_EQ(expand_entries({"B/c/d"}), u"$$-4282");
    EXPECT_EQ(expand_entries({"E/f", "E/"}), u"$$17"); // the file has made the folder
    EXPECT_EQ(expand_entries({"F/f", "F/"}, u"-OverwriteExisting"), u"0");
    EXPECT_EQ(expand_entries({"G/f", "G/f/"}), u"$$-4282");
    EXPECT_EQ(expand_entries({"H/f/", "H/f"}), u"$$-4281");
    EXPECT_EQ(expand_entries({"I/a:b ", "I/a:b "}), u"0"); // twice: the second stays
    EXPECT_EQ(system.at(u"C:\\out\\I\\a_b_"), "I/a:b ");
}

TEST_F(Zip, WritesNothingOutsideTheTargetFolder) {
    for (const char* name : {"../a", "d\\..\\..\\a", "d/..", "CON/../a", " /../a"}) {
        archive({name});
        const auto before = system.all();
        EXPECT_EQ(expand({u"", u"C:\\x.zip", u"C:\\out"}), u"$$-37") << name;
        EXPECT_EQ(system.all(), before) << name;
    }
    EXPECT_EQ(expand_entries({"/abs", "C:\\d"}, u"-DontCreateArchiveFolder"), u"0");
    EXPECT_EQ(system.at(u"C:\\out\\abs"), "/abs");
    EXPECT_EQ(system.at(u"C:\\out\\C_\\d"), "C:\\d");
}

TEST_F(Zip, GivesWhatIsNamedLikeADeviceANameOfItsOwn) {
    EXPECT_EQ(expand_entries({"aux.c", "aux/", "aux/NUL"}), u"0");
    EXPECT_EQ(system.at(u"C:\\out\\x\\aux_.c"), "aux.c");
    EXPECT_EQ(system.at(u"C:\\out\\x\\aux_\\NUL_"), "aux/NUL");
    // It is that name which is looked for beforehand.
    EXPECT_EQ(expand_entries({"con"}), u"0");
    EXPECT_EQ(expand_entries({"con"}), u"$$-48");
    // A folder that an archive gives its name, too.
    archive({"a", "b"});
    system.add(u"C:\\con.zip", system.at(u"C:\\x.zip"));
    EXPECT_EQ(expand({u"", u"C:\\con.zip", u"C:\\in"}), u"0");
    EXPECT_EQ(system.at(u"C:\\in\\con_\\a"), "a");
}

TEST_F(Zip, WritesNothingFromAnArchiveWhoseEntriesOverlap) {
    archive({"a", "b"});
    std::string bytes = system.at(u"C:\\x.zip");
    bytes.replace(bytes.rfind("PK\1\2") + 42, 4, 4, '\0'); // b where a is
    system.add(u"C:\\x.zip", bytes);
    const auto before = system.all();
    EXPECT_EQ(expand({u"", u"C:\\x.zip", u"C:\\out"}), u"$$-4249");
    EXPECT_EQ(system.all(), before);
    EXPECT_EQ(names({u"", u"C:\\x.zip"}), u"a\rb\r");
}

TEST_F(Zip, WritesThroughNoLink) {
    system.add_folder(u"C:\\out\\l");
    system.add_folder(u"C:\\out\\l\\m");
    system.add(u"C:\\out\\f", "old").link = u"elsewhere";
    system.find(u"C:\\out\\l")->link = u"elsewhere";
    const std::u16string overwrite = u"-OverwriteExisting -DontCreateArchiveFolder";
    for (const char* name : {"l/x", "l/m/x", "l/n/", "f", "l/"})
        EXPECT_EQ(expand_entries({"a", name}, overwrite), u"$$-37") << name;
    EXPECT_EQ(system.at(u"C:\\out\\f"), "old");
    EXPECT_EQ(system.at(u"C:\\out\\a"), "a"); // what came before stays
    system.find(u"C:\\out\\l")->link.reset();
    system.find(u"C:\\out")->link = u"elsewhere"; // the target itself is the user's choice
    EXPECT_EQ(expand_entries({"l/x"}, overwrite), u"0");
}

// Somebody puts a link to other files where the expansion works, before any of its steps.
TEST(ZipExpansion, WritesThroughNoLinkThatIsSwappedInMeanwhile) {
    const std::vector<std::string> entries = {"d/", "d/e/", "d/e/f", "d/g", "h/", "h/i", "d/e/j"};
    int held_off = 0;
    int refused = 0;
    int done = 0;
    for (const char16_t* swapped :
         {u"C:\\out\\x", u"C:\\out\\x\\d", u"C:\\out\\x\\d\\e", u"C:\\out\\x\\d\\e\\f",
          u"C:\\out\\x\\d\\g", u"C:\\out\\x\\h", u"C:\\out\\x\\h\\i", u"C:\\out\\x\\d\\e\\j"}) {
        const bool is_file = std::u16string_view(u"fgij").find(
                                 std::u16string_view(swapped).back()) != std::u16string_view::npos;
        for (int at = 1;; ++at) {
            SCOPED_TRACE(utf8_from_utf16(swapped) + " before step " + std::to_string(at));
            FakeSystem system;
            system.add(u"C:\\x.zip", test::zip_of(entries));
            system.add(u"C:\\secret\\e\\f", "kept");
            system.add(u"C:\\secret\\file", "kept");
            for (const char16_t* replaced : {u"d\\g", u"h\\i"})
                system.add(std::u16string(u"C:\\out\\x\\") + replaced, "old");
            int step = 0;
            system.on_step = [&] {
                if (++step == at)
                    held_off +=
                        !system.swap_in(swapped, is_file ? u"C:\\secret\\file" : u"C:\\secret");
            };
            FakeCall call({u"-OverwriteExisting", u"C:\\x.zip", u"C:\\out"});
            const std::string answer = test::answer_of(call, unzip(call, system));
            refused += answer == "$$-37";
            done += answer == "0";
            for (const auto& [path, bytes] : system.contents())
                EXPECT_TRUE(!path.starts_with(u"C:\\secret") || bytes == "kept")
                    << utf8_from_utf16(path);
            EXPECT_EQ(std::ranges::count_if(
                          system.all(),
                          [](const auto& item) { return item.first.starts_with(u"C:\\secret"); }),
                      4);
            if (step < at)
                break;
        }
    }
    // Each of the ways out has been taken.
    EXPECT_GT(held_off, 50);
    EXPECT_GT(refused, 20);
    EXPECT_GT(done, 50);
}

TEST_F(Zip, LooksAtEachFolderOnceHoweverFilesAreOrdered) {
    constexpr int depth = 400;
    constexpr int files = 1'000;
    std::vector<std::string> entries;
    std::string branches[] = {"a", "b"};
    for (std::string& branch : branches) {
        entries.push_back(branch + "/");
        for (int i = 1; i < depth; ++i)
            entries.push_back((branch += "/d") + "/");
    }
    for (int i = 0; i < files; ++i)
        entries.push_back(branches[i % 2] + "/" + std::to_string(i));
    system.looks = 0;
    EXPECT_EQ(expand_entries(entries), u"0");
    EXPECT_LT(system.looks, 20);
    EXPECT_EQ(system.most_held, 2u * depth + 1);

    // Without entries of their own, in more branches than are held at a time.
    std::vector<std::string> many;
    for (int i = 0; i < 3'000; ++i)
        many.push_back(std::to_string(i % 1'500) + "/" + std::to_string(i));
    system.looks = 0;
    EXPECT_EQ(expand_entries(many, u"-DontCreateArchiveFolder"), u"0");
    EXPECT_LT(system.looks, 4 * 3'000);
    EXPECT_LE(system.most_held, HeldFolders::most + 2);
}

class ZipOnSmallDisk : public Zip {
  protected:
    struct SmallDisk : FakeSystem {
        std::uint64_t free = 0;
        Result<files::DiskSpace> space(const std::u16string& folder) override {
            EXPECT_EQ(folder, u"C:\\out");
            return files::DiskSpace{1'000'000, free};
        }
    };
    std::u16string expand_with(std::uint64_t free, const std::string& zip) {
        disk.free = free;
        disk.add(u"C:\\x.zip", zip);
        FakeCall call({u"-OverwriteExisting -DontCreateArchiveFolder", u"C:\\x.zip", u"C:\\out"});
        return utf16_from_utf8(test::answer_of(call, unzip(call, disk)));
    }
    SmallDisk disk;
};

TEST_F(ZipOnSmallDisk, RefusesWhatWouldFillIt) {
    disk.add_folder(u"C:\\out");
    const std::string zip = test::zip_of({"1234", "d/", "d/34567890"}); // names are the contents
    const auto before = disk.contents();
    EXPECT_EQ(expand_with(13, zip), u"$$112");
    EXPECT_FALSE(disk.find(u"C:\\out\\d"));
    EXPECT_EQ(disk.at(u"C:\\out\\1234"), "<none>");
    EXPECT_EQ(expand_with(14, zip), u"0");
    // What is replaced gives its room back, be it on the disk or from the archive.
    EXPECT_EQ(expand_with(0, zip), u"0");
    disk.add(u"C:\\out\\1234", "12");
    EXPECT_EQ(expand_with(1, zip), u"$$112");
    EXPECT_EQ(expand_with(2, zip), u"0");
    EXPECT_EQ(expand_with(5, test::zip_of({"twice", "TWICE"})), u"0");
    // It counts how much is in use at the most, not in the end.
    disk.add(u"C:\\out\\last", std::string(100, 'x'));
    EXPECT_EQ(expand_with(4, test::zip_of({"first", "last"})), u"$$112");
    EXPECT_EQ(expand_with(4, test::zip_of({"last", "first"})), u"0");
    // A folder in which everything is compressed.
    disk.find(u"C:\\out")->attributes |= bit(files::Attribute::Compressed);
    EXPECT_EQ(expand_with(0, test::zip_of({"compressed"})), u"0");
}

TEST_F(ZipOnSmallDisk, LeavesWhatCannotBeExpandedToItsOwnCode) {
    disk.add_folder(u"C:\\out");
    const std::string zip = test::zip_of({"a", "b"});
    const std::size_t record = zip.rfind("PK\1\2");
    const auto changed = [&](std::size_t field, std::string_view bytes) {
        return std::string(zip).replace(record + field, bytes.size(), bytes);
    };
    constexpr std::size_t flags = 8, method = 10, size = 24;
    EXPECT_EQ(expand_with(1, zip), u"$$112");
    EXPECT_EQ(expand_with(1, changed(flags, std::string_view("\1\0", 2))), u"$$-3104");
    EXPECT_EQ(expand_with(1, changed(method, std::string_view("\14\0", 2))), u"$$-3104");
    std::string larger = changed(size, "\xFE\xFF\xFF\x7F"); // than its data can become
    larger[record + method] = 8;
    EXPECT_EQ(expand_with(1, larger), u"$$-3104");
    // What stands behind it is not come to.
    EXPECT_EQ(expand_with(1, test::zip_of({"c", "..", "defghi"})), u"$$-37");
    EXPECT_EQ(disk.at(u"C:\\out\\c"), "c");
}

TEST_F(Zip, ReportsWhatKeepsAnArchiveFromBeingRead) {
    system.add(u"C:\\bad.zip", "not an archive, and long enough to be one");
    for (const auto& [operation, result] :
         {std::pair(1, u"$$-23"), std::pair(2, u"$$-77"), std::pair(3, u"$$-4249")}) {
        system.fail(operation, ErrorCode::Busy);
        EXPECT_EQ(names({u"", u"C:\\bad.zip"}), result);
    }
}

TEST_F(Zip, ListsNamesAsTheSwitchesSay) {
    archive({"__MACOSX/", "__MACOSX/a", ".DS_Store", "sub/.DS_Store", "x.DS_Store", "\x84"});
    const std::u16string mac = u"__MACOSX/\r__MACOSX/a\r";
    const std::u16string stores = u".DS_Store\rsub/.DS_Store\r";
    const std::u16string rest = u"x.DS_Store\r\u00E4\r";
    EXPECT_EQ(names({u"", u"C:\\x.zip"}), mac + stores + rest);
    EXPECT_EQ(names({u"-SkipHiddenMacOSXItems", u"C:\\x.zip"}), stores + rest);
    EXPECT_EQ(names({u"-SkipDS_Store", u"C:\\x.zip"}), mac + rest);
    const std::u16string json =
        names({u"-SkipDS_Store -SkipHiddenMacOSXItems -Format=JSON", u"C:\\x.zip"});
    EXPECT_EQ(std::ranges::count(json, u'{'), std::ranges::count(rest, u'\r'));
    EXPECT_EQ(names({u"-SkipDS_Store -SkipHiddenMacOSXItems", u"C:\\x.zip"}), rest);
    EXPECT_EQ(names({u"-SkipDS_Store -SkipHiddenMacOSXItems -Encoding=ISO_8859_1", u"C:\\x.zip"}),
              u"x.DS_Store\r\u0084\r");
    archive({});
    EXPECT_EQ(names({u"", u"C:\\x.zip"}), u"");
}

} // namespace
} // namespace vell::archive
