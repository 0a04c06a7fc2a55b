// The functions that change the tree of files and folders, through the host, on real ones.
#include "src/files/contents/temporary_copy.h"
#include "src/windows/system.h"
#include "tests/windows/links.h"
#include "tests/windows/plugin_fixture.h"
#include "tests/windows/wine.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace vell::test {
namespace {

class Tree : public PluginWithFolder {
  protected:
    std::u16string file(std::wstring_view name, std::string_view contents = "x") const {
        return folder.file(name, contents);
    }
    std::u16string make_folder(std::wstring_view name) const { return folder.subfolder(name); }
    static std::string contents(const std::u16string& item) { return read_file(to_wide(item)); }
    std::size_t items_in_folder() const {
        using Iterator = std::filesystem::directory_iterator;
        return static_cast<std::size_t>(std::distance(Iterator(folder.path()), Iterator()));
    }

    template <typename... Paths>
    std::u16string run(std::u16string_view function, std::u16string_view switches,
                       const Paths&... paths) {
        return call(u"VlFile_" + std::u16string(function), {Value(switches), Value(paths)...});
    }
    void set_attributes(const std::u16string& item, DWORD attributes) const {
        EXPECT_TRUE(SetFileAttributesW(as_wide(item), attributes));
    }
    // A folder whose full path has `levels` more names; the path without a separator at its end.
    std::u16string deep_path(int levels) const {
        std::u16string result = path(L"deep");
        for (int i = 0; i < levels; ++i)
            result += u"\\n" + to_utf16(std::to_wstring(i));
        return result;
    }
};

UniqueFile hold(const std::u16string& item) {
    return open_file(item, GENERIC_READ);
}

TEST_F(Tree, CreatesFilesAndFoldersWhereNothingIs) {
    const std::u16string name = path(L"new \xD83D\xDE00 \u65E5.txt");
    EXPECT_EQ(run(u"CreateFile", u"", name), u"0");
    EXPECT_TRUE(exists(name));
    EXPECT_EQ(run(u"CreateFile", u"", name), u"$$-48");
    EXPECT_EQ(run(u"CreateFile", u"-CreateFolders", path()), u"$$-48");
    EXPECT_EQ(run(u"CreateFile", u"", path(L"a\\b.txt")), u"$$-120");
    EXPECT_EQ(run(u"CreateFile", u"-CreateFolders", name + u"\\e\\f.txt"), u"$$-48");
    EXPECT_EQ(run(u"CreateFile", u"-CreateFolders", path(L"Co.\\sub.\\cut. .")), u"0");
    EXPECT_TRUE(exists(path(L"Co\\sub\\cut")));

    EXPECT_EQ(run(u"CreateFolder", u"", path(L"Co\\sub\\")), u"$$-48");
    EXPECT_EQ(run(u"CreateFolder", u"", name), u"$$-48");
    EXPECT_EQ(run(u"CreateFolder", u"", name + u"\\below"), u"$$-48");
    EXPECT_NE(run(u"CreateFolder", u"", path(std::wstring(300, L'n'))), u"0");
    const std::u16string deep = deep_path(500);
    ASSERT_GT(deep.size(), 1500u);
    EXPECT_EQ(run(u"CreateFolder", u"", deep), u"0");
    EXPECT_TRUE(exists(u"\\\\?\\" + deep));
}

TEST_F(Tree, DeletesFilesThatNobodyHoldsOrProtects) {
    const std::u16string item = file(L"\xD83D\xDE00.txt");
    EXPECT_EQ(run(u"DeleteFile", u"", make_folder(L"folder")), u"$$-47");
    set_attributes(item, FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(run(u"DeleteFile", u"-forceDelete", item), u"$$-47");
    set_attributes(item, FILE_ATTRIBUTE_NORMAL);
    {
        const UniqueFile held = hold(item);
        EXPECT_EQ(run(u"DeleteFile", u"", item), u"$$-47");
    }
    EXPECT_TRUE(exists(item));
    EXPECT_EQ(run(u"DeleteFile", u"", item), u"0");
    EXPECT_FALSE(exists(item));
    EXPECT_EQ(run(u"DeleteFile", u"", item), u"$$-43");
}

TEST_F(Tree, CopiesAndMovesFilesAndReplacesNothing) {
    const std::u16string source = file(L"source.txt", "new");
    const std::u16string target = file(L"target.txt", "old");
    const std::u16string other = make_folder(L"folder") + u"\\\xD83D\xDE00.txt";
    for (const auto* function : {u"CopyFile", u"MoveFile"}) {
        EXPECT_EQ(run(function, u"", source, target), u"$$-48");
        EXPECT_EQ(run(function, u"", path(L"none"), other), u"$$-43");
        EXPECT_EQ(run(function, u"", source, path(L"none\\new")), u"$$-120");
        const UniqueFile held = hold(source);
        EXPECT_EQ(run(function, u"", source, other), u"$$-47");
    }
    EXPECT_EQ(run(u"CopyFile", u"", source, path(L"folder")), u"$$-48");
    EXPECT_EQ(run(u"CopyFile", u"", path(L"folder"), other), u"$$-47");
    EXPECT_EQ(contents(source) + contents(target), "newold");
    EXPECT_EQ(items_in_folder(), 3u);
    EXPECT_EQ(run(u"CopyFile", u"", u"filewin:/" + source, other), u"0");
    EXPECT_EQ(contents(other), "new");
    set_attributes(source, FILE_ATTRIBUTE_READONLY); // no hindrance
    EXPECT_EQ(run(u"MoveFile", u"", source, path(L"moved.txt")), u"0");
    EXPECT_EQ(contents(path(L"moved.txt")), "new");
    EXPECT_FALSE(exists(source));
    set_attributes(path(L"moved.txt"), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Tree, FilesReachLongPaths) {
    const std::u16string deep = deep_path(120);
    ASSERT_GT(deep.size(), 300u);
    ASSERT_EQ(run(u"CreateFile", u"-CreateFolders", deep + u"\\a.txt"), u"0");
    const std::u16string source = file(L"source.txt", "long");
    EXPECT_EQ(run(u"CopyFile", u"", source, deep + u"\\a.txt"), u"$$-48");
    EXPECT_EQ(run(u"CopyFile", u"", source, deep + u"\\b.txt"), u"0");
    EXPECT_EQ(run(u"MoveFile", u"", deep + u"\\b.txt", deep + u"\\c.txt"), u"0");
    EXPECT_EQ(run(u"ExchangeFiles", u"", deep + u"\\a.txt", deep + u"\\c.txt"), u"0");
    EXPECT_EQ(contents(u"\\\\?\\" + deep + u"\\a.txt"), "long");
    EXPECT_EQ(run(u"DeleteFile", u"", deep + u"\\a.txt"), u"0");
    EXPECT_EQ(run(u"MoveFolder", u"", deep, deep + u" moved"), u"0");
    EXPECT_EQ(run(u"DeleteFolder", u"", deep + u" moved"), u"$$-47"); // holds a file

    // The shell's operation takes no such paths: a clear code, and nothing was done.
    EXPECT_EQ(run(u"DeleteFolder", delete_all, deep + u" moved"), u"$$206");
    EXPECT_EQ(run(u"DeleteFolder", delete_all, path(L"deep")), u"$$206");
    EXPECT_TRUE(exists(u"\\\\?\\" + deep + u" moved\\c.txt"));
    EXPECT_EQ(run(u"CopyFolder", u"", path(L"deep"), path(L"copy")), u"$$206");
    EXPECT_FALSE(exists(path(L"copy")));
}

TEST_F(Tree, MovesFoldersButNotIntoThemselves) {
    const std::u16string source = make_folder(L"Source");
    file(L"Source\\sub\\a.txt", "moved");
    for (const wchar_t* inside :
         {L"Source", L"source\\", L"SOURCE\\sub\\new", L"x\\..\\Source\\new", L"x/../Source/new"})
        EXPECT_EQ(run(u"MoveFolder", u"", source, path(inside)), u"$$-122");
    EXPECT_EQ(run(u"MoveFolder", u"", source, make_folder(L"there")), u"$$-48");
    EXPECT_EQ(run(u"MoveFolder", u"", source, path(L"none\\new")), u"$$-120");
    EXPECT_EQ(run(u"MoveFolder", u"", source + u"\\", path(L"Source sibling\\")), u"0");
    EXPECT_FALSE(exists(source));
    EXPECT_EQ(contents(path(L"Source sibling\\sub\\a.txt")), "moved");
}

TEST_F(Tree, CopiesFolders) {
    const std::u16string source = make_folder(L"source");
    file(L"source\\sub \xD83D\xDE00\\a.txt", "copied");
    file(L"source\\b.txt", "too");
    EXPECT_EQ(run(u"CopyFolder", u"", source + u"\\", path(L"copy\\")), u"0");
    EXPECT_EQ(contents(path(L"copy\\sub \xD83D\xDE00\\a.txt")), "copied");
    EXPECT_EQ(contents(path(L"source\\b.txt")), "too");
    EXPECT_EQ(run(u"CopyFolder", u"", source, make_folder(L"there")), u"0");
    EXPECT_EQ(contents(path(L"there\\source\\b.txt")), "too");
    EXPECT_EQ(run(u"CopyFolder", u"", source, path(L"Source\\copy")), u"$$125");
    EXPECT_EQ(run(u"CopyFolder", u"", source, path()), u"$$113");

    // Where nobody can be asked, nothing is replaced.
    start({.application_type = server});
    file(L"there\\source\\b.txt", "kept");
    EXPECT_EQ(run(u"CopyFolder", u"", source, path(L"there")), u"$$-48");
    EXPECT_EQ(contents(path(L"there\\source\\b.txt")), "kept");
    const UniqueFile held = hold(path(L"source\\b.txt"));
    EXPECT_NE(run(u"CopyFolder", u"", source, path(L"incomplete")), u"0");
}

TEST_F(Tree, DeletesFolders) {
    const std::u16string full = make_folder(L"full");
    const std::u16string inside = file(L"full\\sub \xD83D\xDE00\\b.txt");
    EXPECT_EQ(run(u"DeleteFolder", delete_all, path(L"*")), u"$$-37");
    EXPECT_EQ(run(u"DeleteFolder", u"-forceDelete", full), u"$$-47");
    EXPECT_TRUE(exists(inside));
    EXPECT_EQ(run(u"DeleteFolder", delete_all, full + u"\\"), u"0");
    EXPECT_FALSE(exists(full));
    EXPECT_EQ(run(u"DeleteFolder", u"", make_folder(L"empty") + u"\\"), u"0");
    EXPECT_FALSE(exists(path(L"empty")));

    // What is in use stays and is reported.
    const UniqueFile held = hold(file(L"used\\held.txt"));
    start({.application_type = server});
    EXPECT_EQ(run(u"DeleteFolder", delete_all, path(L"used")), u"$$-47");
    EXPECT_TRUE(exists(path(L"used\\held.txt")));
}

TEST_F(Tree, LinksAreNotFollowed) {
    make_folder(L"kept");
    const std::u16string kept = file(L"kept\\a.txt");
    make_folder(L"full");
    const std::u16string beside = file(L"full\\b.txt");
    make_folder(L"full\\sub");
    ASSERT_TRUE(make_link(folder.path(L"full\\sub\\link"), folder.path(L"kept")));
    ASSERT_TRUE(make_link(folder.path(L"link"), folder.path(L"kept")));
    // Wine cannot remove such a link; then nothing else is deleted either.
    const bool stays = runs_in_wine();
    for (const wchar_t* name : {L"full", L"link"}) {
        EXPECT_EQ(run(u"DeleteFolder", delete_all, path(name)), stays ? u"$$-47" : u"0");
        EXPECT_EQ(exists(path(name)), stays);
        EXPECT_TRUE(exists(kept));
    }
    EXPECT_EQ(exists(beside), stays);
}

TEST_F(Tree, HeldFoldersStayAndAreWorkedInByNames) {
    using files::FollowLink;
    make_folder(L"top");
    make_folder(L"kept");
    files::TreeSystem& tree = windows::system().tree();
    const auto top = tree.hold({path(L"top"), {}}, FollowLink::No).value();
    auto inner = top->make_folder(u"inner").value();
    EXPECT_EQ(top->make_folder(u"INNER").error(), ErrorCode::AlreadyExists);
    EXPECT_EQ(top->hold(u"none").error(), ErrorCode::NotFound);
    {
        const auto made = inner->open_new(u"f").value();
        EXPECT_TRUE(made->write("12345"));
        EXPECT_TRUE(made->set_times(
            {.accessed = {}, .modified = params::CalendarTime{2001, 2, 3, 4, 5, 6}}));
        EXPECT_TRUE(made->close());
    }
    EXPECT_EQ(inner->open_new(u"f").error(), ErrorCode::AlreadyExists);
    EXPECT_EQ(contents(path(L"top\\inner\\f")), "12345");
    const auto modified = windows::system().properties().time({path(L"top\\inner\\f"), {}},
                                                              files::ItemTime::Modified);
    EXPECT_EQ(*modified, (params::CalendarTime{2001, 2, 3, 4, 5, 6}));

    // Neither a folder nor a file that is held goes away, but others can work in them.
    const auto is_moved = [&](const wchar_t* name) {
        return MoveFileW(folder.path(name).c_str(), folder.path(L"elsewhere").c_str()) != FALSE;
    };
    EXPECT_FALSE(is_moved(L"top\\inner"));
    EXPECT_FALSE(RemoveDirectoryW(folder.path(L"top\\inner").c_str()));
    EXPECT_FALSE(is_moved(L"top"));
    file(L"top\\inner\\other");
    {
        const auto there = inner->hold(u"f").value();
        EXPECT_EQ(there->kind(), files::ItemKind::File);
        EXPECT_FALSE(there->is_link());
        EXPECT_FALSE(is_moved(L"top\\inner\\f"));
        EXPECT_TRUE(inner->open_emptied(u"f").value()->write("new"));
        EXPECT_EQ(there->open_new(u"x").error(), ErrorCode::BadName); // no folder
    }
    EXPECT_EQ(contents(path(L"top\\inner\\f")), "new");
    set_attributes(path(L"top\\inner\\f"), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(inner->open_emptied(u"f").error(), ErrorCode::Busy);
    set_attributes(path(L"top\\inner\\f"), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(is_moved(L"top\\inner\\f"));
    inner.reset();
    EXPECT_FALSE(is_moved(L"top\\inner")); // "elsewhere" is there
    EXPECT_TRUE(MoveFileW(folder.path(L"top\\inner").c_str(), folder.path(L"top\\b").c_str()));

    for (const char16_t* no_name : {u"", u".", u"..", u"b\\f", u"b/f", u"f:stream"}) {
        EXPECT_EQ(top->hold(no_name).error(), ErrorCode::BadName);
        EXPECT_EQ(top->open_new(no_name).error(), ErrorCode::BadName);
    }
    EXPECT_EQ(top->open_new(u"a\x05").error(), ErrorCode::BadName); // Windows' own refusal

    ASSERT_TRUE(make_link(folder.path(L"top\\link"), folder.path(L"kept")));
    const auto link = top->hold(u"link").value();
    EXPECT_TRUE(link->is_link());
    EXPECT_EQ(link->open_new(u"through").error(), ErrorCode::BadName);
    EXPECT_TRUE(tree.hold({path(L"top\\link"), {}}, FollowLink::No).value()->is_link());
    const auto target = tree.hold({path(L"top\\link"), {}}, FollowLink::Yes).value();
    EXPECT_FALSE(target->is_link());
    EXPECT_TRUE(target->open_new(u"in target"));
    EXPECT_TRUE(exists(path(L"kept\\in target")));
    EXPECT_FALSE(exists(path(L"kept\\through")));
}

TEST_F(Tree, ExchangesFiles) {
    const std::u16string first = file(L"first \xD83D\xDE00.txt", "1");
    const std::u16string second = file(L"second.txt", "2");
    const std::u16string longest = file(std::wstring(250, L'n') + L".txt", "3");
    EXPECT_EQ(run(u"ExchangeFiles", u"", first, second), u"0");
    EXPECT_EQ(contents(first) + contents(second), "21");
    EXPECT_EQ(run(u"ExchangeFiles", u"", second, path(L"SECOND.txt")), u"0");
    EXPECT_EQ(run(u"ExchangeFiles", u"", first, path(L"none")), u"$$-43");
    EXPECT_EQ(run(u"ExchangeFiles", u"", second, longest), u"0");
    EXPECT_EQ(contents(second) + contents(u"\\\\?\\" + longest), "31");
    // What fails halfway tells where the second file is.
    const UniqueFile held = hold(first);
    const std::string note =
        notes_of([&] { EXPECT_EQ(run(u"ExchangeFiles", u"", first, second), u"$$-47"); });
    EXPECT_NE(note.find("second_tmp"), std::string::npos);
    EXPECT_EQ(items_in_folder(), 3u);
}

TEST_F(Tree, ExchangesBetweenVolumesOnlyWhenAllowed) {
    const std::u16string first = file(L"first.txt", "1");
    wchar_t current[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, current);
    if (std::towlower(current[0]) == std::towlower(folder.path()[0]))
        GTEST_SKIP() << "one volume only";
    const std::u16string second = to_utf16(current) + u"\\vell_exchange_" +
                                  to_utf16(std::to_wstring(GetCurrentProcessId())) + u".txt";
    ASSERT_EQ(call(u"VlFile_ExportToFile", {u"", u"2", second}), u"0");
    EXPECT_EQ(run(u"ExchangeFiles", u"", first, second), u"$$-1303");
    EXPECT_EQ(run(u"ExchangeFiles", u"-AllowDifferentVolumes", first, second), u"0");
    EXPECT_EQ(contents(first) + contents(second), "21");
    DeleteFileW(as_wide(second));
}

TEST_F(Tree, TemporaryCopiesStandInTheTemporaryFolder) {
    const files::NativePath source{file(L"source.txt", "copied"), {}};
    files::FileSystem& system = windows::system().files();
    const auto first = files::make_temporary_copy(system, source);
    const auto second = files::make_temporary_copy(system, source, u"jpeg");
    ASSERT_TRUE(first && second);
    wchar_t temporary[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, temporary);
    EXPECT_TRUE(first->wide.starts_with(to_utf16(temporary) + u"VELLTEMP{"));
    EXPECT_TRUE(first->wide.ends_with(u"}.tmp") && second->wide.ends_with(u"}.jpeg"));
    EXPECT_EQ(first->wide.size(), std::wcslen(temporary) + 8 + 38 + 4);
    EXPECT_EQ(contents(second->wide), "copied");
    EXPECT_TRUE(is_private(as_wide(first->wide)));
    EXPECT_TRUE(system.remove(*first) && system.remove(*second));
    set_attributes(source.wide, FILE_ATTRIBUTE_READONLY);
    const auto of_read_only = files::make_temporary_copy(system, source);
    EXPECT_TRUE(of_read_only && system.remove(*of_read_only));
    set_attributes(source.wide, FILE_ATTRIBUTE_NORMAL);
}

// The longest text in a window's parts, such as the question of a message.
std::wstring longest_text(HWND window) {
    std::wstring longest;
    for (HWND part = GetWindow(window, GW_CHILD); part; part = GetWindow(part, GW_HWNDNEXT)) {
        wchar_t buffer[500];
        GetWindowTextW(part, buffer, 500);
        longest = std::max(longest, std::wstring(buffer),
                           [](const auto& a, const auto& b) { return a.size() < b.size(); });
    }
    return longest;
}

TEST_F(Tree, AsksBeforeContentsAreDeleted) {
    // The cut at 25 characters would split the last one.
    const std::wstring name = L"A name of twenty-four ch\xD83D\xDE00 and more";
    const std::u16string full = make_folder(name);
    const std::u16string inside = file(name + L"\\a.txt");
    if (!TestWindow().get())
        GTEST_SKIP() << "no display";
    for (const bool agree : {false, true}) {
        std::wstring seen;
        {
            const Watcher user([&] {
                const HWND question = own_window(L"#32770");
                // Shown once its parts have their texts; it may go while it is looked at again.
                if (!question || !IsWindowVisible(question) || !seen.empty())
                    return;
                seen = longest_text(question);
                if (!seen.empty())
                    PostMessageW(question, WM_COMMAND, agree ? IDOK : IDCANCEL, 0);
            });
            EXPECT_EQ(run(u"DeleteFolder", u"-deleteAllSubFoldersAndAllContents", full),
                      agree ? u"0" : u"$$-1");
        }
        EXPECT_TRUE(seen.starts_with(
            L"Do you really want to delete the folder \"A name of twenty-four ch\" and"))
            << seen.size();
        EXPECT_EQ(exists(inside), !agree);
    }
}

} // namespace
} // namespace vell::test
