// Listings and sizes of folders that exist only here.
#include "src/files/listing/folder_lister.h"
#include "src/files/listing/folder_size.h"
#include "src/files/listing/listing.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_files.h"
#include "tests/portable/fake_folders.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using testing::Entries;
using testing::FakeFolders;
using testing::file;
using testing::folder;
using testing::hidden;
using testing::link;

// One line after the other, "|" for their ends.
std::u16string listing(FakeFolders& folders, ListingOptions options,
                       const std::u16string& path = u"C:\\top\\") {
    std::u16string text;
    const Result<void> done = FolderLister(folders, std::move(options)).append(path, text);
    if (!done)
        text = utf16_from_utf8("failed " + std::to_string(number(done.error())));
    std::ranges::replace(text, u'\r', u'|');
    return text;
}

TEST(FolderLister, KeepsWhatTheOptionsSay) {
    FakeFolders folders;
    folders.add(u"C:\\top\\",
                {folder(u"."), folder(u".."), folder(u".git"), folder(u"sub"),
                 hidden(folder(u"dark")), folder(u"old.lnk"), file(u".profile"), file(u"a.txt"),
                 hidden(file(u"h.txt")), file(u"to.LnK"), file(u"Xlnk"), file(u"lnk")});
    EXPECT_EQ(listing(folders, {.files = true, .invisibles = true}), u".profile|a.txt|h.txt|lnk|");
    EXPECT_EQ(listing(folders, {.files = true, .aliases = true}),
              u".profile|a.txt|to.LnK|Xlnk|lnk|");
    EXPECT_EQ(listing(folders, {.folders = true, .aliases = true, .folder_suffix = u"/"}),
              u"sub/|old.lnk/|");
    EXPECT_EQ(listing(folders, {.files = true, .folders = true, .point_folders = true}),
              u".|..|.git|sub|.profile|a.txt|lnk|");
}

TEST(FolderLister, ListsEachFolderBeforeItsContents) {
    FakeFolders folders;
    folders.add(u"C:\\top\\", {folder(u"."), folder(u".."), file(u"a"), folder(u"sub"), file(u"z"),
                               folder(u".git"), hidden(folder(u"dark")), link(folder(u"loop")),
                               folder(u"empty")});
    folders.add(u"C:\\top\\sub\\",
                {folder(u"."), folder(u".."), file(u"b"), folder(u"deep"), file(u"c")});
    folders.add(u"C:\\top\\sub\\deep\\", {file(u"d")});
    folders.add(u"C:\\top\\empty\\", {});
    folders.add(u"C:\\top\\.git\\", {file(u"config")});
    EXPECT_EQ(listing(folders, {.files = true, .folders = true, .recursive = true}),
              u"a|sub|sub/b|sub/deep|sub/deep/d|sub/c|z|loop|empty|");
    EXPECT_EQ(listing(folders, {.folders = true, .recursive = true, .folder_suffix = u"/"}),
              u"sub/|sub/deep/|loop/|empty/|");
    ListingOptions options{.files = true, .recursive = true, .prefix = u"in/"};
    EXPECT_EQ(listing(folders, options), u"in/a|in/sub/b|in/sub/deep/d|in/sub/c|in/z|");
    options.point_folders = true; // "." and ".." are no way down or up
    EXPECT_EQ(listing(folders, options),
              u"in/a|in/sub/b|in/sub/deep/d|in/sub/c|in/z|in/.git/config|");
    EXPECT_EQ(folders.open_readers(), 0);
}

TEST(FolderLister, GivesShortNamesWhereThereAreAny) {
    FakeFolders folders;
    Entries entries{folder(u"long folder"), file(u"plain.txt"), file(u"shortcut.lnk")};
    entries[0].short_name = u"LONGFO~1";
    entries[2].short_name = u"SHORTC~1.TXT"; // the long name decides what is a shortcut
    folders.add(u"C:\\top\\", entries);
    folders.add(u"C:\\top\\long folder\\", {file(u"a")});
    EXPECT_EQ(listing(folders, {.files = true, .recursive = true, .short_names = true}),
              u"LONGFO~1/a|plain.txt|");
}

