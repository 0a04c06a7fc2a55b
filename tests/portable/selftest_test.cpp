// The portable parts of the self-test: which checks are run, what their programs tell, and what a
// report shows of it.
#include "console/selftest/example_list.h"
#include "console/selftest/name_filter.h"
#include "console/selftest/report.h"
#include "console/selftest/shown_paths.h"
#include "console/selftest/test_results.h"

#include <gtest/gtest.h>

namespace vell::selftest {
namespace {

TEST(SelfTest, FiltersAreThoseOfTheTestProgram) {
    const NameFilter all("");
    EXPECT_TRUE(all.takes("Zip.Reads"));
    const NameFilter some("Zip.*:*Stream?-Zip.Slow*:X");
    for (const char* name : {"Zip.Reads", "Ntfs.Streams", "Zip.", "Zip.Fast"})
        EXPECT_TRUE(some.takes(name)) << name;
    for (const char* name : {"Zip.Slow", "Zip.Slowest", "Ntfs.Stream", "ZipX", "aZip.Reads", ""})
        EXPECT_FALSE(some.takes(name)) << name;
    EXPECT_TRUE(NameFilter("-Zip.*").takes("Ntfs.Streams"));
    EXPECT_FALSE(NameFilter("-Zip.*").takes("Zip.Reads"));
    EXPECT_TRUE(NameFilter("a*b*c").takes("abbbcac"));
    EXPECT_FALSE(NameFilter("a*b*c").takes("abbbca"));
}

TEST(SelfTest, PathsAreHiddenInEveryForm) {
    ShownPaths paths;
    paths.add(u"C:\\Users\\J\u00F6rg B\\Temp\\", "%TEMP%");
    paths.add(u"C:\\Users\\J\u00F6rg B", "%USERPROFILE%");
    const std::pair<const char*, const char*> cases[] = {
        {"C:\\Users\\J\u00F6rg B", "%USERPROFILE%"},
        {"at c:/users/J\u00F6rg b/a.txt.", "at %USERPROFILE%/a.txt."},
        {"filewin:/C:/Users/J\u00F6rg B/Temp/x", "filewin:/%TEMP%/x"},
        {"u\"C:\\\\Users\\\\J\\xF6rg B\\\\a\"", "u\"%USERPROFILE%\\\\a\""},
        {"C:\\Users\\J\u00F6rg B\\Temp\\a C:\\Users\\J\u00F6rg B\\b", "%TEMP%\\a %USERPROFILE%\\b"},
        {"C:\\Users\\J\u00F6rg Bauer", "C:\\Users\\J\u00F6rg Bauer"}, // somebody else's
        {"C:\\Users\\J\u00F6rg B\u00E4r", "C:\\Users\\J\u00F6rg B\u00E4r"},
        {"C:\\Users\\J", "C:\\Users\\J"},
        {"C:\\Users\\J<INVALID UTF8>rg B\\a", "%USERPROFILE%\\a"},
        {"", ""},
    };
    for (const auto& [text, shown] : cases)
        EXPECT_EQ(paths.in(text), shown);

    // A digit behind a number begins another literal; characters beyond the BMP are two numbers.
    ShownPaths others;
    others.add(u"D:\\\u00E4b\U0001F600", "%X%");
    EXPECT_EQ(others.in("u\"D:\\\\\\xE4\" u\"b\\xD83D\\xDE00\""), "u\"%X%\"");
    EXPECT_EQ(others.in("D:\\\u00E4B\U0001F600\\"), "%X%\\");

    ShownPaths row;
    row.add(u"C:\\\u65E5\u672C\\a", "%X%");
    EXPECT_EQ(row.in("C:\\<INVALID UTF8>\\a\\b"), "%X%\\b");
    EXPECT_EQ(row.in("C:\\\u65E5\\a"), "C:\\\u65E5\\a");

    ShownPaths work;
    work.add(u"C:\\T\\p", "C:\\Work");
    EXPECT_EQ(work.in("C:\\T\\p\\a C:/T/p/a c:/t\\P"), "C:\\Work\\a C:/Work/a C:/Work");
    ShownPaths none;
    none.add(u"", "%NOTHING%");
    none.add(u"\\", "%NOTHING%");
    EXPECT_EQ(none.in("a\\b"), "a\\b");
}

TEST(SelfTest, ExamplesAreReadRunAndCompared) {
    const auto pages =
        read_examples("> too early\npage One\nexample A title: of it\r\n"
                      "> $x = 1\r\n> VlFile_A( \"\" )\n> $y & 2\n= first\n= \n= last\n"
                      "example B\nneeds plain path\n> b\n= \npage Two\n");
    ASSERT_EQ(pages.size(), 2u);
    EXPECT_EQ(pages[1].name, "Two");
    EXPECT_TRUE(pages[1].examples.empty());
    ASSERT_EQ(pages[0].examples.size(), 2u);
    const Example& first = pages[0].examples[0];
    EXPECT_EQ(first.title, "A title: of it");
    EXPECT_EQ(first.statements, (std::vector<std::string>{"$x = 1", "VlFile_A( \"\" )", "$y & 2"}));
    EXPECT_EQ(first.result, "first\n\nlast");
    EXPECT_FALSE(first.needs_plain_path);
    EXPECT_TRUE(pages[0].examples[1].needs_plain_path);
    EXPECT_EQ(pages[0].examples[1].result, "");

    EXPECT_EQ(marked_statements({"a", "b"}), "a\nChar( 30 )\nb\nChar( 30 )\n");
    const auto printed = split_at_marks("\x1E"
                                        "first\r\x1E"
                                        "last\x1E",
                                        3);
    ASSERT_TRUE(printed);
    EXPECT_EQ(result_of(first, printed->data()), "first\n\nlast");
    EXPECT_FALSE(split_at_marks("first\x1E", 2));
    EXPECT_FALSE(split_at_marks("a\x1E"
                                "b\x1E",
                                1));

    EXPECT_EQ(statements_in("// none\n\n  \na\r\n b // more"),
              (std::vector<std::string>{"a", " b // more"}));
    EXPECT_EQ(literal("a\\\"b"), "\"a\\\\\\\"b\"");
}

TEST(SelfTest, AnEllipsisStandsForAnything) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"a\nb", "a\nb\n\n", true},
        {"a", "a b", false},
        {"\u2026", "", true},
        {"a\u2026", "a\nb", true},
        {"a\u2026c", "abbc", true},
        {"ab\u2026bc", "abc", false},
        {"\u2026/\u2026/\u2026 \u2026M", "1/2/2026 3 PM", true},
        {"\u2026/\u2026/\u2026 \u2026M", "1/2 PM", false},
        {"a\u2026b\u2026c", "a c b", false},
    };
    for (const auto& [expected, actual, fits] : cases)
        EXPECT_EQ(matches(expected, actual), fits) << expected << " | " << actual;
}

