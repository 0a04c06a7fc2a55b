// The tree functions where no real system shows it: failures halfway, a shell that is missing or
// refuses, answers of the user.
#include "src/files/paths/path_parts.h"
#include "src/files/tree/folder_operations.h"
#include "src/files/tree/item_names.h"
#include "src/files/tree/tree.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using test::answer_of;
using test::FakeCall;

using Items = test::FakeItems::Contents; // folders end with a backslash

// A system with a shell.
class FakeTree : public test::FakeSystem {
  public:
    FakeTree() = default;
    explicit FakeTree(const Items& there) {
        for (const auto& [path, contents] : there)
            path.ends_with(u'\\') ? add_folder(path) : add(path, contents);
    }

    std::u16string passed_over; // by the shell
    std::u16string copied;      // the one file of a copy that fails
    bool has_shell = true;
    ShellOutcome outcome;
    bool agrees = false;
    std::vector<std::u16string> questions;
    std::vector<std::u16string> removed_folders;
    int shell_calls = 0;

    Result<void> create_folder(const NativePath& path) override {
        if (path.wide.ends_with(u"cannot be"))
            return Failure{ErrorCode::FolderNotFound};
        return FakeSystem::create_folder(path);
    }
    Result<void> remove_folder(const NativePath& path) override {
        VELL_TRY(FakeSystem::remove_folder(path));
        removed_folders.push_back(path.wide);
        return {};
    }
    bool has_shell_operations() override { return has_shell; }
    ShellOutcome shell_copy(const NativePath& folder, const NativePath& target,
                            ShellMessages) override {
        ++shell_calls;
        std::u16string place = target.wide;
        if (kind_of(target) == ItemKind::Folder)
            place += folder.wide.substr(folder.wide.rfind(u'\\'));
        if (passed_over == folder.wide)
            return outcome;
        add_folder(place);
        for (const auto& [path, contents] : all()) {
            if (!path.starts_with(folder.wide + u"\\") || path == folder.wide + u"\\" ||
                (succeeds() ? path == passed_over : !path.ends_with(u'\\') && path != copied))
                continue;
            const std::u16string to = place + path.substr(folder.wide.size());
            path.ends_with(u'\\') ? add_folder(to) : add(to, contents);
        }
        return outcome;
    }
    ShellOutcome shell_delete(const NativePath& folder, void*, ShellMessages) override {
        ++shell_calls;
        if (succeeds())
            for (const auto& [path, contents] : all())
                if (path.starts_with(folder.wide + u"\\"))
                    erase(path);
        return outcome;
    }
    bool confirm(void*, const std::u16string& question) override {
        questions.push_back(question);
        return agrees;
    }

  private:
    bool succeeds() const { return outcome.code == ErrorCode::Ok && !outcome.aborted; }
};

constexpr auto all_contents = u"-deleteAllSubFoldersAndAllContents";
constexpr auto without_asking = u"-deleteAllSubFoldersAndAllContents noWarning";

TEST(PathParts, SplitEveryFormOfAPath) {
    for (const auto& row : test::wide_table("path_parts.txt", 4)) {
        SCOPED_TRACE(utf8_from_utf16(row[0]));
        EXPECT_EQ(root_length(row[0]), row[1].size());
        EXPECT_EQ(parent_path(row[0]), row[2]);
        EXPECT_EQ(last_name(row[0]), row[3]);
    }
}

TEST(ItemNames, TellWhereWindowsMakesAndChangesThings) {
    const auto shown = [](const std::u16string& given, const Result<NativePath>& path) {
        if (!path)
            return std::u16string(path.error() == ErrorCode::BadName ? u"refused"
                                                                     : u"another error");
        return path->wide == given ? std::u16string(u"same") : path->wide;
    };
    for (const auto& row : test::wide_table("item_names.txt", 3)) {
        SCOPED_TRACE(utf8_from_utf16(row[0]));
        EXPECT_EQ(shown(row[0], path_to_make(test::native(row[0]))), row[1]);
        EXPECT_EQ(shown(row[0], path_to_change(test::native(row[0]))), row[2]);
    }
    for (const auto* folder :
         {u"a\\b ", u"a\\b..", u"a\\b .", u"a\\ ", u"a\\...", u"nul", u"C:/aux.b/"})
        EXPECT_FALSE(check_folder_on_the_way(folder)) << utf8_from_utf16(folder);
    for (const auto* folder : {u"a\\Co.", u"..", u"a\\.", u"C:", u"\\\\?\\C:\\b ", u"a .b"})
        EXPECT_TRUE(check_folder_on_the_way(folder)) << utf8_from_utf16(folder);
}

