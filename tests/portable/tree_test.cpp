// The tree functions where no real system shows it: failures halfway, a shell that is missing or
// refuses, answers of the user.
#include "src/files/paths/path_parts.h"
#include "src/files/tree/folder_operations.h"
#include "src/files/tree/item_names.h"
#include "src/files/tree/tree.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_files.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using testing::FakeCall;

using Items = std::map<std::u16string, std::string>;

// Items by path, with their contents; folders end with a backslash.
class FakeTree : public testing::FakeFiles {
  public:
    Items items;
    std::map<std::u16string, std::u16string> links; // to what they lead
    std::u16string passed_over;                     // by the shell
    std::u16string copied;                          // the one file of a copy that fails
    int failing_move = 0;                           // counted from 1
    ErrorCode failure = ErrorCode::Busy;
    bool has_shell = true;
    bool same_volume = true;
    ShellOutcome outcome;
    bool agrees = false;
    std::vector<std::u16string> questions;
    std::vector<std::u16string> removed_folders;
    int shell_calls = 0;
    int looks = 0; // at an item, and tries to make a folder
    int walks = 0;

    bool on_same_volume(const NativePath&, const NativePath&) override { return same_volume; }
    bool is_same_file(const NativePath& a, const NativePath& b) override {
        return behind(a.wide) == behind(b.wide);
    }
    Result<void> create_folder(const NativePath& path) override {
        ++looks;
        const std::u16string parent(parent_path(path.wide));
        if (!parent.empty() && !items.contains(parent + u"\\"))
            return Failure{ErrorCode::FolderNotFound};
        if (path.wide.starts_with(u"Q:") || path.wide.ends_with(u"cannot be"))
            return Failure{ErrorCode::FolderNotFound};
        if (!items.try_emplace(path.wide + u"\\").second)
            return Failure{ErrorCode::AlreadyExists};
        return {};
    }
    Result<void> remove_folder(const NativePath& path) override {
        const std::u16string folder = path.wide + u"\\";
        const auto item = items.upper_bound(folder);
        if (item != items.end() && item->first.starts_with(folder))
            return Failure{ErrorCode::Busy};
        if (items.erase(folder) > 0)
            removed_folders.push_back(path.wide);
        return {};
    }
    Result<void> move(const NativePath& source, const NativePath& target) override {
        if (++moves_ == failing_move)
            return Failure{failure};
        auto item = items.extract(source.wide);
        item.key() = target.wide;
        items.insert(std::move(item));
        return {};
    }
    bool is_link(const NativePath& folder) override { return links.contains(folder.wide); }
    Result<void> for_each_below(const NativePath& folder, const VisitItem& visit) override {
        ++walks;
        for (const auto& [path, contents] : Items(items)) {
            if (!path.starts_with(folder.wide + u"\\") || path == folder.wide + u"\\")
                continue;
            const NativePath item{std::u16string(without_trailing_separator(path)), {}};
            VELL_TRY(visit({item, kind_of(item), is_link(item)}));
        }
        return {};
    }
    bool has_shell_operations() override { return has_shell; }
    ShellOutcome shell_copy(const NativePath& folder, const NativePath& target,
                            ShellMessages) override {
        ++shell_calls;
        std::u16string place = target.wide;
        if (kind_of(target) == ItemKind::Folder)
            place += folder.wide.substr(folder.wide.rfind(u'\\'));
        const bool is_whole = outcome.code == ErrorCode::Ok && !outcome.aborted;
        for (std::u16string_view above = place; !is_whole && !above.empty();
             above = parent_path(above))
            items[std::u16string(above) + u"\\"];
        for (const auto& [path, contents] : Items(items))
            if (path.starts_with(folder.wide + u"\\") &&
                (is_whole ? path != passed_over : path.ends_with(u'\\') || path == copied))
                items[place + path.substr(folder.wide.size())] = contents;
        return outcome;
    }
    ShellOutcome shell_delete(const NativePath& folder, void*, ShellMessages) override {
        ++shell_calls;
        if (outcome.code == ErrorCode::Ok && !outcome.aborted)
            items.erase(folder.wide + u"\\");
        return outcome;
    }
    bool confirm(void*, const std::u16string& question) override {
        questions.push_back(question);
        return agrees;
    }

