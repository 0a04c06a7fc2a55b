// Names that Windows changes or takes for something else, in all functions that make, move or
// delete something, through the host on real files.
#include "tests/windows/plugin_fixture.h"

#include <algorithm>
#include <filesystem>

namespace vell::test {
namespace {

constexpr auto delete_all = u"-deleteAllSubFoldersAndAllContents noWarning";

class ItemNames : public PluginWithFolder {
  protected:
    // Functions that make an item, each called with the path of that; the results.
    struct Maker {
        const char16_t* function;
        std::vector<Value> before; // the parameters before the path
        std::vector<Value> behind = {};
    };
    std::vector<Maker> makers() const {
        const Value file(path(L"file.txt"));
        const Value sub(path(L"folder"));
        return {
            {u"VlFile_CopyFile", {u"", file}},
            {u"VlFile_CreateFile", {u""}},
            {u"VlFile_CreateFile", {u"-CreateFolders"}},
            {u"VlFile_ExportToFile", {u"", u"text"}},
            {u"VlFile_InsertContents", {u"", file}, {u"text", number(1)}},
            {u"VlFile_Substitute", {u"", file}, {u"x", u"y"}},
            {u"VlFile_CreateAlias", {u"", file}},
            {u"VlFile_CreateZip", {u"", file}},
            {u"VlFile_CreateFolder", {u""}},
            {u"VlFile_CopyFolder", {u"", sub}},
            {u"VlFile_MoveFolder", {u"", sub}},
            {u"VlFile_MoveFile", {u"", file}},
        };
    }
    std::u16string make(const Maker& maker, const std::u16string& item) {
        std::vector<Value> parameters = maker.before;
        parameters.emplace_back(item);
        parameters.insert(parameters.end(), maker.behind.begin(), maker.behind.end());
        return call(maker.function, std::move(parameters));
    }
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

TEST_F(ItemNames, NoFunctionMakesStreamsOrDevicesOrFoldersAbove) {
    make_sources();
    std::vector<Maker> all = makers();
    all.push_back({u"VlFile_ExportToFile", {u"-OverwriteExisting", u"text"}});
    all.push_back({u"VlFile_SetMetaData", {u"-SetXMP", Value(path(L"file.txt"))}, {u"<x/>"}});
    all.push_back({u"VlFile_CreateAlias", {u"-OverwriteExisting", Value(path(L"file.txt"))}});
    const std::vector<std::wstring> before = everything();
    const auto expect_refused = [&](const Maker& maker, const std::u16string& item) {
        EXPECT_EQ(make(maker, item), u"$$-37") << to_wide(maker.function) << ' ' << to_wide(item);
    };
    for (const Maker& maker : all) {
        for (const wchar_t* name :
             {L"12:30.txt", L"file.txt:s.txt", L"NUL.txt", L"folder\\nul.", L"con.a", L"Com1.b.c",
              L"folder\\lpt\u00B3.txt", L"conin$.x", L"prn .x", L"folder/aux.txt"})
            expect_refused(maker, path(name));
        for (const auto* item : {u"\\\\.\\NUL.", u"//./pipe/a.b", u"nul.txt", u"file.txt:s.txt"})
            expect_refused(maker, item);
        // An archive gets the name ".zip" there.
        if (std::u16string_view(maker.function) != u"VlFile_CreateZip")
            for (const wchar_t* name :
                 {L" ", L"...", L"folder\\ ", L"folder/. .", L"folder\\....\\"})
                expect_refused(maker, path(name));
    }
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(contents(L"file.txt"), "x");
}

TEST_F(ItemNames, WindowsCutsDotsAndBlanksOffNewNames) {
    for (const Maker& maker : makers()) {
        SCOPED_TRACE(to_wide(maker.function));
        make_sources();
        const bool is_alias = std::u16string_view(maker.function) == u"VlFile_CreateAlias";
        const std::wstring name = is_alias ? L"made.lnk" : L"made.txt";
        EXPECT_EQ(make(maker, path(name + L" . ")), u"0");
        EXPECT_TRUE(exists(path(name)));
        make_sources();
        const bool takes_it_in = std::u16string_view(maker.function) == u"VlFile_CopyFolder";
        EXPECT_EQ(make(maker, path(name + L" ")), takes_it_in ? u"0" : u"$$-48");
        std::filesystem::remove_all(folder.path(name));
    }
    EXPECT_EQ(call(u"VlFile_DeleteFile", {u"", path(L"file.txt. ")}), u"0");
    EXPECT_EQ(call(u"VlFile_DeleteFolder", {delete_all, path(L"folder. ")}), u"0");
    EXPECT_EQ(everything(), std::vector<std::wstring>{});
}

TEST_F(ItemNames, WhatIsCutMustNotHideTheSource) {
    make_sources();
    for (const auto* function : {u"VlFile_CopyFile", u"VlFile_MoveFile"})
        EXPECT_EQ(call(function, {u"", path(L"file.txt"), path(L"FILE.TXT ")}), u"$$-37");
    EXPECT_EQ(call(u"VlFile_Substitute", {u"", path(L"file.txt"), path(L"file.txt."), u"x", u"y"}),
              u"$$-37");
    for (const auto* function : {u"VlFile_CopyFolder", u"VlFile_MoveFolder"})
        EXPECT_EQ(call(function, {u"", path(L"folder"), path(L"folder \\")}), u"$$-37");
    EXPECT_EQ(call(u"VlFile_MoveFolder", {u"", path(L"folder"), path(L"Folder.\\new")}), u"$$-122");
    EXPECT_EQ(everything().size(), 3u);
    EXPECT_EQ(contents(L"file.txt"), "x");
}

TEST_F(ItemNames, NothingButDotsAndBlanksNamesNoItem) {
    make_sources();
    const std::vector<std::wstring> before = everything();
    for (const wchar_t* name : {L"folder\\ ", L"folder\\...", L"folder/. .", L"folder\\ \\"}) {
        const Value item(path(name));
        const Value target(path(L"moved"));
        EXPECT_EQ(call(u"VlFile_DeleteFolder", {delete_all, item}), u"$$-37");
        EXPECT_EQ(call(u"VlFile_DeleteFolder", {u"", item}), u"$$-37");
        EXPECT_EQ(call(u"VlFile_DeleteFile", {u"", item}), u"$$-37");
        EXPECT_EQ(call(u"VlFile_MoveFolder", {u"", item, target}), u"$$-37");
        EXPECT_EQ(call(u"VlFile_MoveFile", {u"", item, target}), u"$$-37");
        EXPECT_EQ(call(u"VlFile_ExchangeFiles", {u"", path(L"file.txt"), item}), u"$$-37");
    }
    EXPECT_EQ(everything(), before);
}

TEST_F(ItemNames, AnArchiveIsExpandedIntoTheFolderThatWindowsMeans) {
    make_sources();
    ASSERT_EQ(call(u"VlFile_CreateZip", {u"", path(L"file.txt"), path(L"a.zip")}), u"0");
    EXPECT_EQ(call(u"VlFile_UnZip", {u"", path(L"a.zip"), path(L"folder. ")}), u"0");
    EXPECT_EQ(contents(L"folder\\file.txt"), "x");
    EXPECT_EQ(call(u"VlFile_UnZip", {u"", path(L"a.zip"), path(L"folder\\...")}), u"$$-37");
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
    EXPECT_EQ(call(u"VlFile_CreateAlias", {u"", path(L"file.txt"), Value(drive)}), u"$$-37");
    EXPECT_EQ(call(u"VlFile_MoveFolder", {u"", Value(drive), u"folder\\new"}), u"$$-122");
    EXPECT_EQ(call(u"VlFile_GetFolderSize", {u"", Value(drive + u"folder")}), u"1");
    SetCurrentDirectoryW(old);
    EXPECT_EQ(everything().size(), 4u);
}

TEST_F(ItemNames, PathsBeyondWindowsReachAreRefusedAtOnce) {
    make_sources();
    std::u16string text = path();
    for (int i = 0; i < 20'000; ++i)
        text += u"aB3=/"; // such as a base64 text that was given as a path
    for (const Maker& maker : makers())
        EXPECT_EQ(make(maker, text), u"$$206") << to_wide(maker.function);
    EXPECT_EQ(call(u"VlFile_GetContents", {u"", Value(text)}), u"$$206");
    EXPECT_EQ(call(u"VlFile_Exists", {u"", Value(text)}), u"0");
    EXPECT_EQ(everything().size(), 3u);
}

} // namespace
} // namespace vell::test
