// Names that Windows takes for something else, in all functions that make, move or delete an item.
#include "src/archive/zip_functions.h"
#include "src/files/contents/edit_contents.h"
#include "src/files/contents/export_to_file.h"
#include "src/files/desktop/aliases.h"
#include "src/files/tree/folder_operations.h"
#include "src/files/tree/tree.h"
#include "src/metadata/set_metadata.h"
#include "tests/portable/answer_of.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

// A function with a name of its own, and the parameters around the path that it is called with.
struct Maker {
    const char* name;
    params::Body body;
    std::vector<std::u16string> before;
    std::vector<std::u16string> behind = {};
};

class NewNames : public ::testing::Test {
  protected:
    NewNames() {
        system.add(u"C:\\file.txt", "x");
        system.add(u"C:\\folder\\inside.txt", "x");
    }
    void expect_refused(const Maker& maker, const std::u16string& path, const char* code) {
        const auto before = system.all();
        std::vector<std::u16string> parameters = maker.before;
        parameters.push_back(path);
        parameters.insert(parameters.end(), maker.behind.begin(), maker.behind.end());
        EXPECT_EQ(test::answer_of(maker.body, system, parameters), code)
            << maker.name << ' ' << utf8_from_utf16(path.substr(0, 99));
        EXPECT_EQ(system.all(), before);
    }

    test::FakeSystem system;
    const std::u16string file = u"C:\\file.txt";
    const std::u16string folder = u"C:\\folder";
    const std::vector<Maker> makers{
        {"copy file", copy_file, {u"", file}},
        {"create file", create_file, {u""}},
        {"create file and folders", create_file, {u"-CreateFolders"}},
        {"export", export_to_file, {u"", u"text"}},
        {"export over", export_to_file, {u"-OverwriteExisting", u"text"}},
        {"insert", insert_contents, {u"", file}, {u"text", u"1"}},
        {"substitute", substitute, {u"", file}, {u"x", u"y"}},
        {"create alias", create_alias, {u"", file}},
        {"create alias over", create_alias, {u"-OverwriteExisting", file}},
        {"create folder", create_folder, {u""}},
        {"copy folder", copy_folder, {u"", folder}},
        {"move folder", move_folder, {u"", folder}},
        {"move file", move_file, {u"", file}},
        {"set metadata", metadata::set_metadata, {u"-SetXMP", file}, {u"<x/>"}},
        {"create zip", archive::create_zip, {u"", file}},
    };
};

TEST_F(NewNames, AreNoStreamsDevicesOrFoldersAbove) {
    for (const Maker& maker : makers) {
        for (const auto* name : {u"12:30.txt", u"file.txt:s.txt", u"NUL.txt", u"folder\\nul.",
                                 u"Com1.b.c", u"folder\\lpt\u00B3.txt", u"folder/aux.txt"})
            expect_refused(maker, u"C:\\" + std::u16string(name), "$$-37");
        for (const auto* path : {u"\\\\.\\NUL.", u"//./pipe/a.b", u"nul.txt"})
            expect_refused(maker, path, "$$-37");
        // An archive gets the name ".zip" there.
        if (maker.body != archive::create_zip)
            for (const auto* name : {u" ", u"...", u"folder\\ ", u"folder/. .", u"folder\\....\\"})
                expect_refused(maker, u"C:\\" + std::u16string(name), "$$-37");
    }
}

TEST_F(NewNames, MustNotHideTheSource) {
    for (const Maker& maker : {Maker{"copy file", copy_file, {u"", file}},
                               {"move file", move_file, {u"", file}},
                               {"substitute", substitute, {u"", file}, {u"x", u"y"}}})
        expect_refused(maker, file + u". ", "$$-37");
    for (const Maker& maker : {Maker{"copy folder", copy_folder, {u"", folder}},
                               {"move folder", move_folder, {u"", folder}}})
        expect_refused(maker, folder + u" \\", "$$-37");
}

TEST_F(NewNames, OfDotsAndBlanksNameNoItem) {
    for (const auto* name : {u"folder\\ ", u"folder\\...", u"folder/. .", u"folder\\ \\"})
        for (const Maker& changer : {Maker{"delete folder", delete_folder, {u""}},
                                     {"delete file", delete_file, {u""}},
                                     {"move folder", move_folder, {u""}, {u"C:\\moved"}},
                                     {"move file", move_file, {u""}, {u"C:\\moved"}},
                                     {"exchange files", exchange_files, {u"", file}},
                                     {"unzip", archive::unzip, {u"", file}}})
            expect_refused(changer, u"C:\\" + std::u16string(name), "$$-37");
}

TEST_F(NewNames, BeyondWindowsReachAreRefusedAtOnce) {
    std::u16string text = u"C:\\"; // such as a base64 text that was given as a path
    while (text.size() < 100'000)
        text += u"aB3=/";
    for (const Maker& maker : makers)
        expect_refused(maker, text, "$$206");
}

} // namespace
} // namespace vell::files
