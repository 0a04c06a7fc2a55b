// Searching folders that exist only here.
#include "src/files/listing/name_pattern.h"
#include "src/files/listing/search.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using test::file;
using test::folder;
using test::hidden;
using test::link;

TEST(NamePattern, ComparesPartsAndWholes) {
    for (const auto& row : test::wide_table("name_patterns.txt", 4)) {
        const auto matches = [&](NameExtent extent) {
            return NamePattern(row[0], extent).matches(row[1]) ? u"1" : u"0";
        };
        SCOPED_TRACE(utf8_from_utf16(row[0] + u" in " + row[1]));
        EXPECT_EQ(matches(NameExtent::Part), row[2]);
        EXPECT_EQ(matches(NameExtent::Whole), row[3]);
    }
}

TEST(NamePattern, NeedsNoTimeBeyondTheProductOfTheLengths) {
    // Trying every length for every star would not end here.
    std::u16string text;
    for (int i = 0; i < 10'000; ++i)
        text += u"*a";
    const std::u16string name(20'000, u'a');
    EXPECT_TRUE(NamePattern(text, NameExtent::Whole).matches(name));
    EXPECT_FALSE(NamePattern(text + u"b", NameExtent::Whole).matches(name));
}

class SearchedSystem : public test::FakeSystem {
  public:
    std::uint64_t clock_now = 0;
    std::uint64_t milliseconds() override { return clock_now += 400; }
};

class Search : public ::testing::Test {
  protected:
    Search() {
        folders.add(u"C:\\file");
        folders.fill(u"\\\\s\\t\\", {file(u"b")});
        folders.fill(u"C:\\top\\",
                     {file(u"Invoice 1.pdf"), folder(u"invoices"), hidden(folder(u"dark")),
                      folder(u".git"), link(folder(u"invoice loop")), folder(u"locked"),
                      file(u"b.lnk"), file(u"\u00C4RGER")});
        folders.fill(u"C:\\top\\invoices\\", {file(u"INVOICE.TXT"), folder(u"deep"), file(u"b")});
        folders.fill(u"C:\\top\\invoices\\deep\\", {file(u"old invoice")});
        folders.fill(u"C:\\top\\dark\\", {file(u"dark invoice")});
        folders.fill(u"C:\\top\\.git\\", {file(u"b")});
        folders.refuse(u"C:\\top\\locked\\", 5);
    }

    // ";" for the ends of lines.
    std::string result(std::u16string switches, std::u16string where, std::u16string name) {
        test::FakeCall call({std::move(switches), std::move(where), std::move(name)});
        std::string text = answer_of(call, search(call, folders));
        EXPECT_EQ(folders.open_folders(), 0);
        notes = call.notes();
        std::ranges::replace(text, '\r', ';');
        return text;
    }

    SearchedSystem folders;
    std::vector<std::string> notes;
};

TEST_F(Search, FindsNamesAtEveryDepth) {
    for (const auto& row : test::wide_table("searches.txt", 4))
        EXPECT_EQ(result(row[0], row[1], row[2]), utf8_from_utf16(row[3]))
            << utf8_from_utf16(row[0] + u" | " + row[1] + u" | " + row[2]);
    result(u"", u"C:\\top", u"x");
    EXPECT_EQ(notes, std::vector<std::string>{"Search: folders left out: 1"});
    folders.refuse(u"C:\\top\\", 5);
    EXPECT_EQ(result(u"", u"C:\\top", u"b"), "$$5");
}

TEST_F(Search, GoesOnBehindAFolderThatBreaksOff) {
    folders.generate = [](const std::u16string& path) {
        return path == u"C:\\top\\" ? test::Entries{folder(u"sub"), file(u"last")}
                                    : test::Entries(60, file(u"f"));
    };
    folders.fail_read(4, 1234); // the third one of sub
    EXPECT_EQ(result(u"", u"C:\\top", u"l"), "C:\\top\\last");
    EXPECT_EQ(notes.size(), 1u);
}

TEST_F(Search, HasNoLimitOfDepth) {
    constexpr std::size_t depth = 20'000; // Windows' paths end before
    folders.generate = [](const std::u16string& path) {
        return test::Entries{path.size() < 2 * depth ? folder(u"d") : file(u"end")};
    };
    const std::string found = result(u"-files", u"C:\\top", u"end");
    EXPECT_TRUE(found.ends_with("\\d\\end")) << found.size();
    EXPECT_GT(found.size(), 2 * depth);
}

} // namespace
} // namespace vell::files