TEST(FolderLister, RefusesPathsThatItCannotRead) {
    FakeFolders folders;
    folders.generate = [](const std::u16string&) {
        return Entries{file(u"a")};
    };
    const ListingOptions files{.files = true, .recursive = true};
    EXPECT_EQ(listing(folders, files, u"C:\\top"), u"failed -50");
    EXPECT_EQ(listing(folders, files, u"C:"), u"a|");
    EXPECT_EQ(listing(folders, files, std::u16string(1994, u'x') + u'\\'), u"a|");
    EXPECT_EQ(listing(folders, files, std::u16string(1995, u'x') + u'\\'), u"failed -50");
    // Sub-folders too.
    const std::u16string nearly = std::u16string(1990, u'x') + u'\\';
    folders.add(nearly, {folder(u"sub")});
    EXPECT_EQ(listing(folders, files, nearly), u"sub/a|");
    folders.add(nearly, {folder(u"subs")});
    EXPECT_EQ(listing(folders, files, nearly), u"failed -50");
}

Entries many_files(std::size_t count) {
    Entries entries;
    for (std::size_t i = 0; i < count; ++i)
        entries.push_back(file(u"f", i));
    return entries;
}

TEST(FolderLister, EndsWithTheSystemsNumberWhereverReadingFails) {
    FakeFolders folders;
    Entries with_sub = many_files(60);
    with_sub.insert(with_sub.begin() + 30, folder(u"sub"));
    folders.add(u"C:\\top\\sub\\", many_files(51));
    folders.add(u"C:\\top\\", with_sub);
    const ListingOptions files{.files = true, .recursive = true};
    listing(folders, files);
    const int reads = folders.reads();
    EXPECT_EQ(reads, 4 + 4); // batches, and one to see the end
    for (int read = 1; read <= reads; ++read) {
        folders.fail_read(read, 5);
        EXPECT_EQ(listing(folders, files), u"failed 5") << read;
        EXPECT_EQ(folders.open_readers(), 0);
    }
    folders.fail_read(0, 0);
    folders.refuse(u"C:\\top\\sub\\", 1234);
    EXPECT_EQ(listing(folders, files), u"failed 1234");
    EXPECT_EQ(listing(folders, {.files = true}).size(), 120u); // nobody asked for it
}

TEST(FolderLister, Goes500LevelsDown) {
    FakeFolders folders;
    folders.generate = [](const std::u16string& path) {
        Entries entries{file(u"f", 1)};
        if (std::ranges::count(path, u'\\') <= 500)
            entries.push_back(folder(u"d"));
        return entries;
    };
    const std::u16string text = listing(folders, {.files = true, .recursive = true}, u"C:\\");
    EXPECT_EQ(std::ranges::count(text, u'|'), 501);
    EXPECT_TRUE(text.starts_with(u"f|d/f|d/d/f|"));
    EXPECT_TRUE(text.ends_with(u"/d/f|"));
    EXPECT_EQ(*folder_size(folders, u"C:\\"), 501u);
}

