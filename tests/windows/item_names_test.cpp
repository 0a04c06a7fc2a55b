// Names that Windows changes or takes for something else, through the host on real files.
#include "tests/windows/plugin_fixture.h"

#include <algorithm>
#include <filesystem>

namespace vell::test {
namespace {

class ItemNames : public PluginWithFolder {
  protected:
    void make_sources() const {
        folder.file(L"file.txt", "x");
        folder.file(L"folder\\inside.txt", "x");
    }
    std::vector<std::wstring> everything() const {
        std::vector<std::wstring> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
            names.push_back(entry.path().wstring().substr(folder.path().size()));
        std::ranges::sort(names);
        return names;
    }
};

TEST_F(ItemNames, WindowsCutsDotsAndBlanksOffNewNames) {
    const Value file(path(L"file.txt"));
    const struct {
        const char16_t* function;
        std::vector<Value> before; // the parameters before the path
        std::vector<Value> behind = {};
        const wchar_t* name = L"made.txt";
        const char16_t* again = u"$$-48";
    } makers[] = {
        {u"VlFile_CopyFile", {u"", file}},
        {u"VlFile_CreateFile", {u"-CreateFolders"}},
        {u"VlFile_ExportToFile", {u"", u"text"}},
        {u"VlFile_InsertContents", {u"", file}, {u"text", number(1)}},
        {u"VlFile_Substitute", {u"", file}, {u"x", u"y"}},
        {u"VlFile_CreateAlias", {u"", file}, {}, L"made.lnk"},
        {u"VlFile_CreateZip", {u"", file}},
        {u"VlFile_CreateFolder", {u""}},
        {u"VlFile_CopyFolder", {u"", Value(path(L"folder"))}, {}, L"made", u"0"}, // into it
        {u"VlFile_MoveFolder", {u"", Value(path(L"folder"))}},
        {u"VlFile_MoveFile", {u"", file}},
    };
    for (const auto& maker : makers) {
        SCOPED_TRACE(to_wide(maker.function));
        const auto make = [&](const wchar_t* ending) {
            make_sources();
            std::vector<Value> parameters = maker.before;
            parameters.emplace_back(path(maker.name + std::wstring(ending)));
            parameters.insert(parameters.end(), maker.behind.begin(), maker.behind.end());
            return call(maker.function, std::move(parameters));
        };
        EXPECT_EQ(make(L" . "), u"0");
        EXPECT_TRUE(exists(path(maker.name)));
        EXPECT_EQ(make(L" "), maker.again);
        std::filesystem::remove_all(folder.path(maker.name));
    }
    EXPECT_EQ(call(u"VlFile_CopyFile", {u"", file, path(L"FILE.TXT ")}), u"$$-37");
    EXPECT_EQ(call(u"VlFile_MoveFolder", {u"", path(L"folder"), path(L"Folder.\\new")}), u"$$-122");
    EXPECT_EQ(call(u"VlFile_DeleteFile", {u"", path(L"file.txt. ")}), u"0");
    EXPECT_EQ(call(u"VlFile_DeleteFolder", {delete_all, path(L"folder. ")}), u"0");
    EXPECT_EQ(everything(), std::vector<std::wstring>{});
}

TEST_F(ItemNames, AnArchiveIsExpandedIntoTheFolderThatWindowsMeans) {
    make_sources();
    ASSERT_EQ(call(u"VlFile_CreateZip", {u"", path(L"file.txt"), path(L"a.zip")}), u"0");
    EXPECT_EQ(call(u"VlFile_UnZip", {u"", path(L"a.zip"), path(L"folder. ")}), u"0");
    EXPECT_EQ(contents(L"folder\\file.txt"), "x");
}

// The folder that is the current one on a drive is not what the drive's name stands for.
TEST_F(ItemNames, ADriveAloneIsItsRoot) {
    wchar_t old[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, old);
    ASSERT_TRUE(SetCurrentDirectoryW(folder.path().c_str()));
    const std::u16string drive = path().substr(0, 2);
    make_sources();
    EXPECT_EQ(call(u"VlFile_CreateAlias", {u"", u"filewin:/" + drive, path(L"a.lnk")}), u"0");
    EXPECT_EQ(call(u"VlFile_ResolveAlias", {u"", path(L"a.lnk")}), drive + u"\\");
    EXPECT_EQ(call(u"VlFile_MoveFolder", {u"", Value(drive), u"folder\\new"}), u"$$-122");
    EXPECT_EQ(call(u"VlFile_GetFolderSize", {u"", Value(drive + u"folder")}), u"1");
    SetCurrentDirectoryW(old);
    EXPECT_EQ(everything().size(), 4u);
}

} // namespace
} // namespace vell::test