TEST(SelfTest, ResultsOfTestProgramsAreRead) {
    const auto suites = read_test_list("Running main() from gtest_main.cc\r\nZip.\r\n  Reads\r\n"
                                       "  Writes  # GetParam() = 1\r\nNtfs/0.  # TypeParam = a\n"
                                       "  Streams\n");
    ASSERT_EQ(suites.size(), 2u);
    EXPECT_EQ(suites[0].tests, (std::vector<std::string>{"Zip.Reads", "Zip.Writes"}));
    EXPECT_EQ(suites[1].tests, std::vector<std::string>{"Ntfs/0.Streams"});

    const auto outcomes = read_test_results(R"(<?xml version="1.0" encoding="UTF-8"?>
<testsuites tests="4" name="AllTests"><testsuite name="Zip">
<testcase name="Reads" status="run" result="completed" time="1.25" classname="Zip" />
<testcase name="Off" status="notrun" result="suppressed" time="0." classname="Zip" />
<testcase name="Writes" status="run" result="completed" time="0.5" classname="Zip">
<failure message="x" type=""><![CDATA[/home/a/tests/windows/zip_test.cpp:7
Expected <a> & "b"]]></failure><failure message="y" type=""><![CDATA[again]]></failure></testcase>
<testcase name="Links" status="run" result="skipped" time="0." classname="Zip">
<skipped message="/home/a/zip_test.cpp:9&#x0A;no links here&#x0A;"><![CDATA[x]]></skipped></testcase>
</testsuite></testsuites>)");
    ASSERT_TRUE(outcomes);
    ASSERT_EQ(outcomes->size(), 3u);
    EXPECT_EQ((*outcomes)[0].name, "Zip.Reads");
    EXPECT_EQ((*outcomes)[0].verdict, Verdict::Passed);
    EXPECT_EQ((*outcomes)[0].seconds, 1.25);
    EXPECT_EQ((*outcomes)[1].verdict, Verdict::Failed);
    EXPECT_EQ((*outcomes)[1].message, "tests/windows/zip_test.cpp:7\nExpected <a> & \"b\"\nagain");
    EXPECT_EQ((*outcomes)[2].verdict, Verdict::Skipped);
    EXPECT_EQ((*outcomes)[2].message, "no links here\n");
    EXPECT_FALSE(read_test_results("<testsuites><testsuite>"));
}

TEST(SelfTest, ReportsTellTotalsAndFailuresFirst) {
    Report report{"Title", {{"Windows", "10"}}, {}, true};
    report.parts = {{"tests",
                     {{"A.a", Verdict::Passed, "", 0.25},
                      {"A.b", Verdict::Failed, "line 1\nline 2", 1.5},
                      {"A.c", Verdict::Skipped, "no links", 0}}},
                    {"examples", {{"Page: it", Verdict::Passed, "", 2}}}};
    EXPECT_EQ(report_text(report),
              "Title\r\n\r\nWindows           10\r\n\r\n"
              "all               2 passed, 1 failed, 1 skipped, 3.75 s\r\n"
              "tests             1 passed, 1 failed, 1 skipped, 1.75 s\r\n"
              "examples          1 passed, 0 failed, 0 skipped, 2.00 s\r\n\r\n"
              "What failed\r\n  FAIL     1.50 s  A.b\r\n         line 1\r\n         line 2\r\n\r\n"
              "tests\r\n  pass     0.25 s  A.a\r\n  FAIL     1.50 s  A.b\r\n         line 1\r\n"
              "         line 2\r\n  skip     0.00 s  A.c\r\n         no links\r\n\r\n"
              "examples\r\n  pass     2.00 s  Page: it\r\n");
    report.is_complete = false;
    EXPECT_NE(report_text(report).find("has not come to its end"), std::string::npos);
}

} // namespace
} // namespace vell::selftest
