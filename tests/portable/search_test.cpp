// Searching folders that exist only here.
#include "src/base/ascii.h"
#include "src/files/listing/name_pattern.h"
#include "src/files/listing/search.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_files.h"
#include "tests/portable/fake_folders.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

namespace vell::files {
namespace {

using testing::file;
using testing::folder;
using testing::hidden;
using testing::link;

TEST(NamePattern, ComparesPartsAndWholes) {
    // Text, name, and whether it is in a part of the name and whether it is the whole.
    const auto cases = testing::cells(
        u"b|abc|10|abc|abc|11|abcd|abc|00|B|abc|00|*.txt|a.txt|11|*.txt|a.txt.bak|00|inv*|"
        u"invoice|11|inv*|an invoice|00|r?t|a report|00|r?p|a report|10|a*c|xabbcx|10|a**c|ac|"
        u"11|*a*b*a|aababa|11|*ab?|abab|00|*|x|11|?|xy|10|?|\xD83D\xDE00|11|??|\xD83D\xDE00|00|"
        u"*??|\xD83D\xDE00|00|");
    for (std::size_t i = 0; i < cases.size(); i += 3) {
        const std::string shown =
            utf8_from_utf16(cases[i]) + " in " + utf8_from_utf16(cases[i + 1]);
        const auto matches = [&](NameExtent extent) {
            return NamePattern(cases[i], extent).matches(cases[i + 1]) ? u'1' : u'0';
        };
        EXPECT_EQ(matches(NameExtent::Part), cases[i + 2][0]) << shown;
        EXPECT_EQ(matches(NameExtent::Whole), cases[i + 2][1]) << shown;
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

class SearchedSystem : public testing::FakeSystem {
  public:
    using FakeSystem::FakeSystem;
    std::uint64_t clock_now = 0;
    Result<std::u16string> absolute_path(const std::u16string& path) override {
        std::u16string full = path;
        std::ranges::replace(full, u'/', u'\\');
        return full;
    }
    void fold_case(std::u16string& name) override {
        for (char16_t& unit : name)
            if (fold_ascii(unit) != unit || unit == u'\u00C4')
                unit = static_cast<char16_t>(unit + 32);
    }
    std::uint64_t milliseconds() override { return clock_now += 400; }
};

class Search : public ::testing::Test {
  protected:
    Search() {
        items.add(u"C:\\file", {});
        items.add_folder(u"C:\\");
        items.add_folder(u"C:\\top\\");
        items.add_folder(u"\\\\s\\t\\");
        folders.add(u"\\\\s\\t\\", {file(u"b")});
        folders.add(u"C:\\", {folder(u"top")});
        folders.add(u"C:\\top\\",
                    {folder(u"."), folder(u".."), file(u"Invoice 1.pdf"), folder(u"invoices"),
                     hidden(folder(u"dark")), folder(u".git"), link(folder(u"invoice loop")),
                     folder(u"locked"), file(u"b.lnk"), file(u"\u00C4RGER")});
        folders.add(u"C:\\top\\invoices\\", {file(u"INVOICE.TXT"), folder(u"deep"), file(u"b")});
        folders.add(u"C:\\top\\invoices\\deep\\", {file(u"old invoice")});
        folders.add(u"C:\\top\\dark\\", {file(u"dark invoice")});
        folders.add(u"C:\\top\\.git\\", {file(u"b")});
        folders.refuse(u"C:\\top\\locked\\", 5);
    }

    // ";" for the ends of lines.
    std::u16string result(std::u16string switches, std::u16string where, std::u16string name) {
        testing::FakeCall call({std::move(switches), std::move(where), std::move(name)});
        const Result<void> done = search(call, system);
        EXPECT_EQ(done.has_value(), call.result().has_value());
        EXPECT_EQ(folders.open_readers(), 0);
        notes = call.notes();
        std::u16string text =
            done ? *call.result() : utf16_from_utf8(std::to_string(number(done.error())));
        std::ranges::replace(text, u'\r', u';');
        return text;
    }

    testing::FakeFiles items;
    testing::FakeFolders folders;
    SearchedSystem system{items, folders};
    std::vector<std::string> notes;
};

TEST_F(Search, FindsNamesAtEveryDepth) {
    // Switches, folder, name, result.
    const auto cases = testing::cells(
        u"-files|C:/top|invoice|C:\\top\\Invoice 1.pdf;C:\\top\\invoices\\INVOICE.TXT;"
        u"C:\\top\\invoices\\deep\\old invoice|"
        u"-folders -AddFolderSuffix|C:/top|invoice|C:\\top\\invoices\\;C:\\top\\invoice loop\\|"
        u"-folders -AddFolderSuffix -FileMakerPathFormat|C:/top|deep|"
        u"filewin:/C:/top/invoices/deep/|"
        u"-AddFolderSuffix|C:\\top|inv*s|C:\\top\\invoices\\||C:\\top|\u00E4rg|C:\\top\\\u00C4RGER|"
        u"exactname|C:\\top|b|C:\\top\\invoices\\b|"
        u"exactname showpointdirs showaliases -ReturnAtEnd|C:\\top|b*|"
        u"C:\\top\\invoices\\b;C:\\top\\.git\\b;C:\\top\\b.lnk;|"
        u"-folders showpointdirs|C:\\top|*.|||C:\\top|nothing||"
        u"showinvisibles|C:\\top|dark|C:\\top\\dark;C:\\top\\dark\\dark invoice|"
        u"|C|TOP|C:\\top||/C:|top|C:\\top|-FileMakerPathFormat|file://s/t/|b|file://s/t/b|"
        // Each look at the clock is 0.4 seconds later: one for each batch and each folder's end.
        u"-TimeoutSecs=3|C:\\top|none||-TimeoutSecs=2|C:\\top|none|-4230|"
        u"-TimeoutSecs|C:\\top|b|-4239|-TimeoutSecs=86401|C:\\top|b|-4239|"
        u"-MaxResults=2|C:\\top|invoice|C:\\top\\Invoice 1.pdf;C:\\top\\invoices|"
        u"-MaxResults=99999999999999999999|C:\\top|.pdf|C:\\top\\Invoice 1.pdf|"
        u"-MaxResults|C:\\top|b|-4241|-MaxResults=0|C:\\top|b|-4241|-MaxResults=-1|C:\\top|b|-4241|"
        u"||b|-50||C:\\top||-50||C:\\top|a\\b|-37||$$-43|b|-4299||C:\\top\rC:\\top|b|-4254|"
        u"|C:\\none|b|-120||Q|b|-120||C:\\file|b|-1407|");
    for (std::size_t i = 0; i < cases.size(); i += 4)
        EXPECT_EQ(result(cases[i], cases[i + 1], cases[i + 2]), cases[i + 3])
            << utf8_from_utf16(cases[i] + u" | " + cases[i + 1] + u" | " + cases[i + 2]);
    result(u"", u"C:\\top", u"x");
    EXPECT_EQ(notes, std::vector<std::string>{"Search: folders left out: 1"});
    folders.refuse(u"C:\\top\\", 5);
    EXPECT_EQ(result(u"", u"C:\\top", u"b"), u"5");
}

TEST_F(Search, GoesOnBehindAFolderThatBreaksOff) {
    folders.add(u"C:\\top\\", {folder(u"sub"), file(u"last")});
    folders.add(u"C:\\top\\sub\\", testing::Entries(60, file(u"f")));
    folders.fail_read(4, 1234); // the third one of sub
    EXPECT_EQ(result(u"", u"C:\\top", u"l"), u"C:\\top\\last");
    EXPECT_EQ(notes.size(), 1u);
}

TEST_F(Search, HasNoLimitOfDepth) {
    constexpr std::size_t depth = 20'000; // Windows' paths end before
    folders.add(u"C:\\top\\", {folder(u"d")});
    folders.generate = [](const std::u16string& path) {
        return testing::Entries{path.size() < 2 * depth ? folder(u"d") : file(u"end")};
    };
    const std::u16string found = result(u"-files", u"C:\\top", u"end");
    EXPECT_TRUE(found.ends_with(u"\\d\\end")) << found.size();
    EXPECT_GT(found.size(), 2 * depth);
}

} // namespace
} // namespace vell::files
