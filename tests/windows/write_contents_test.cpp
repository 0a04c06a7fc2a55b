// Functions that write the contents of files, on the system's own, through the host.
#include "console/host/container_file.h"
#include "console/host/host_objects.h"
#include "src/base/win32_handle.h"
#include "src/base/win32_text.h"
#include "src/files/defaults.h"
#include "tests/portable/references.h"
#include "tests/windows/plugin_fixture.h"

#include <atomic>
#include <functional>
#include <thread>

namespace vell::test {
namespace {

Value number(std::int64_t value) {
    return Value(console::Decimal(value));
}

class WriteContents : public Plugin {
  protected:
    WriteContents() { start(); }

    std::u16string path_of(std::wstring_view name) const { return to_utf16(folder.path(name)); }
    std::string contents(std::wstring_view name) const { return read_file(folder.path(name)); }
    std::vector<std::wstring> names() const {
        std::vector<std::wstring> found;
        WIN32_FIND_DATAW data;
        const HANDLE search = FindFirstFileW(folder.path(L"*").c_str(), &data);
        do {
            if (!(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
                found.emplace_back(data.cFileName);
        } while (FindNextFileW(search, &data));
        FindClose(search);
        return found;
    }

    TemporaryFolder folder;
};

TEST_F(WriteContents, EncodesAndConvertsLineEnds) {
    const std::u16string file = folder.file(L"text.txt", "a rather long line of old contents");
    const struct {
        const char16_t* switches;
        const char16_t* text;
        const char* expected;
    } cases[] = {
        {u"", u"a\u20AC\u017D", "a\x80\x8E"}, // native: 1252
        {u"", u"a\u65E5", "a?"},
        {u"-Encoding=UTF8", u"a\u20AC\U0001F600", "a\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {u"-Encoding=ASCII_DOS", u"\u00C7", "\x80"},
        {u"-Encoding=ASCII_Mac", u"\u00C4\r", "\x80\r"},
        {u"-Encoding=BytesOnly", u"\u0080\u00FF", "\x80\xFF"},
        {u"-CRtoCRLF -CRLFtoCR", u"a\rb", "a\r\nb"},
        {u"-CRLFtoCR", u"a\r\nb\n", "a\rb\n"},
        {u"", u"", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(call(u"VlFile_SetContentsOfFile", {Value(c.switches), file, Value(c.text)}),
                  u"0");
        EXPECT_EQ(contents(L"text.txt"), c.expected);
    }
    // Mac Roman and bare bytes refuse what they lack, and nothing is written.
    const std::u16string unreadable = u"VellParamErr: XP7_GetBytesImproved failed";
    call(u"VlFile_SetContentsOfFile", {u"", file, u"kept"});
    for (const char16_t* switches : {u"-Encoding=ASCII_Mac", u"-Encoding=BytesOnly"}) {
        EXPECT_EQ(call(u"VlFile_SetContentsOfFile", {Value(switches), file, u"\u65E5"}),
                  unreadable);
        EXPECT_EQ(call(u"VlFile_AppendToFile", {Value(switches), file, u"\u65E5"}), unreadable);
    }
    EXPECT_EQ(contents(L"text.txt"), "kept");
    // The search text for a substitution is converted plainly.
    folder.file(L"marks.txt", "a?b");
    EXPECT_EQ(call(u"VlFile_Substitute",
                   {u"-Encoding=ASCII_Mac", path_of(L"marks.txt"), u"", u"\u65E5", u"!"}),
              u"0");
    EXPECT_EQ(contents(L"marks.txt"), "a!b");
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
    EXPECT_EQ(all_on(path_of(L"none\\some.txt")),
              (Codes{u"$$-120", u"$$-120", u"$$-120", u"$$-43", u"$$-120"}));
    EXPECT_EQ(all_on(u""), Codes(5, u"$$-50"));
    EXPECT_EQ(all_on(u"$$-43"), Codes(5, u"$$-4299"));
    {
        const UniqueFile held(CreateFileW(as_wide(file), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(held);
        EXPECT_EQ(all_on(file), Codes(5, u"$$-47"));
    }
    EXPECT_EQ(contents(L"some.txt"), "old");
    EXPECT_EQ(names(), std::vector<std::wstring>{L"some.txt"});

    EXPECT_EQ(call(u"VlFile_AppendToFile", {u"", path_of(L"new.txt"), u"x"}), u"$$-43");
    EXPECT_EQ(call(u"VlFile_InsertContents", {u"", file, u"", u"x", number(4)}), u"$$-39");
    EXPECT_EQ(call(u"VlFile_InsertContents", {u"", file, path_of(L"new.txt."), u"x"}), u"$$-37");
    EXPECT_EQ(call(u"VlFile_ExportToFile", {u"", u"x", path_of(L"new.txt ")}), u"$$-37");
    EXPECT_EQ(call(u"VlFile_ExportToFile", {u"", u"x", file}), u"$$-48");
    EXPECT_EQ(names(), std::vector<std::wstring>{L"some.txt"});
}

TEST_F(WriteContents, WorksInPlaceAndIntoNewFiles) {
    // A name beyond the BMP, and a path of more than 260 characters.
    std::wstring deep = folder.path();
    for (int i = 0; i < 5; ++i) {
        deep += std::wstring(50, static_cast<wchar_t>(L'a' + i)) + L"\\";
        ASSERT_TRUE(CreateDirectoryW((L"\\\\?\\" + deep).c_str(), nullptr));
    }
    const std::u16string file = to_utf16(deep) + u"\xD83D\xDE00.txt";
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

TEST_F(WriteContents, ServesSteps) {
    const std::u16string file = folder.file(L"step.txt", "");
    const Value none;
    EXPECT_EQ(call_id(7313, {u"", file, u"a\r\u00E9", number(1), number(1)}), u"0");
    EXPECT_EQ(contents(L"step.txt"), "a\r\n\xC3\xA9");
    EXPECT_EQ(call_id(7308, {u"", file, u"\u00E9", number(4200), number(0)}), u"0");
    EXPECT_EQ(contents(L"step.txt"), "a\r\n\xC3\xA9\xE9");
    EXPECT_EQ(call_id(7302, {u"", file, none, u"\u00E9\r", number(1), number(0), number(1)}), u"0");
    EXPECT_EQ(contents(L"step.txt"), "a\xE9\r\n\r\n\xC3\xA9\xE9");
    EXPECT_EQ(call_id(7283, {u"", file, none, u"A\u00E9", u"x", number(1), number(0)}), u"0");
    EXPECT_EQ(contents(L"step.txt"), "x\r\n\r\n\xC3\xA9\xE9");
    EXPECT_EQ(call_id(7283, {u"", file, none, u"X", u"y", number(0), number(1)}), u"0");
    EXPECT_EQ(contents(L"step.txt"), "x\r\n\r\n\xC3\xA9\xE9");
}

TEST_F(WriteContents, KeepsTheDefaultFileBetweenCalls) {
    const std::u16string file = folder.file(L"default.txt", "old and long");
    EXPECT_EQ(call(u"VlFile_SetDefaultFileSpec", {u"", u"filewin:/" + file}), u"0");
    EXPECT_EQ(call(u"VlFile_SetContents", {u"", u"new"}), u"0");
    EXPECT_EQ(call(u"VlFile_AppendContents", {u"", u"er"}), u"0");
    EXPECT_EQ(contents(L"default.txt"), "newer");
    EXPECT_EQ(call(u"VlFile_SetDefaultType", {u"", u"TEXT"}), u"0");
    EXPECT_EQ(files::default_file_types(), u"TEXT");
    EXPECT_EQ(call(u"VlFile_SetDefaultCreator", {u"", u"ttxt"}), u"0");
    EXPECT_EQ(call(u"VlFile_SetDefaultFileSpec", {u"", u""}), u"$$-50");
    EXPECT_EQ(call(u"VlFile_AppendContents", {u"", u"!"}), u"$$-50");
    EXPECT_TRUE(DeleteFileW(as_wide(file)));
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
    EXPECT_EQ(call(u"VlFile_ExportToFile", {u"-OverwriteExisting", container, u"..."}), u"$$-37");
    EXPECT_EQ(names().size(), 2U);

    call(u"VlFile_Control", {u"-AddToDebugLog=true"});
    call(u"VlFile_Control", {u"-GetAndClearDebugLog"});
    EXPECT_EQ(call(u"VlFile_Substitute", {u"", target, u"", u"a", u"bb"}), u"0");
    const std::u16string log = call(u"VlFile_Control", {u"-GetAndClearDebugLog"});
    call(u"VlFile_Control", {u"-AddToDebugLog=false"});
    EXPECT_EQ(log.find(u"VELLTEMP{"), std::u16string::npos);
    EXPECT_EQ(contents(L"target.bin"), reference::substitute(bytes, "a", "bb", false));
}

// Each call gets the file for itself or is refused; no call's work is lost or mixed with another's.
TEST_F(WriteContents, SessionsTakeTurnsOnOneFile) {
    start({.application_type = server});
    const std::u16string file = folder.file(L"shared.txt", "|");
    std::atomic<int> inserted = 0;
    std::atomic<int> appended = 0;
    std::atomic<int> wrong = 0;
    const auto session = [&](const std::function<std::u16string()>& work, std::atomic<int>& count) {
        for (int i = 0; i < 60; ++i) {
            const std::u16string result = work();
            count += result == u"0";
            wrong += result != u"0" && result != u"$$-47";
        }
    };
    std::vector<std::thread> sessions;
    for (int i = 0; i < 3; ++i) {
        sessions.emplace_back([&] {
            session(
                [&] {
                    return call(u"VlFile_InsertContents", {u"", file, u"", u"<>"});
                },
                inserted);
        });
        sessions.emplace_back([&] {
            session([&] { return call(u"VlFile_AppendToFile", {u"", file, u"[]"}); }, appended);
        });
    }
    for (std::thread& thread : sessions)
        thread.join();
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
