// Functions that write the contents of files, on the system's own, through the host.
#include "console/host/container_file.h"
#include "console/host/host_objects.h"
#include "src/files/paths/defaults.h"
#include "tests/portable/references.h"
#include "tests/windows/plugin_fixture.h"

#include <atomic>
#include <filesystem>

namespace vell::test {
namespace {

class WriteContents : public PluginWithFolder {
  protected:
    std::vector<std::wstring> names() const {
        std::vector<std::wstring> found;
        for (const auto& item : std::filesystem::directory_iterator(folder.path()))
            found.push_back(item.path().filename().wstring());
        return found;
    }
};

TEST_F(WriteContents, EncodesAsTheHostDoes) {
    const std::u16string file = folder.file(L"text.txt", "a rather long line of old contents");
    const struct {
        const char16_t* switches;
        const char16_t* text;
        const char* expected;
    } cases[] = {
        {GetACP() == 1252 ? u"" : u"-Encoding=ASCII_Windows", u"a\u20AC\u65E5", "a\x80?"},
        {u"-Encoding=ASCII_Windows", u"\u0100\U0001F600b", "??b"}, // no A without its stroke
        {u"-Encoding=ASCII_Mac", u"\u00C4\r", "\x80\r"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(call(u"VlFile_SetContentsOfFile", {Value(c.switches), file, Value(c.text)}),
                  u"0");
        EXPECT_EQ(contents(L"text.txt"), c.expected);
    }
    // Mac Roman refuses what it lacks, and nothing is written; a text to search is converted
    // plainly.
    for (const auto* function : {u"VlFile_SetContentsOfFile", u"VlFile_AppendToFile"})
        EXPECT_EQ(call(function, {u"-Encoding=ASCII_Mac", file, u"\u65E5"}),
                  u"VellParamErr: XP7_GetBytesImproved failed");
    folder.file(L"text.txt", "a?b");
    EXPECT_EQ(call(u"VlFile_Substitute", {u"-Encoding=ASCII_Mac", file, u"", u"\u65E5", u"!"}),
              u"0");
    EXPECT_EQ(contents(L"text.txt"), "a!b");
}

TEST_F(WriteContents, ReportsWhatKeepsItFromWriting) {
    const std::u16string file = folder.file(L"some.txt", "old");
    const auto all_on = [&](const std::u16string& path) {
        return std::vector<std::u16string>{
            call(u"VlFile_SetContentsOfFile", {u"", path, u"x"}),
            call(u"VlFile_AppendToFile", {u"", path, u"x"}),
            call(u"VlFile_InsertContents", {u"", path, u"", u"x"}),
            call(u"VlFile_Substitute", {u"", path, u"", u"o", u"x"}),
            call(u"VlFile_ExportToFile", {u"-OverwriteExisting", u"x", path})};
    };
    using Codes = std::vector<std::u16string>;
    EXPECT_EQ(all_on(path(L"none\\some.txt")),
              (Codes{u"$$-120", u"$$-120", u"$$-120", u"$$-43", u"$$-120"}));
    {
        const UniqueFile held = open_file(file, GENERIC_READ, FILE_SHARE_READ);
        ASSERT_TRUE(held);
        EXPECT_EQ(all_on(file), Codes(5, u"$$-47"));
    }
    SetFileAttributesW(as_wide(file), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(all_on(file), Codes(5, u"$$-47"));
    SetFileAttributesW(as_wide(file), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(contents(L"some.txt"), "old");
    EXPECT_EQ(names(), std::vector<std::wstring>{L"some.txt"});
}

TEST_F(WriteContents, WorksInPlaceAndIntoNewFiles) {
    // A name beyond the BMP, and a path of more than 260 characters.
    const std::u16string file = folder.subfolder(deep_name) + u"\xD83D\xDE00.txt";
    const std::u16string other = file + u".new";
    EXPECT_EQ(call(u"VlFile_ExportToFile", {u"", u"one two", file}), u"0");
    EXPECT_EQ(call(u"VlFile_InsertContents", {u"", file, file, u" and", number(3)}), u"0");
    EXPECT_EQ(call(u"VlFile_InsertContents", {u"", file, other, u"> "}), u"0");
    EXPECT_EQ(call(u"VlFile_Substitute", {u"IgnoreCase", file, u"", u"ONE", u"1"}), u"0");
    EXPECT_EQ(call(u"VlFile_Substitute", {u"", file, other, u"two", u"2"}), u"$$-48");
    const auto get = [&](const std::u16string& path) {
        return call(u"VlFile_GetContents", {u"-Encoding=UTF8", path});
    };
    EXPECT_EQ(get(file), u"1 and two");
    EXPECT_EQ(get(other), u"> one and two");
    for (const std::u16string& path : {file, other})
        EXPECT_TRUE(DeleteFileW((L"\\\\?\\" + to_wide(path)).c_str())); // nobody holds it
}

// Of containers, the main stream comes byte for byte, and nothing of the work is left.
TEST_F(WriteContents, ExportsContainersAndLeavesNoTemporaryFile) {
    std::string bytes;
    for (int i = 0; i < 200'000; ++i)
        bytes += static_cast<char>(i * i >> 3);
    auto made = console::read_container_file(folder.file(L"source.bin", bytes));
    ASSERT_TRUE(made);
    const Value container(
        console::ContainerPtr(std::make_shared<console::HostContainer>(std::move(*made))));
    const std::u16string target = folder.file(L"target.bin", "old");
    EXPECT_EQ(call(u"VlFile_ExportToFile", {u"", container, target}), u"$$-48");
    EXPECT_EQ(contents(L"target.bin"), "old");
    EXPECT_EQ(call(u"VlFile_ExportToFile", {u"-OverwriteExisting", container, target}), u"0");
    EXPECT_EQ(contents(L"target.bin"), bytes);
    EXPECT_EQ(names().size(), 2U);

    const std::string log = notes_of([&] {
        EXPECT_EQ(call(u"VlFile_Substitute", {u"", target, u"", u"a", u"bb"}), u"0");
    });
    EXPECT_EQ(log.find("VELLTEMP{"), std::string::npos);
    EXPECT_EQ(contents(L"target.bin"), reference::substitute(bytes, "a", "bb", false));
}

// Each call gets the file for itself or is refused; no call's work is lost or mixed with another's.
TEST_F(WriteContents, SessionsTakeTurnsOnOneFile) {
    start({.application_type = server});
    const std::u16string file = folder.file(L"shared.txt", "|");
    std::atomic<int> inserted = 0;
    std::atomic<int> appended = 0;
    std::atomic<int> wrong = 0;
    in_threads(6, [&](std::size_t session) {
        const bool inserts = session % 2 == 0;
        for (int i = 0; i < 60; ++i) {
            const std::u16string result =
                inserts ? call(u"VlFile_InsertContents", {u"", file, u"", u"<>"})
                        : call(u"VlFile_AppendToFile", {u"", file, u"[]"});
            (inserts ? inserted : appended) += result == u"0";
            wrong += result != u"0" && result != u"$$-47";
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(inserted, 0);
    EXPECT_GT(appended, 0);
    std::string expected;
    for (int i = 0; i < inserted; ++i)
        expected += "<>";
    expected += '|';
    for (int i = 0; i < appended; ++i)
        expected += "[]";
    EXPECT_EQ(contents(L"shared.txt"), expected);
}

} // namespace
} // namespace vell::test
