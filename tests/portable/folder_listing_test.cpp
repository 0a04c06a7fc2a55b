// Listings and sizes of folders that exist only here.
#include "src/files/listing/folder_lister.h"
#include "src/files/listing/folder_size.h"
#include "src/files/listing/listing.h"
#include "tests/portable/answer_of.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using test::Entries;
using test::FakeSystem;
using test::file;
using test::folder;
using test::hidden;
using test::link;

// One line after the other, "|" for their ends.
std::u16string listing(FakeSystem& folders, ListingOptions options,
                       const std::u16string& path = u"C:\\top\\") {
    std::u16string text;
    const Result<void> done = FolderLister(folders, std::move(options)).append(path, text);
    if (!done)
        text = utf16_from_utf8("failed " + std::to_string(number(done.error())));
    std::ranges::replace(text, u'\r', u'|');
    return text;
}

TEST(FolderLister, KeepsWhatTheOptionsSay) {
    FakeSystem folders;
    folders.fill(u"C:\\top\\",
                 {folder(u".git"), folder(u"sub"), hidden(folder(u"dark")), folder(u"old.lnk"),
                  file(u".profile"), file(u"a.txt"), hidden(file(u"h.txt")), file(u"to.LnK"),
                  file(u"Xlnk"), file(u"lnk")});
    EXPECT_EQ(listing(folders, {.files = true, .invisibles = true}), u".profile|a.txt|h.txt|lnk|");
    EXPECT_EQ(listing(folders, {.files = true, .aliases = true}),
              u".profile|a.txt|to.LnK|Xlnk|lnk|");
    EXPECT_EQ(listing(folders, {.folders = true, .aliases = true, .folder_suffix = u"/"}),
              u"sub/|old.lnk/|");
    EXPECT_EQ(listing(folders, {.files = true, .folders = true, .point_folders = true}),
              u".|..|.git|sub|.profile|a.txt|lnk|");
}

TEST(FolderLister, ListsEachFolderBeforeItsContents) {
    FakeSystem folders;
    folders.fill(u"C:\\top\\", {file(u"a"), folder(u"sub"), file(u"z"), folder(u".git"),
                                hidden(folder(u"dark")), link(folder(u"loop")), folder(u"empty")});
    folders.fill(u"C:\\top\\sub\\", {file(u"b"), folder(u"deep"), file(u"c")});
    folders.fill(u"C:\\top\\sub\\deep\\", {file(u"d")});
    folders.fill(u"C:\\top\\empty\\", {});
    folders.fill(u"C:\\top\\.git\\", {file(u"config")});
    EXPECT_EQ(listing(folders, {.files = true, .folders = true, .recursive = true}),
              u"a|sub|sub/b|sub/deep|sub/deep/d|sub/c|z|loop|empty|");
    EXPECT_EQ(listing(folders, {.folders = true, .recursive = true, .folder_suffix = u"/"}),
              u"sub/|sub/deep/|loop/|empty/|");
    ListingOptions options{.files = true, .recursive = true, .prefix = u"in/"};
    EXPECT_EQ(listing(folders, options), u"in/a|in/sub/b|in/sub/deep/d|in/sub/c|in/z|");
    options.point_folders = true; // "." and ".." are no way down or up
    EXPECT_EQ(listing(folders, options),
              u"in/a|in/sub/b|in/sub/deep/d|in/sub/c|in/z|in/.git/config|");
    EXPECT_EQ(folders.open_folders(), 0);
}

TEST(FolderLister, GivesShortNamesWhereThereAreAny) {
    FakeSystem folders;
    Entries entries{folder(u"long folder"), file(u"plain.txt"), file(u"shortcut.lnk")};
    entries[0].short_name = u"LONGFO~1";
    entries[2].short_name = u"SHORTC~1.TXT"; // the long name decides what is a shortcut
    folders.fill(u"C:\\top\\", entries);
    folders.fill(u"C:\\top\\long folder\\", {file(u"a")});
    EXPECT_EQ(listing(folders, {.files = true, .recursive = true, .short_names = true}),
              u"LONGFO~1/a|plain.txt|");
}

TEST(FolderLister, RefusesPathsThatItCannotRead) {
    FakeSystem folders;
    const std::u16string nearly = std::u16string(1990, u'x') + u'\\';
    std::u16string sub = u"sub";
    folders.generate = [&](const std::u16string& path) {
        return Entries{path == nearly ? folder(sub) : file(u"a")};
    };
    const ListingOptions files{.files = true, .recursive = true};
    EXPECT_EQ(listing(folders, files, u"C:\\top"), u"failed -50");
    EXPECT_EQ(listing(folders, files, u"C:"), u"a|");
    EXPECT_EQ(listing(folders, files, std::u16string(1994, u'x') + u'\\'), u"a|");
    EXPECT_EQ(listing(folders, files, std::u16string(1995, u'x') + u'\\'), u"failed -50");
    // Sub-folders too.
    EXPECT_EQ(listing(folders, files, nearly), u"sub/a|");
    sub = u"subs";
    EXPECT_EQ(listing(folders, files, nearly), u"failed -50");
}

Entries many_files(std::size_t count) {
    Entries entries;
    for (std::size_t i = 0; i < count; ++i)
        entries.push_back(file(u"f", i));
    return entries;
}