  private:
    std::u16string behind(const std::u16string& path) const {
        const auto link = links.find(path);
        return link == links.end() ? path : link->second;
    }
    ItemKind kind_of(const NativePath& path) override {
        ++looks;
        if (items.contains(path.wide))
            return ItemKind::File;
        return items.contains(path.wide + u"\\") ? ItemKind::Folder : ItemKind::None;
    }
    int moves_ = 0;
};

constexpr auto with_contents = u"-deleteAllSubFoldersAndAllContents";

ErrorCode code_of(const Result<void>& result) {
    return result ? ErrorCode::Ok : result.error();
}

TEST(PathParts, SplitEveryFormOfAPath) {
    struct Case {
        std::u16string_view path, root, parent, name;
    };
    for (const Case& c : {
             Case{u"C:\\a\\b.txt", u"C:\\", u"C:\\a", u"b.txt"},
             Case{u"C:\\a\\\\", u"C:\\", u"", u"a"},
             Case{u"C:/a/b/", u"C:/", u"C:/a", u"b"},
             Case{u"C:\\", u"C:\\", u"", u""},
             Case{u"C:a\\b", u"C:", u"C:a", u"b"},
             Case{u"a\\b", u"", u"a", u"b"},
             Case{u"a", u"", u"", u"a"},
             Case{u"\\a\\b", u"\\", u"\\a", u"b"},
             Case{u"\\\\server\\share\\a\\b", u"\\\\server\\share\\", u"\\\\server\\share\\a",
                  u"b"},
             Case{u"\\\\server\\share", u"\\\\server\\share", u"", u""},
             Case{u"\\\\?\\C:\\a\\b", u"\\\\?\\C:\\", u"\\\\?\\C:\\a", u"b"},
             Case{u"\\\\?\\unc\\s\\t\\a", u"\\\\?\\unc\\s\\t\\", u"", u"a"},
             Case{u"\\\\?\\Volume{1}\\a\\b", u"\\\\?\\Volume{1}\\", u"\\\\?\\Volume{1}\\a", u"b"},
             Case{u"\\\\?\\", u"\\\\?\\", u"", u""},
         }) {
        SCOPED_TRACE(utf8_from_utf16(c.path));
        EXPECT_EQ(root_length(c.path), c.root.size());
        EXPECT_EQ(parent_path(c.path), c.parent);
        EXPECT_EQ(last_name(c.path), c.name);
    }
}

// What becomes of a path, or the number of the error.
std::u16string path_of(const Result<NativePath>& result) {
    if (result)
        return result->wide;
    const std::string code = std::to_string(number(result.error()));
    return {code.begin(), code.end()};
}

TEST(ItemNames, TellWhereWindowsMakesAndChangesThings) {
    constexpr auto refused = u"-37";
    constexpr auto same = u"";
    struct Case {
        std::u16string given, made, changed; // same: the path as it was given
    };
    for (const Case& c : {
             Case{u"C:\\a.txt", same, same},
             // What Windows cuts off.
             Case{u"a.txt ", u"a.txt", u"a.txt"},
             Case{u"C:/d. /a. . ", u"C:/d. /a", u"C:/d. /a"},
             Case{u"C:a. \\/", u"C:a\\/", u"C:a\\/"},
             Case{u"\\\\s\\t\\.a.", u"\\\\s\\t\\.a", u"\\\\s\\t\\.a"},
             Case{u"//?/C:/a ", u"//?/C:/a", u"//?/C:/a"},
             Case{u"\\\\.\\C:\\a ", u"\\\\.\\C:\\a", u"\\\\.\\C:\\a"},
             Case{u"\\\\?\\C:\\a. ", same, same},
             // What would be the folder above.
             Case{u"a\\ ", refused, refused},
             Case{u"a\\...", refused, refused},
             Case{u"a/. ./", refused, refused},
             Case{u"C: ", refused, refused},
             Case{u"\\\\.\\C:\\a\\ ", refused, refused},
             Case{u"\\\\?\\C:\\ ", same, same},
             Case{u"C:\\a\\..", same, same},
             Case{u".", same, same},
             Case{u"\\??\\C:\\a", refused, refused},
             // Streams.
             Case{u"12:30.txt", refused, same},
             Case{u"C:\\a:b\\c", refused, same},
             Case{u"C::a", refused, same},
             Case{u"\\\\?\\C:\\a:b", refused, same},
             Case{u"\\\\s\\t\\a::$DATA", refused, same},
             Case{u"1:30", refused, same},
             // Devices.
             Case{u"NUL", refused, same},
             Case{u"a\\nul.txt", refused, same},
             Case{u"C:con . ", refused, u"C:con"},
             Case{u"COM1.tar.gz", refused, same},
             Case{u"lpt\u00B2", refused, same},
             Case{u"CONOUT$", refused, same},
             Case{u"\\\\s\\t\\aux\\", refused, same},
             Case{u"\\\\.\\NUL", refused, same},
             Case{u"\\\\.\\pipe\\a", refused, same},
             Case{u"//./COM10", refused, same},
             Case{u"\\\\?\\C:\\nul", same, same},
             Case{u"\\\\?\\unc\\s\\t\\a", same, same},
             Case{u"\\\\?\\Volume{1}\\a", same, same},
             Case{u"com", same, same},
             Case{u"com10", same, same},
             Case{u"nul\\a", same, same},
         }) {
        SCOPED_TRACE(utf8_from_utf16(c.given));
        EXPECT_EQ(path_of(path_to_make(NativePath{c.given, {}})),
                  c.made.empty() ? c.given : c.made);
        EXPECT_EQ(path_of(path_to_change(NativePath{c.given, {}})),
                  c.changed.empty() ? c.given : c.changed);
    }
    for (const auto* folder :
         {u"a\\b ", u"a\\b..", u"a\\b .", u"a\\ ", u"a\\...", u"nul", u"C:/aux.b/"})
        EXPECT_FALSE(check_folder_on_the_way(folder)) << utf8_from_utf16(folder);
    for (const auto* folder : {u"a\\Co.", u"..", u"a\\.", u"C:", u"\\\\?\\C:\\b ", u"a .b"})
        EXPECT_TRUE(check_folder_on_the_way(folder)) << utf8_from_utf16(folder);
}