TEST(MakeFolders, GoesUpToWhatIsThereAndNoFurther) {
    FakeTree tree;
    const auto make = [&](const std::u16string& path) {
        return answer_of(create_folder, tree, {u"", path});
    };
    EXPECT_EQ(make(u"C:\\a\\b\\c"), "0");
    EXPECT_EQ(tree.all(), (Items{{u"C:\\a\\", ""}, {u"C:\\a\\b\\", ""}, {u"C:\\a\\b\\c\\", ""}}));
    EXPECT_EQ(make(u"C:\\a\\b"), "$$-48");
    EXPECT_EQ(make(u"Q:\\a\\b"), "$$-120");
    EXPECT_EQ(make(u"C:\\x\\y \\z"), "$$-37");
    for (const auto* path : {u"C:\\a\\cannot be", u"C:\\a\\cannot be\\d", u"cannot be"})
        EXPECT_EQ(make(path), "$$-120");
    EXPECT_EQ(make(u"C:\\new\\cannot be"), "0");
    EXPECT_EQ(tree.all().size(), 4u);
}

TEST(MakeFolders, TakesFewStepsForALongPathThatLeadsNowhere) {
    FakeTree tree;
    const auto make = [&](std::u16string path, int levels, const std::u16string& end = u"") {
        while (levels-- > 0)
            path += u"\\a";
        return answer_of(create_folder, tree, {u"", path + end});
    };
    EXPECT_EQ(make(u"Q:", 16'000), "$$-120");
    EXPECT_LT(tree.looks, 40);
    EXPECT_EQ(make(u"Q:", 16'384), "$$206");
    EXPECT_LT(tree.looks, 40);
    tree.looks = 0;
    EXPECT_EQ(make(u"C:", 300), "0");
    EXPECT_EQ(make(u"C:", 300, u"\\b\\c\\d"), "0");
    EXPECT_LT(tree.looks, 350);
    EXPECT_EQ(tree.all().size(), 303u);
}

TEST(FileFunctions, NoteWhatTheyDo) {
    using Notes = std::vector<std::string>;
    const auto notes = [](params::Body body, const std::u16string& source) {
        FakeTree tree(Items{{u"f", ""}});
        FakeCall call({u"", source, u"g"});
        EXPECT_EQ(body(call, tree).has_value(), body == copy_file);
        return call.notes();
    };
    EXPECT_EQ(notes(copy_file, u"f"),
              (Notes{"IN CopyMoveFile", "CopyMoveFile sourceFileTxt NOERR "}));
    EXPECT_EQ(notes(move_file, u"none"),
              (Notes{"IN CopyMoveFile", "CopyMoveFile Error in TxtToParentFSSpecAndFileName "}));
    EXPECT_EQ(notes(move_folder, u"f"), Notes{"DoCopyFolder001A errFSNotAFolder "});
}

TEST(CreateFile, LeavesNoFolderBehindWithoutItsFile) {
    const Items before{{u"C:\\a\\", ""}};
    for (int failing = 1; failing < 20; ++failing) {
        FakeTree tree(before);
        tree.fail(failing, ErrorCode::Busy);
        if (answer_of(create_file, tree, {u"-CreateFolders", u"C:\\a\\b.\\Co.\\d.txt"}) == "0") {
            EXPECT_EQ(tree.contents(), (Items{{u"C:\\a\\b\\Co\\d.txt", ""}}));
            EXPECT_GT(failing, 4); // three tries to make folders, and the file
            break;
        }
        EXPECT_EQ(tree.all(), before) << failing;
    }
}

TEST(ExchangeFiles, LeavesEveryFileSomewhereWhicheverRenameFails) {
    const Items before{{u"C:\\a", "1"}, {u"C:\\d.x\\b.c.txt", "2"}};
    const auto between = u"C:\\d.x\\b.c_tmp4294967295.txt";
    const std::pair<int, Items> cases[] = {
        {1, before},
        {2, {{u"C:\\a", "1"}, {between, "2"}}},
        {3, {{u"C:\\d.x\\b.c.txt", "1"}, {between, "2"}}},
        {4, {{u"C:\\a", "2"}, {u"C:\\d.x\\b.c.txt", "1"}}}, // none fails
    };
    for (const auto& [failing, after] : cases) {
        SCOPED_TRACE(failing);
        FakeTree tree(before);
        tree.fail(failing, ErrorCode::Busy);
        FakeCall call({u"", u"C:\\a", u"C:\\d.x\\b.c.txt"});
        EXPECT_EQ(exchange_files(call, tree).has_value(), failing == 4);
        EXPECT_EQ(tree.contents(), after);
        EXPECT_EQ(call.notes().size(), after.contains(between) ? 1u : 0u);
    }
}

TEST(ExchangeFiles, FindsRoomForTheNameInBetween) {
    const auto n = [](std::size_t count) {
        return std::u16string(count, u'n');
    };
    const std::u16string middle = u"_tmp4294967295";
    const std::pair<std::u16string, std::u16string> cases[] = {
        {u"b", u"b" + middle}, // no dot at the end
        {n(250) + u".txt", n(237) + middle + u".txt"},
        {n(255), n(241) + middle},
        {n(240) + u"\xD83D\xDE00n", n(240) + middle},
        {u"n." + std::u16string(252, u'x'), u"n" + middle},
    };
    for (const auto& [name, between] : cases) {
        FakeTree tree(Items{{u"C:\\a", "1"}, {u"C:\\d.x\\" + name, "2"}});
        tree.fail(2, ErrorCode::Busy);
        EXPECT_EQ(answer_of(exchange_files, tree, {u"", u"C:\\a", u"C:\\d.x\\" + name}), "$$-47");
        EXPECT_TRUE(tree.find(u"C:\\d.x\\" + between)) << utf8_from_utf16(name);
    }
}

TEST(FolderOperations, TellWhatTheShellAnswers) {
    for (const auto& [outcome, answer] : {std::pair{ShellOutcome{ErrorCode::Ok, false}, "0"},
                                          {{ErrorCode::Busy, false}, "$$-47"},
                                          {{static_cast<ErrorCode>(124), false}, "$$124"},
                                          {{ErrorCode::Ok, true}, "$$299"},
                                          {{static_cast<ErrorCode>(1223), true}, "$$299"}}) {
        FakeTree tree(Items{{u"C:\\a\\", ""}});
        tree.outcome = outcome;
        EXPECT_EQ(answer_of(copy_folder, tree, {u"", u"C:\\a\\", u"C:\\b\\"}), answer);
        EXPECT_EQ(answer_of(delete_folder, tree, {without_asking, u"C:\\a"}), answer);
        EXPECT_TRUE(tree.questions.empty());
    }
}

TEST(FolderOperations, DoNothingWithoutAShellOrBeyondItsReach) {
    FakeTree tree(Items{{u"C:\\a\\", ""}});
    const auto copied = [&] {
        return answer_of(copy_folder, tree, {u"", u"C:\\a", u"C:\\longer"});
    };
    const auto removed = [&] {
        return answer_of(delete_folder, tree, {without_asking, u"C:\\a"});
    };
    tree.has_shell = false;
    EXPECT_EQ(copied(), "$$-4221");
    EXPECT_EQ(removed(), "$$-4221");
    tree.has_shell = true;
    tree.add_folder(u"C:\\a\\link").link = u"D:";
    const std::u16string longest = u"C:\\a\\" + std::u16string(254, u'n');
    tree.add(longest + u"n");
    EXPECT_EQ(copied(), "$$206");
    EXPECT_EQ(removed(), "$$206");
    EXPECT_TRUE(tree.removed_folders.empty());
    tree.erase(longest + u"n");
    tree.add(longest);
    EXPECT_EQ(copied(), "$$206"); // the copy's are longer
    EXPECT_EQ(tree.shell_calls, 0);
    EXPECT_EQ(removed(), "0");
    EXPECT_EQ(tree.removed_folders, std::vector<std::u16string>{u"C:\\a\\link"});
    EXPECT_EQ(tree.shell_calls, 1);
}

// A path that leads to a volume leads to none of the folders in it.
TEST(FolderOperations, RefuseWholeVolumes) {
    for (const auto* volume : {u"C:", u"filewin:/C:", u"C:/", u"C:\\", u"\\\\?\\C:\\", u"//s/t"}) {
        SCOPED_TRACE(utf8_from_utf16(volume));
        FakeTree tree(Items{{u"C:\\a", ""}});
        for (const params::Body body : {delete_folder, copy_folder, move_folder})
            EXPECT_EQ(answer_of(body, tree, {u"", volume, u"D:\\new"}), "$$-47");
        EXPECT_EQ(answer_of(delete_folder, tree, {without_asking, volume}), "$$-47");
        EXPECT_EQ(tree.shell_calls + tree.operations(), 0);
    }
}

TEST(CopyFolder, LooksAtLengthsBeforeItWalks) {
    FakeTree tree(Items{{u"C:\\a\\b\\", ""}});
    EXPECT_EQ(answer_of(copy_folder, tree, {u"", u"C:\\a", u"C:\\" + std::u16string(300, u'n')}),
              "$$206");
    EXPECT_EQ(tree.walks, 0);
    EXPECT_LT(tree.looks, 5);
}

TEST(CopyFolder, LeavesNoNewEmptyFolderWhenItFails) {
    const Items before{{u"C:\\a\\b\\c\\", ""}, {u"C:\\a\\d\\f", "1"}, {u"D:\\e\\a\\b\\", ""}};
    struct Case {
        std::u16string target, copied, left;
    };
    for (const Case& c : {
             Case{u"D:\\new\\copy", u"", u""},
             Case{u"D:\\e", u"", u""},
             Case{u"D:\\new\\copy", u"C:\\a\\d\\f", u"D:\\new\\copy\\d\\f"},
         }) {
        FakeTree tree(before);
        FakeTree expected(before);
        if (!c.copied.empty())
            expected.add(c.left, "1");
        tree.outcome = {static_cast<ErrorCode>(5), false};
        tree.copied = c.copied;
        EXPECT_EQ(answer_of(copy_folder, tree, {u"", u"C:\\a", c.target}), "$$5");
        EXPECT_EQ(tree.all(), expected.all());
        EXPECT_EQ(tree.shell_calls, 1);
    }
}

TEST(CopyFolder, GivesNothingThatHoldsItselfOrIsIncomplete) {
    struct Case {
        std::u16string target;
        std::u16string link, behind; // a link in the source; what it leads to
        std::u16string passed_over;
        const char* answer;
        int shell_calls;
    };
    for (const Case& c : {
             Case{u"C:\\b", u"C:\\a\\sub\\link", u"D:\\else", u"", "0", 1},
             Case{u"C:\\b", u"C:\\a\\sub\\link", u"C:\\a\\sub", u"", "$$125", 0},
             Case{u"C:\\b", u"C:\\a\\sub\\link", u"C:\\a", u"", "$$125", 0},
             Case{u"C:\\b", u"C:\\a\\sub\\link", u"C:", u"", "$$125", 0},
             Case{u"D:\\b", u"C:\\a\\sub\\link", u"D:", u"", "$$125", 0},
             Case{u"D:\\link\\b", u"D:\\link", u"C:\\a", u"", "$$125", 0},
             Case{u"C:\\file", u"C:\\l", u"", u"", "$$-48", 0},
             Case{u"C:\\b", u"C:\\l", u"", u"C:\\a\\sub\\file", "$$-47", 1},
             Case{u"C:\\b", u"C:\\l", u"", u"C:\\a\\empty\\", "$$-47", 1},
             Case{u"C:\\b", u"C:\\l", u"", u"C:\\a", "$$-47", 1},
         }) {
        SCOPED_TRACE(utf8_from_utf16(c.target + u" " + c.link + u" " + c.behind + c.passed_over));
        FakeTree tree(Items{{u"C:\\a\\empty\\", ""}, {u"C:\\a\\sub\\file", ""}, {u"C:\\file", ""}});
        tree.add_folder(c.link).link = c.behind;
        tree.passed_over = c.passed_over;
        EXPECT_EQ(answer_of(copy_folder, tree, {u"", u"C:\\a", c.target}), c.answer);
        EXPECT_EQ(tree.shell_calls, c.shell_calls);
    }
}

TEST(DeleteFolder, AsksWithTheNameCutAtAWholeCharacter) {
    const std::u16string name = u"123456789012345678901234\xD83D\xDE00";
    FakeTree tree(Items{{u"C:\\" + name + u"\\", ""}, {u"C:\\short\\", ""}});
    EXPECT_EQ(answer_of(delete_folder, tree, {all_contents, u"C:\\" + name}), "$$-1");
    EXPECT_EQ(tree.shell_calls, 0);
    tree.agrees = true;
    EXPECT_EQ(answer_of(delete_folder, tree, {all_contents, u"C:\\short\\"}), "0");
    ASSERT_EQ(tree.questions.size(), 2u);
    EXPECT_TRUE(tree.questions[0].find(u"\"123456789012345678901234\" and") != std::string::npos);
    EXPECT_TRUE(tree.questions[1].find(u"folder \"short\" and its") != std::string::npos);
    EXPECT_FALSE(tree.find(u"C:\\short"));
}

} // namespace
} // namespace vell::files