TEST(FolderLister, EndsWithTheSystemsNumberWhereverReadingFails) {
    FakeSystem folders;
    Entries with_sub = many_files(60);
    with_sub.insert(with_sub.begin() + 30, folder(u"sub"));
    folders.generate = [&](const std::u16string& path) {
        return path == u"C:\\top\\" ? with_sub : many_files(51);
    };
    const ListingOptions files{.files = true, .recursive = true};
    listing(folders, files);
    const int reads = folders.folder_reads();
    EXPECT_EQ(reads, 4 + 4); // batches, and one to see the end
    for (int read = 1; read <= reads; ++read) {
        folders.fail_read(read, 5);
        EXPECT_EQ(listing(folders, files), u"failed 5") << read;
        EXPECT_EQ(folders.open_folders(), 0);
    }
    folders.fail_read(0, 0);
    folders.refuse(u"C:\\top\\sub\\", 1234);
    EXPECT_EQ(listing(folders, files), u"failed 1234");
    EXPECT_EQ(listing(folders, {.files = true}).size(), 120u); // nobody asked for it
}

TEST(FolderLister, Goes500LevelsDown) {
    FakeSystem folders;
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
    FakeSystem folders;
    const Entries top(1000, folder(u"d"));
    const Entries inside = many_files(1000);
    folders.generate = [&](const std::u16string& path) {
        return path == u"C:\\top\\" ? top : inside;
    };
    const std::u16string text = listing(folders, {.files = true, .recursive = true});
    EXPECT_EQ(text.size(), 4'000'000u); // "d/f|"
    EXPECT_EQ(folders.folder_reads(), 1001 * (1000 / 25 + 1));
    EXPECT_EQ(folders.largest_batch(), 25u);
    EXPECT_EQ(*folder_size(folders, u"C:\\top\\"), 1000u * 499'500u);
}

TEST(FolderSize, CountsEveryFileOnceAndNothingBehindLinks) {
    FakeSystem folders;
    folders.fill(u"C:\\top\\", {file(u"big", 5'000'000'000), hidden(file(u"h", 7)),
                                file(u"to.lnk", 10), link(file(u"elsewhere", 999)),
                                link(folder(u"loop")), folder(u".git"), hidden(folder(u"dark"))});
    folders.fill(u"C:\\top\\.git\\", {file(u"config", 100)});
    folders.fill(u"C:\\top\\dark\\", {file(u"b", 3'000'000'000)});
    EXPECT_EQ(*folder_size(folders, u"C:\\top\\"), 8'000'000'117u);

    folders.refuse(u"C:\\top\\dark\\", 5);
    EXPECT_EQ(folder_size(folders, u"C:\\top\\").error(), ErrorCode::Busy);
    folders.fail_read(3, 1234);
    EXPECT_EQ(number(folder_size(folders, u"C:\\top\\").error()), -47);
    folders.fail_read(2, 1234);
    EXPECT_EQ(number(folder_size(folders, u"C:\\top\\").error()), 1234);
    EXPECT_EQ(folders.open_folders(), 0);
}

TEST(ListFolder, TellsAllOfItsItemsAsJson) {
    FakeSystem system;
    system.add_folder(u"C:\\top\\sub").modified = {1999, 12, 31, 23, 59, 58};
    test::FakeItem& item = system.add(u"C:\\top\\sub\\\u00E4\"b.txt", "12345");
    item.attributes = bit(Attribute::ReadOnly) | bit(Attribute::Hidden);
    item.created = {1601, 1, 1, 0, 0, 0}; // a file system that keeps none
    system.add_folder(u"C:\\top\\loop").link = u"elsewhere";
    const std::string rest = R"("Accessed":"2024-02-29T12:34:56","Hidden":)";
    const std::string times = R"("Created":"2024-02-29T12:34:56","Modified":)";
    const auto* switches =
        u"files folders -recursive showinvisibles -Format=JSON -FileMakerPathFormat";
    EXPECT_EQ(test::answer_of(list_folder, system, {switches, u"C:\\top"}),
              R"([{"Name":"sub","Path":"filewin:/C:/top/sub","Type":"folder",)" + times +
                  R"("1999-12-31T23:59:58",)" + rest + R"(false,"ReadOnly":false},)" +
                  R"({"Name":"ä\"b.txt","Path":"filewin:/C:/top/sub/ä\"b.txt",)" +
                  R"("Type":"file","Size":5,"Modified":"2024-02-29T12:34:56",)" + rest +
                  R"(true,"ReadOnly":true},)" +
                  R"({"Name":"loop","Path":"filewin:/C:/top/loop","Type":"folder","Link":true,)" +
                  times + R"("2024-02-29T12:34:56",)" + rest + R"(false,"ReadOnly":false}])");
    system.add_folder(u"C:\\empty");
    switches = u"files showpointdirs folders -Format=JSON";
    EXPECT_EQ(test::answer_of(list_folder, system, {switches, u"C:\\empty"}), "[]");
}

TEST(ListFolder, GivesTheSystemsNumberAndFolderSizeItsCode) {
    FakeSystem folders;
    folders.fill(u"C:\\top\\", {file(u"a.txt"), folder(u"sub")});
    folders.refuse(u"C:\\top\\sub\\", 5);
    EXPECT_EQ(test::answer_of(list_folder, folders, {u"files -recursive", u"C:\\top"}), "$$5");
    EXPECT_EQ(test::answer_of(get_folder_size, folders, {u"", u"C:\\top"}), "$$-47");
}

} // namespace
} // namespace vell::files