ErrorCode make_folders(FakeTree& tree, const std::u16string& path) {
    FakeCall call({u"", path});
    return code_of(create_folder(call, tree));
}

TEST(MakeFolders, GoesUpToWhatIsThereAndNoFurther) {
    FakeTree tree;
    EXPECT_EQ(make_folders(tree, u"C:\\a\\b\\c"), ErrorCode::Ok);
    EXPECT_EQ(tree.items, (Items{{u"C:\\a\\", ""}, {u"C:\\a\\b\\", ""}, {u"C:\\a\\b\\c\\", ""}}));
    EXPECT_EQ(make_folders(tree, u"C:\\a\\b"), ErrorCode::AlreadyExists);
    EXPECT_EQ(make_folders(tree, u"Q:\\a\\b"), ErrorCode::FolderNotFound);
    EXPECT_EQ(make_folders(tree, u"C:\\x\\y \\z"), ErrorCode::BadName);
    for (const auto* path : {u"C:\\a\\cannot be", u"C:\\a\\cannot be\\d", u"cannot be"})
        EXPECT_EQ(make_folders(tree, path), ErrorCode::FolderNotFound);
    EXPECT_EQ(make_folders(tree, u"C:\\new\\cannot be"), ErrorCode::Ok);
    EXPECT_EQ(tree.items.size(), 4u);
}

