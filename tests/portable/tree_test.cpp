// The tree functions where no real system shows it: failures halfway, a shell that is missing or
// refuses, answers of the user.
#include "src/files/folder_operations.h"
#include "src/files/path_parts.h"
#include "src/files/tree.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_files.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using testing::FakeCall;

using Items = std::map<std::u16string, std::string>;

// Items by path, with their contents; folders end with a backslash.
class FakeTree : public TreeSystem, private testing::FakeFiles {
  public:
    Items items;
    std::map<std::u16string, std::u16string> links; // to what they lead
    std::u16string passed_over;                     // by the shell
    int failing_move = 0;                           // counted from 1
    ErrorCode failure = ErrorCode::Busy;
    bool has_shell = true;
    bool same_volume = true;
    ShellOutcome outcome;
    bool agrees = false;
    std::vector<std::u16string> questions;
    std::vector<std::u16string> removed_folders;
    int shell_calls = 0;

    FileSystem& files() override { return *this; }
    Result<NativePath> full_path(const NativePath& path) override { return path; }
    bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) override {
        return a == b;
    }
    bool on_same_volume(const NativePath&, const NativePath&) override { return same_volume; }
    bool is_same_file(const NativePath& a, const NativePath& b) override {
        return behind(a.wide) == behind(b.wide);
    }
    std::uint32_t tick_count() override { return 4'294'967'295u; }
    Result<void> create_folder(const NativePath& path) override {
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
        if (outcome.code == 0 && !outcome.aborted)
            for (const auto& [path, contents] : Items(items))
                if (path.starts_with(folder.wide + u"\\") && path != passed_over)
                    items[target.wide + path.substr(folder.wide.size())] = contents;
        return outcome;
    }
    ShellOutcome shell_delete(const NativePath& folder, void*, ShellMessages) override {
        ++shell_calls;
        if (outcome.code == 0 && !outcome.aborted)
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
    EXPECT_FALSE(check_new_name(u"C:\\a. \\"));
    EXPECT_TRUE(check_new_name(u"C:\\a\\.."));
    EXPECT_TRUE(check_new_name(u"\\\\?\\C:\\a."));
}

TEST(MakeFolders, GoesUpToWhatIsThereAndNoFurther) {
    FakeTree tree;
    EXPECT_EQ(code_of(make_folders(tree, {u"C:\\a\\b\\c", {}})), ErrorCode::Ok);
    EXPECT_EQ(tree.items, (Items{{u"C:\\a\\", ""}, {u"C:\\a\\b\\", ""}, {u"C:\\a\\b\\c\\", ""}}));
    EXPECT_EQ(code_of(make_folders(tree, {u"C:\\a\\b", {}})), ErrorCode::AlreadyExists);
    EXPECT_EQ(code_of(make_folders(tree, {u"Q:\\a\\b", {}})), ErrorCode::FolderNotFound);
    EXPECT_EQ(code_of(make_folders(tree, {u"C:\\x \\y\\z", {}})), ErrorCode::BadName);
    for (const auto* path : {u"C:\\a\\cannot be", u"C:\\a\\cannot be\\d", u"cannot be"})
        EXPECT_EQ(code_of(make_folders(tree, {path, {}})), ErrorCode::FolderNotFound);
    EXPECT_EQ(code_of(make_folders(tree, {u"C:\\new\\cannot be", {}})), ErrorCode::Ok);
    EXPECT_EQ(tree.items.size(), 4u);
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
             Case{2, ErrorCode::DifferentVolumes, before},
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

TEST(FolderOperations, TellWhatTheShellAnswers) {
    struct Case {
        ShellOutcome outcome;
        int copied;
        int deleted;
    };
    for (const Case& c :
         {Case{{0, false}, 0, 0}, Case{{5, false}, 5, -47}, Case{{124, false}, 124, 124},
          Case{{0, true}, 299, 299}, Case{{1223, true}, 299, 299}}) {
        SCOPED_TRACE(c.outcome.code);
        FakeTree tree;
        tree.items = {{u"C:\\a\\", ""}};
        tree.outcome = c.outcome;
        FakeCall copy({u"", u"C:\\a\\", u"C:\\b\\"});
        EXPECT_EQ(number(code_of(copy_folder(copy, tree))), c.copied);
        FakeCall removal({std::u16string(with_contents) + u"noWarning", u"C:\\a"});
        EXPECT_EQ(number(code_of(delete_folder(removal, tree))), c.deleted);
        EXPECT_EQ(removal.result().has_value(), c.deleted == 0);
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