TEST(FolderLister, ReadsAMillionEntriesOnceEach) {
    FakeFolders folders;
    Entries top;
    for (int i = 0; i < 1000; ++i)
        top.push_back(folder(u"d"));
    folders.add(u"C:\\top\\", std::move(top));
    const Entries inside = many_files(1000);
    folders.generate = [&](const std::u16string&) {
        return inside;
    };
    const std::u16string text = listing(folders, {.files = true, .recursive = true});
    EXPECT_EQ(text.size(), 4'000'000u); // "d/f|"
    EXPECT_EQ(folders.reads(), 1001 * (1000 / 25 + 1));
    EXPECT_EQ(folders.largest_batch(), 25u);
    EXPECT_EQ(*folder_size(folders, u"C:\\top\\"), 1000u * 499'500u);
}

TEST(FolderSize, CountsEveryFileOnceAndNothingBehindLinks) {
    FakeFolders folders;
    folders.add(u"C:\\top\\",
                {folder(u"."), folder(u".."), file(u"big", 5'000'000'000), hidden(file(u"h", 7)),
                 file(u"to.lnk", 10), link(file(u"elsewhere", 999)), link(folder(u"loop")),
                 folder(u".git"), hidden(folder(u"dark"))});
    folders.add(u"C:\\top\\.git\\", {file(u"config", 100)});
    folders.add(u"C:\\top\\dark\\", {file(u"b", 3'000'000'000)});
    EXPECT_EQ(*folder_size(folders, u"C:\\top\\"), 8'000'000'117u);

    folders.refuse(u"C:\\top\\dark\\", 5);
    EXPECT_EQ(folder_size(folders, u"C:\\top\\").error(), ErrorCode::Busy);
    folders.fail_read(3, 1234);
    EXPECT_EQ(number(folder_size(folders, u"C:\\top\\").error()), -47);
    folders.fail_read(2, 1234);
    EXPECT_EQ(number(folder_size(folders, u"C:\\top\\").error()), 1234);
    EXPECT_EQ(folders.open_readers(), 0);
}

class ListFolder : public ::testing::Test {
  protected:
    ListFolder() {
        items.add_folder(u"C:\\top\\");
        items.add(u"C:\\file", {});
        folders.add(u"C:\\top\\", {file(u"a.txt"), folder(u"sub"), hidden(file(u"h"))});
        folders.add(u"C:\\top\\sub\\", {file(u"b.txt", 12)});
    }

    std::u16string result(std::vector<std::u16string> parameters, params::Body body = list_folder) {
        testing::FakeCall call(std::move(parameters));
        const Result<void> done = body(call, system);
        EXPECT_EQ(done.has_value(), call.result().has_value());
        return done ? *call.result() : utf16_from_utf8(std::to_string(number(done.error())));
    }

    testing::FakeFiles items;
    FakeFolders folders;
    testing::FakeSystem system{items, folders};
};

TEST_F(ListFolder, FindsItsWordsAnywhere) {
    const std::u16string top = u"C:\\top";
    EXPECT_EQ(result({u"files", top}), u"a.txt");
    EXPECT_EQ(result({u"XFILESX-recursiveX", top}), u"a.txt\rsub/b.txt");
    EXPECT_EQ(result({u"files folders showinvisibles -AddFolderSuffix -ReturnAtEnd", top}),
              u"a.txt\rsub/\rh\r");
    // The word in the switch does not count, one beside it does.
    EXPECT_EQ(result({u"files -AddFolderSuffix", top}), u"a.txt");
    EXPECT_EQ(result({u"files-addfoldersuffix", top}), u"a.txt");
    EXPECT_EQ(result({u"-AddFolderSuffix", top}), u"-50");
    EXPECT_EQ(result({u"Folders-AddFolderSuffix", top}), u"sub/");
}

TEST_F(ListFolder, ReportsWhatItCannotList) {
    EXPECT_EQ(result({u"files"}), u"-50");
    EXPECT_EQ(result({u"files", u"$$-43"}), u"-4299");
    EXPECT_EQ(result({u"files", u"C:\\none"}), u"-120");
    EXPECT_EQ(result({u"files", u"C:\\file"}), u"-1407");
    EXPECT_EQ(result({u"", u"C:\\file"}), u"-1407"); // the folder is looked at first
    EXPECT_EQ(result({u"-recursive", u"C:\\top"}), u"-50");
    folders.refuse(u"C:\\top\\sub\\", 5);
    EXPECT_EQ(result({u"files -recursive", u"C:\\top"}), u"5");
    folders.add(u"C:\\top\\", {});
    EXPECT_EQ(result({u"files", u"C:\\top"}), u"");
    EXPECT_EQ(result({u"files -ReturnAtEnd", u"C:\\top"}), u"");
}

TEST_F(ListFolder, SizesHaveTheSameCodes) {
    EXPECT_EQ(result({u"", u"C:\\top"}, get_folder_size), u"12");
    EXPECT_EQ(result({u""}, get_folder_size), u"-50");
    EXPECT_EQ(result({u"", u"C:\\none"}, get_folder_size), u"-120");
    EXPECT_EQ(result({u"", u"C:\\file"}, get_folder_size), u"-1407");
    folders.refuse(u"C:\\top\\sub\\", 5);
    EXPECT_EQ(result({u"", u"C:\\top"}, get_folder_size), u"-47");
}

} // namespace
} // namespace vell::files