TEST(MakeFolders, TakesFewStepsForALongPathThatLeadsNowhere) {
    const auto deep = [](std::u16string path, int levels) {
        while (levels-- > 0)
            path += u"\\a";
        return path;
    };
    FakeTree tree;
    EXPECT_EQ(make_folders(tree, deep(u"Q:", 16'000)), ErrorCode::FolderNotFound);
    EXPECT_LT(tree.looks, 40);
    EXPECT_EQ(make_folders(tree, deep(u"Q:", 16'384)), ErrorCode::PathTooLong);
    EXPECT_LT(tree.looks, 40);
    tree.looks = 0;
    EXPECT_EQ(make_folders(tree, deep(u"C:", 300)), ErrorCode::Ok);
    EXPECT_EQ(make_folders(tree, deep(u"C:", 300) + u"\\b\\c\\d"), ErrorCode::Ok);
    EXPECT_LT(tree.looks, 350);
    EXPECT_EQ(tree.items.size(), 303u);
}

TEST(CreateFile, LeavesNoFolderBehindWithoutItsFile) {
    FakeTree tree; // which makes no files
    tree.items = {{u"C:\\a\\", ""}};
    const Items before = tree.items;
    FakeCall call({u"-CreateFolders", u"C:\\a\\b\\Co.\\d.txt"});
    EXPECT_EQ(code_of(create_file(call, tree)), ErrorCode::Busy);
    EXPECT_EQ(tree.removed_folders, (std::vector<std::u16string>{u"C:\\a\\b\\Co", u"C:\\a\\b"}));
    EXPECT_EQ(tree.items, before);
}

TEST(ExchangeFiles, LeavesEveryFileSomewhereWhicheverRenameFails) {
    struct Case {
        int failing_move;
        ErrorCode code;
        Items after;
    };
    const Items before{{u"a", "1"}, {u"d.x\\b.c.txt", "2"}};
    for (const Case& c : {
             Case{0, ErrorCode::Ok, {{u"a", "2"}, {u"d.x\\b.c.txt", "1"}}},
             Case{1, ErrorCode::Busy, before},
             Case{2, ErrorCode::Busy, {{u"a", "1"}, {u"d.x\\b.c_tmp4294967295.txt", "2"}}},
             Case{3,
                  ErrorCode::Busy,
                  {{u"d.x\\b.c.txt", "1"}, {u"d.x\\b.c_tmp4294967295.txt", "2"}}},
         }) {
        SCOPED_TRACE(c.failing_move);
        FakeTree tree;
        tree.items = before;
        tree.failing_move = c.failing_move;
        tree.failure = c.code;
        FakeCall call({u"", u"a", u"d.x\\b.c.txt"});
        EXPECT_EQ(code_of(exchange_files(call, tree)), c.code);
        EXPECT_EQ(tree.items, c.after);
        const bool elsewhere = c.after.contains(u"d.x\\b.c_tmp4294967295.txt");
        EXPECT_EQ(call.notes().size(), elsewhere ? 1u : 0u);
    }
    FakeTree tree;
    tree.items = {{u"a", "1"}, {u"d.x\\b", "2"}};
    tree.failing_move = 2;
    FakeCall call({u"", u"a", u"d.x\\b"});
    EXPECT_EQ(code_of(exchange_files(call, tree)), ErrorCode::Busy);
    EXPECT_TRUE(tree.items.contains(u"d.x\\b_tmp4294967295")); // no dot at the end
}

TEST(ExchangeFiles, FindsRoomForTheNameInBetween) {
    const std::u16string pair = u"\xD83D\xDE00";
    const std::u16string middle = u"_tmp4294967295";
    struct Case {
        std::u16string name, between;
    };
    for (const Case& c : {
             Case{std::u16string(250, u'n') + u".txt",
                  std::u16string(237, u'n') + middle + u".txt"},
             Case{std::u16string(255, u'n'), std::u16string(241, u'n') + middle},
             Case{std::u16string(240, u'n') + pair + u"n", std::u16string(240, u'n') + middle},
             Case{u"n." + std::u16string(252, u'x'), u"n" + middle},
         }) {
        FakeTree tree;
        tree.items = {{u"a", "1"}, {u"d\\" + c.name, "2"}};
        tree.failing_move = 2;
        FakeCall call({u"", u"a", u"d\\" + c.name});
        EXPECT_EQ(code_of(exchange_files(call, tree)), ErrorCode::Busy);
        EXPECT_TRUE(tree.items.contains(u"d\\" + c.between)) << utf8_from_utf16(c.name);
    }
}

TEST(FolderOperations, TellWhatTheShellAnswers) {
    struct Case {
        ShellOutcome outcome;
        int code;
    };
    for (const Case& c :
         {Case{{ErrorCode::Ok, false}, 0}, Case{{ErrorCode::Busy, false}, -47},
          Case{{static_cast<ErrorCode>(124), false}, 124}, Case{{ErrorCode::Ok, true}, 299},
          Case{{static_cast<ErrorCode>(1223), true}, 299}}) {
        SCOPED_TRACE(number(c.outcome.code));
        FakeTree tree;
        tree.items = {{u"C:\\a\\", ""}};
        tree.outcome = c.outcome;
        FakeCall copy({u"", u"C:\\a\\", u"C:\\b\\"});
        EXPECT_EQ(number(code_of(copy_folder(copy, tree))), c.code);
        FakeCall removal({std::u16string(with_contents) + u"noWarning", u"C:\\a"});
        EXPECT_EQ(number(code_of(delete_folder(removal, tree))), c.code);
        EXPECT_EQ(removal.result().has_value(), c.code == 0);
        EXPECT_TRUE(tree.questions.empty());
    }
}

TEST(FolderOperations, DoNothingWithoutAShellOrBeyondItsReach) {
    FakeTree tree;
    tree.items = {{u"C:\\a\\", ""}};
    tree.has_shell = false;
    FakeCall copy({u"", u"C:\\a", u"C:\\longer"});
    FakeCall removal({std::u16string(with_contents) + u"noWarning", u"C:\\a"});
    EXPECT_EQ(code_of(copy_folder(copy, tree)), ErrorCode::NotAvailable);
    EXPECT_EQ(code_of(delete_folder(removal, tree)), ErrorCode::NotAvailable);
    tree.has_shell = true;
    tree.links = {{u"C:\\a\\link", u"D:\\"}};
    tree.items[u"C:\\a\\link\\"];
    const auto add_below = [&](std::size_t length) { // with the separator before it
        tree.items[u"C:\\a\\" + std::u16string(length - 1, u'n')];
    };
    add_below(256);
    EXPECT_EQ(code_of(copy_folder(copy, tree)), ErrorCode::PathTooLong);
    EXPECT_EQ(code_of(delete_folder(removal, tree)), ErrorCode::PathTooLong);
    EXPECT_TRUE(tree.removed_folders.empty());
    tree.items.erase(std::prev(tree.items.end()));
    add_below(255);
    EXPECT_EQ(code_of(copy_folder(copy, tree)), ErrorCode::PathTooLong); // the copy's are longer
    EXPECT_EQ(tree.shell_calls, 0);
    EXPECT_EQ(code_of(delete_folder(removal, tree)), ErrorCode::Ok);
    EXPECT_EQ(tree.removed_folders, std::vector<std::u16string>{u"C:\\a\\link"});
    FakeCall volume({std::u16string(with_contents) + u"noWarning", u"C:\\"});
    tree.items = {{u"C:\\\\", ""}};
    EXPECT_EQ(code_of(delete_folder(volume, tree)), ErrorCode::Busy);
    EXPECT_EQ(tree.shell_calls, 1);
}

// A path that leads to a volume leads to none of the folders in it.
TEST(FolderOperations, RefuseWholeVolumes) {
    for (const auto* volume : {u"C:", u"filewin:/C:", u"C:/", u"C:\\", u"\\\\?\\C:\\", u"//s/t"}) {
        SCOPED_TRACE(utf8_from_utf16(volume));
        FakeTree tree;
        for (const auto* folder : {u"C:\\\\", u"C:/\\", u"\\\\?\\C:\\\\", u"//s/t\\"})
            tree.items[folder];
        for (const auto* switches : {u"", u"-deleteAllSubFoldersAndAllContents noWarning"}) {
            FakeCall removal({switches, volume});
            EXPECT_EQ(code_of(delete_folder(removal, tree)), ErrorCode::Busy);
        }
        FakeCall copy({u"", volume, u"D:\\copy"});
        EXPECT_EQ(code_of(copy_folder(copy, tree)), ErrorCode::Busy);
        FakeCall moved({u"", volume, u"D:\\moved"});
        EXPECT_EQ(code_of(move_folder(moved, tree)), ErrorCode::Busy);
        EXPECT_EQ(tree.shell_calls, 0);
        EXPECT_EQ(tree.items.size(), 4u);
    }
}

TEST(CopyFolder, LooksAtLengthsBeforeItWalks) {
    FakeTree tree;
    tree.items = {{u"C:\\a\\", ""}, {u"C:\\a\\b\\", ""}};
    FakeCall call({u"", u"C:\\a", u"C:\\" + std::u16string(300, u'n')});
    EXPECT_EQ(code_of(copy_folder(call, tree)), ErrorCode::PathTooLong);
    EXPECT_EQ(tree.walks, 0);
    EXPECT_LT(tree.looks, 5);
}

TEST(CopyFolder, LeavesNoNewEmptyFolderWhenItFails) {
    const Items before{{u"C:\\a\\", ""},    {u"C:\\a\\b\\", ""},   {u"C:\\a\\b\\c\\", ""},
                       {u"C:\\a\\d\\", ""}, {u"C:\\a\\d\\f", "1"}, {u"D:\\", ""},
                       {u"D:\\e\\", ""},    {u"D:\\e\\a\\", ""},   {u"D:\\e\\a\\b\\", ""}};
    struct Case {
        std::u16string target, copied;
        Items more;
    };
    for (const Case& c : {
             Case{u"D:\\new\\copy", u"", {}},
             Case{u"D:\\new\\copy",
                  u"C:\\a\\d\\f",
                  {{u"D:\\new\\", ""},
                   {u"D:\\new\\copy\\", ""},
                   {u"D:\\new\\copy\\d\\", ""},
                   {u"D:\\new\\copy\\d\\f", "1"}}},
             Case{u"D:\\e", u"", {}},
         }) {
        FakeTree tree;
        tree.items = before;
        tree.outcome = {static_cast<ErrorCode>(5), false};
        tree.copied = c.copied;
        FakeCall call({u"", u"C:\\a", c.target});
        EXPECT_EQ(number(code_of(copy_folder(call, tree))), 5);
        Items after = before;
        after.insert(c.more.begin(), c.more.end());
        EXPECT_EQ(tree.items, after);
        EXPECT_EQ(tree.shell_calls, 1);
    }
}

TEST(CopyFolder, GivesNothingThatHoldsItselfOrIsIncomplete) {
    struct Case {
        std::u16string target;
        std::u16string link, behind; // a link in the source; what it leads to
        std::u16string passed_over;
        int code;
        int shell_calls;
    };
    for (const Case& c : {
             Case{u"C:\\b", u"C:\\a\\sub\\link", u"D:\\else", u"", 0, 1},
             Case{u"C:\\b", u"C:\\a\\sub\\link", u"C:\\a\\sub", u"", 125, 0},
             Case{u"C:\\b", u"C:\\a\\sub\\link", u"C:\\a", u"", 125, 0},
             Case{u"C:\\b", u"C:\\a\\sub\\link", u"C:\\", u"", 125, 0},
             Case{u"D:\\b", u"C:\\a\\sub\\link", u"D:\\", u"", 125, 0},
             Case{u"D:\\link\\b", u"D:\\link", u"C:\\a", u"", 125, 0},
             Case{u"C:\\file", u"C:\\l", u"", u"", -48, 0},
             Case{u"C:\\b", u"C:\\l", u"", u"C:\\a\\sub\\file", -47, 1},
             Case{u"C:\\b", u"C:\\l", u"", u"C:\\a\\empty\\", -47, 1},
             Case{u"C:\\b", u"C:\\l", u"", u"C:\\a\\", -47, 1},
         }) {
        SCOPED_TRACE(utf8_from_utf16(c.target + u" " + c.link + u" " + c.behind + c.passed_over));
        FakeTree tree;
        tree.items = {{u"C:\\a\\", ""},          {u"C:\\a\\empty\\", ""}, {u"C:\\a\\sub\\", ""},
                      {u"C:\\a\\sub\\file", ""}, {u"C:\\file", ""},       {c.link + u"\\", ""}};
        tree.links = {{c.link, c.behind}};
        tree.passed_over = c.passed_over;
        FakeCall copy({u"", u"C:\\a", c.target});
        EXPECT_EQ(number(code_of(copy_folder(copy, tree))), c.code);
        EXPECT_EQ(tree.shell_calls, c.shell_calls);
    }
}

TEST(DeleteFolder, AsksWithTheNameCutAtAWholeCharacter) {
    FakeTree tree;
    tree.items = {{u"C:\\123456789012345678901234\xD83D\xDE00\\", ""}, {u"C:\\short\\", ""}};
    FakeCall refused({with_contents, u"C:\\123456789012345678901234\xD83D\xDE00"});
    EXPECT_EQ(code_of(delete_folder(refused, tree)), ErrorCode::NotConfirmed);
    EXPECT_EQ(tree.shell_calls, 0);
    tree.agrees = true;
    FakeCall agreed({u"", u"C:\\short\\"});
    agreed.set_step_option(2, 1);
    EXPECT_EQ(code_of(delete_folder(agreed, tree)), ErrorCode::Ok);
    ASSERT_EQ(tree.questions.size(), 2u);
    EXPECT_TRUE(tree.questions[0].find(u"\"123456789012345678901234\" and") != std::string::npos);
    EXPECT_TRUE(tree.questions[1].find(u"folder \"short\" and its") != std::string::npos);
    EXPECT_FALSE(tree.items.contains(u"C:\\short\\"));
}

} // namespace
} // namespace vell::files
