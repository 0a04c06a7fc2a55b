// The functions on archives over a system in memory.
#include "src/archive/zip_functions.h"
#include "src/archive/zip_writer.h"
#include "tests/portable/fake_archives.h"
#include "tests/portable/fake_call.h"

#include <gtest/gtest.h>

namespace vell::archive {
namespace {

using testing::FakeArchives;
using testing::native;

// Whose host decodes one letter of DOS.
class FakeCall : public testing::FakeCall {
  public:
    using testing::FakeCall::FakeCall;
    std::u16string decode(std::string_view bytes, params::TextEncoding encoding) override {
        std::u16string text = testing::FakeCall::decode(bytes, encoding);
        if (encoding == params::TextEncoding::AsciiDos)
            std::ranges::replace(text, u'\u0084', u'\u00E4');
        return text;
    }
};

class Zip : public ::testing::Test {
  protected:
    Zip() {
        system.store.folders = {u"C:",           u"C:\\out",     u"C:\\in",
                                u"C:\\in\\.git", u"C:\\in\\sub", u"C:\\in\\empty"};
        system.store.add(u"C:\\in\\a.txt", "hello");
        system.store.add(u"C:\\in\\hidden.lnk", "12");
        system.store.add(u"C:\\in\\.git\\config", "git");
        system.store.add(u"C:\\in\\sub\\\u00E4.txt", std::string(5'000, 'z'));
    }

    // The result, or "$$" and the code.
    template <typename Body>
    static std::u16string result_of(FakeCall& call, Body body) {
        const Result<void> done = body(call);
        if (done)
            return call.result().value_or(u"<nothing set>");
        EXPECT_FALSE(call.result());
        const std::string number = std::to_string(static_cast<int>(done.error()));
        return u"$$" + std::u16string(number.begin(), number.end());
    }
    std::u16string create(std::vector<std::u16string> parameters) {
        FakeCall call(std::move(parameters));
        return result_of(call, [&](params::Call& c) { return create_zip(c, system); });
    }
    std::u16string expand(std::vector<std::u16string> parameters) {
        FakeCall call(std::move(parameters));
        return result_of(call, [&](params::Call& c) { return unzip(c, system); });
    }
    std::u16string names(std::vector<std::u16string> parameters) {
        FakeCall call(std::move(parameters));
        return result_of(call, [&](params::Call& c) { return get_zip_info(c, system); });
    }

    // Puts C:\x.zip there, with entries of the given names; files hold their own name.
    void archive(const std::vector<std::string>& entries) {
        constexpr std::string_view refused = "\\:/";
        FakeArchives source;
        source.store.add(u"zip", "");
        ZipWriter writer(*source.store.open(native(u"zip"), files::Permission::Write));
        for (const std::string& name : entries) {
            source.store.add(u"data", name);
            // Names that the writer refuses get into the directory afterwards.
            std::string written = name;
            for (char& c : written)
                if (const std::size_t at = refused.find(c);
                    at != refused.npos && &c != &written.back())
                    c = static_cast<char>(at + 1);
            ASSERT_TRUE(name.ends_with('/')
                            ? writer.add_folder(written, {}, {0, false})
                            : writer.add_file(source, written, native(u"data"), {0, false}));
        }
        ASSERT_TRUE(writer.finish());
        std::string bytes = source.store.at(u"zip");
        for (std::size_t at = bytes.find("PK\1\2"); at != std::string::npos;
             at = bytes.find("PK\1\2", at + 46)) {
            const auto length = static_cast<unsigned char>(bytes[at + 28]);
            for (char& c : std::span(bytes).subspan(at + 46, length))
                if (c > 0 && static_cast<std::size_t>(c) <= refused.size())
                    c = refused[static_cast<std::size_t>(c) - 1];
        }
        system.store.add(u"C:\\x.zip", bytes);
    }
    // Expands entries into C:\out.
    std::u16string expand_entries(const std::vector<std::string>& entries,
                                  const std::u16string& switches = u"") {
        archive(entries);
        return expand({switches, u"C:\\x.zip", u"C:\\out"});
    }

    FakeArchives system;
};

TEST_F(Zip, ArchivesAFolderAndExpandsItAgain) {
    EXPECT_EQ(create({u"", u"C:\\in\\", u"C:\\out\\archive"}), u"0");
    EXPECT_EQ(names({u"", u"C:\\out\\archive.zip"}),
              u"in/.git/\rin/.git/config\rin/empty/\rin/sub/\rin/sub/\u00E4.txt\rin/a.txt\r"
              u"in/hidden.lnk\r");
    EXPECT_EQ(expand({u"", u"C:\\out\\archive.zip"}), u"0");
    EXPECT_EQ(system.times.at(u"C:\\out\\in\\a.txt"), testing::noon);
    EXPECT_EQ(system.store.open_files(), 0);

    EXPECT_EQ(create({u"-DontAddEnclosingFolder -ForceUTF8Filenames", u"C:\\in", u"C:\\in\\b.zip"}),
              u"0"); // without itself
    EXPECT_EQ(names({u"", u"C:\\in\\b.zip"}),
              u".git/\r.git/config\rempty/\rsub/\rsub/\u00E4.txt\ra.txt\rhidden.lnk\r");
    auto reader = ZipReader::open(files::memory_file(system.store.at(u"C:\\in\\b.zip")));
    for (std::uint32_t i = 0; i < reader->entry_count(); ++i)
        EXPECT_TRUE(reader->entry(i)->utf8_name);
}

TEST_F(Zip, LeavesLinksOut) {
    system.links = {u"C:\\in\\sub", u"C:\\in\\a.txt"};
    EXPECT_EQ(create({u"-DontAddEnclosingFolder", u"C:\\in", u"C:\\l.zip"}), u"0");
    EXPECT_EQ(names({u"", u"C:\\l.zip"}), u".git/\r.git/config\rempty/\rhidden.lnk\r");
}

TEST_F(Zip, ArchivesAFile) {
    EXPECT_EQ(create({u"-ForceUTF8Filenames", u"C:\\in\\a.txt", u"C:\\my.zips"}), u"0");
    auto reader = ZipReader::open(files::memory_file(system.store.at(u"C:\\my.zips")));
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->entry(0)->name, "a.txt");
    EXPECT_FALSE(reader->entry(0)->utf8_name);
    EXPECT_EQ(create({u"", u"C:\\in\\sub\\\u00E4.txt", u"C:\\b."}), u"0");
    reader = ZipReader::open(files::memory_file(system.store.at(u"C:\\b..zip")));
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->entry(0)->name, "\xC3\xA4.txt");
    EXPECT_TRUE(reader->entry(0)->utf8_name);
}

TEST_F(Zip, ReportsWhatKeepsAnArchiveFromBeingMade) {
    EXPECT_EQ(create({u"", u"C:\\in"}), u"$$-50");
    EXPECT_EQ(create({u"", u"C:\\none", u"C:\\a.zip"}), u"$$-43");
    EXPECT_EQ(create({u"", u"", u"C:\\a.zip"}), u"$$-50");
    EXPECT_EQ(create({u"", u"C:\\in", u""}), u"$$-50");
    EXPECT_EQ(create({u"", u"C:\\in", u"$$-43"}), u"$$-4299");
    EXPECT_EQ(create({u"", u"C:\\in", u"C:\\in\\a.txt"}), u"$$-48");
    system.store.folders.insert(u"C:\\d.d");
    EXPECT_EQ(create({u"", u"C:\\in", u"C:\\d.d"}), u"$$-1302");
    constexpr std::pair<ErrorCode, const char16_t*> creating[] = {
        {ErrorCode::FolderNotFound, u"$$-4402"}, {ErrorCode::Busy, u"$$-4401"},
        {ErrorCode::AlreadyExists, u"$$-1301"},  {ErrorCode::BadName, u"$$-208"},
        {ErrorCode::OutOfMemory, u"$$-108"},
    };
    for (const auto& [code, result] : creating) {
        system.store.fail(1, code);
        EXPECT_EQ(create({u"", u"C:\\in", u"C:\\a.zip"}), result);
    }
    for (const int operation : {3, 4}) { // opening the first file, behind a folder entry
        system.store.fail(operation, ErrorCode::Busy);
        EXPECT_EQ(create({u"", u"C:\\in\\a.txt", u"C:\\a.zip"}),
                  operation == 3 ? u"$$-54" : u"$$-4278");
    }
}

TEST_F(Zip, WritesAnArchiveThatOthersLookAtWhileItIsMade) {
    system.store.watched = {u"C:\\a.zip"};
    EXPECT_EQ(create({u"", u"C:\\in", u"C:\\a.zip"}), u"0");
    EXPECT_FALSE(system.store.at(u"C:\\a.zip").empty());
}

TEST_F(Zip, LeavesNoArchiveBehindWhenItFails) {
    const auto before = system.store.contents();
    for (int failing = 1;; ++failing) {
        system.store.fail(failing, ErrorCode::OutOfMemory);
        const std::u16string result = create({u"", u"C:\\in", u"C:\\a.zip"});
        EXPECT_EQ(system.store.open_files(), 0);
        if (result == u"0") {
            EXPECT_LT(system.store.operations(), failing);
            break;
        }
        EXPECT_EQ(system.store.contents(), before) << failing;
    }
}

TEST_F(Zip, ChoosesTheFolderByWhatIsAtTheTop) {
    const char16_t* const overwrite = u"-OverwriteExisting";
    const char16_t* const flat = u"-DontCreateArchiveFolder";
    const struct {
        std::vector<std::string> entries;
        const char16_t* switches;
        const char16_t* result;
        const char16_t* file = nullptr; // below C:\out, with its contents
        const char* contents = nullptr;
    } cases[] = {
        {{"one"}, u"", u"0", u"one", "one"},
        {{"one"}, u"", u"$$-48"},
        {{"one"}, overwrite, u"0"},
        {{"A/", "A/b"}, u"", u"0", u"A\\b", "A/b"},
        {{"A/", "A/b"}, u"", u"$$-48"},
        {{"A/", "A/b"}, overwrite, u"0"},
        {{"A"}, overwrite, u"$$-48"}, // a folder of its name
        {{"p", "r/", "r/q"}, u"", u"0", u"x\\r\\q", "r/q"},
        {{"p", "q"}, u"", u"$$-48"},
        {{"p", "q"}, overwrite, u"0"},
        {{"p", "q"}, flat, u"0", u"q", "q"},
        // Only the first file and the first folder are checked beforehand.
        {{"s", "q"}, flat, u"0"},
        {{"q", "t"}, flat, u"$$-48", u"t", "<none>"},
        // The folder itself is no item of it; what stands behind "./" is.
        {{"./", "./u", "./B/", "./B/v"}, u"", u"0", u"B\\v", "./B/v"},
        {{"./", "./w", "./B/", "./B/v"}, u"", u"$$-48"},
        {{"./", "./u", "./C/"}, u"", u"$$-48"},
        {{"./", "/u", "./B/"}, overwrite, u"0", u"u", "/u"},
    };
    for (const auto& [entries, switches, result, file, contents] : cases) {
        SCOPED_TRACE(entries.back());
        EXPECT_EQ(expand_entries(entries, switches), result);
        if (file) {
            EXPECT_EQ(system.store.at(std::u16string(u"C:\\out\\") + file), contents);
        }
    }
    system.store.folders.erase(u"C:\\out\\x");
    system.store.add(u"C:\\out\\x", "a file");
    EXPECT_EQ(expand_entries({"p", "q"}), u"$$-48");
    EXPECT_EQ(expand_entries({"p", "q"}, overwrite), u"$$-4282");
}

TEST_F(Zip, TakesTheOptionsOfTheStep) {
    archive({"p", "q"});
    const auto step = [&](std::int32_t flat, std::int32_t overwrite) {
        FakeCall call({u"", u"C:\\x.zip", u"C:\\out", u"", u"", u""});
        call.set_step_option(3, flat);
        call.set_step_option(4, overwrite);
        return result_of(call, [&](params::Call& c) { return unzip(c, system); });
    };
    EXPECT_EQ(step(1, 0), u"0");
    EXPECT_EQ(system.store.at(u"C:\\out\\q"), "q");
    EXPECT_EQ(step(1, params::Call::not_given), u"$$-48");
    EXPECT_EQ(step(1, 1), u"0");
}

TEST_F(Zip, MakesOneFolderAboveAnItem) {
    EXPECT_EQ(expand_entries({"A/b"}), u"0");
    EXPECT_EQ(system.store.at(u"C:\\out\\A\\b"), "A/b");
    EXPECT_EQ(expand_entries({"B/c/d"}), u"$$-4282");
    EXPECT_EQ(expand_entries({"E/f", "E/"}), u"$$17"); // the file has made the folder
    EXPECT_EQ(expand_entries({"F/f", "F/"}, u"-OverwriteExisting"), u"0");
    EXPECT_EQ(expand_entries({"G/f", "G/f/"}), u"$$-4282");
    EXPECT_EQ(expand_entries({"H/f/", "H/f"}), u"$$-4281");
    EXPECT_EQ(expand_entries({"I/a:b ", "I/a:b "}), u"0"); // twice: the second stays
    EXPECT_EQ(system.store.at(u"C:\\out\\I\\a_b_"), "I/a:b ");
}

TEST_F(Zip, WritesNothingOutsideTheTargetFolder) {
    for (const char* name : {"../a", "d\\..\\..\\a", "d/..", "CON/../a", " /../a"}) {
        archive({name});
        const auto files = system.store.contents();
        const auto folders = system.store.folders;
        EXPECT_EQ(expand({u"", u"C:\\x.zip", u"C:\\out"}), u"$$-37") << name;
        EXPECT_EQ(system.store.contents(), files) << name;
        EXPECT_EQ(system.store.folders, folders) << name;
    }
    EXPECT_EQ(expand_entries({"/abs", "C:\\d"}, u"-DontCreateArchiveFolder"), u"0");
    EXPECT_EQ(system.store.at(u"C:\\out\\abs"), "/abs");
    EXPECT_EQ(system.store.at(u"C:\\out\\C_\\d"), "C:\\d");
}

TEST_F(Zip, GivesWhatIsNamedLikeADeviceANameOfItsOwn) {
    EXPECT_EQ(expand_entries({"aux.c", "aux/", "aux/NUL"}), u"0");
    EXPECT_EQ(system.store.at(u"C:\\out\\x\\aux_.c"), "aux.c");
    EXPECT_EQ(system.store.at(u"C:\\out\\x\\aux_\\NUL_"), "aux/NUL");
    // It is that name which is looked for beforehand.
    EXPECT_EQ(expand_entries({"con"}), u"0");
    EXPECT_EQ(expand_entries({"con"}), u"$$-48");
    // A folder that an archive gives its name, too.
    archive({"a", "b"});
    system.store.add(u"C:\\con.zip", system.store.at(u"C:\\x.zip"));
    EXPECT_EQ(expand({u"", u"C:\\con.zip", u"C:\\in"}), u"0");
    EXPECT_EQ(system.store.at(u"C:\\in\\con_\\a"), "a");
}

TEST_F(Zip, WritesNothingFromAnArchiveWhoseEntriesOverlap) {
    archive({"a", "b"});
    std::string bytes = system.store.at(u"C:\\x.zip");
    bytes.replace(bytes.rfind("PK\1\2") + 42, 4, 4, '\0'); // b where a is
    system.store.add(u"C:\\x.zip", bytes);
    const auto folders = system.store.folders;
    EXPECT_EQ(expand({u"", u"C:\\x.zip", u"C:\\out"}), u"$$-4249");
    EXPECT_EQ(system.store.folders, folders);
    EXPECT_EQ(names({u"", u"C:\\x.zip"}), u"a\rb\r");
}

TEST_F(Zip, WritesThroughNoLink) {
    system.store.folders.insert(u"C:\\out\\l");
    system.store.folders.insert(u"C:\\out\\l\\m");
    system.store.add(u"C:\\out\\f", "old");
    system.links = {u"C:\\out\\l", u"C:\\out\\f"};
    const std::u16string overwrite = u"-OverwriteExisting -DontCreateArchiveFolder";
    for (const char* name : {"l/x", "l/m/x", "l/n/", "f", "l/"})
        EXPECT_EQ(expand_entries({"a", name}, overwrite), u"$$-37") << name;
    EXPECT_EQ(system.store.at(u"C:\\out\\f"), "old");
    EXPECT_EQ(system.store.at(u"C:\\out\\a"), "a"); // what came before stays
    system.links = {u"C:\\out"};                    // the target itself is the user's choice
    EXPECT_EQ(expand_entries({"l/x"}, overwrite), u"0");
}

TEST_F(Zip, ReportsWhatKeepsAnArchiveFromBeingRead) {
    system.store.add(u"C:\\bad.zip", "not an archive, and long enough to be one");
    EXPECT_EQ(expand({u""}), u"$$-50");
    EXPECT_EQ(expand({u"", u"C:\\none.zip"}), u"$$-43");
    EXPECT_EQ(expand({u"", u"C:\\in"}), u"$$-1302");
    EXPECT_EQ(expand({u"", u"C:\\bad.zip"}), u"$$-4249");
    EXPECT_EQ(expand({u"", u"C:\\bad.zip", u"C:\\in\\a.txt"}), u"$$-48");
    EXPECT_EQ(expand({u"", u"C:\\bad.zip", u"C:\\none"}), u"$$-1407");
    EXPECT_EQ(names({u""}), u"$$-50");
    EXPECT_EQ(names({u"", u"C:\\none.zip"}), u"$$-43");
    EXPECT_EQ(names({u"", u"C:\\in"}), u"$$-1302");
    for (const auto& [operation, result] :
         {std::pair(1, u"$$-23"), std::pair(2, u"$$-77"), std::pair(3, u"$$-4249")}) {
        system.store.fail(operation, ErrorCode::Busy);
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
    EXPECT_EQ(names({u"-SkipDS_Store -SkipHiddenMacOSXItems", u"C:\\x.zip"}), rest);
    EXPECT_EQ(names({u"-SkipDS_Store -SkipHiddenMacOSXItems -Encoding=ISO_8859_1", u"C:\\x.zip"}),
              u"x.DS_Store\r\u0084\r");
    archive({});
    EXPECT_EQ(names({u"", u"C:\\x.zip"}), u"");
}

} // namespace
} // namespace vell::archive
