// Descriptions of PDF files made for the purpose, sound or not.
#include "src/documents/pdf_information.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_system.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/pdf_builder.h"
#include "tests/portable/real_files.h"
#include "tests/portable/table_text.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace vell::documents {
namespace {

using test::EndlessFile;
using test::FakeCall;
using test::FakeSystem;
using test::Pdf;

// The text with "|" for carriage returns, then "!" and the code of a failure.
std::string description_of(files::File& file, std::size_t buffer = 4096) {
    auto reader = *files::BufferedReader::over(file, buffer);
    std::string text;
    const Result<void> done = describe_pdf(reader, text);
    std::ranges::replace(text, '\r', '|');
    return done ? text : text + '!' + std::to_string(number(done.error()));
}
std::string description_of(const std::string& bytes) {
    const auto file = files::memory_file(bytes);
    return description_of(*file);
}

constexpr const char* further = "|ParseError: could not parse further";
std::string lines(const std::string& version, const std::string& rest) {
    return "|PDF Version: " + version + "|Fast Web View: No" + rest;
}

// The lines of an information dictionary.
std::string information(const std::string& entries) {
    Pdf pdf;
    pdf.object(7, "(referred \\(to\\))").object(8, "7 0 R").object(9, "9 0 R").object(6, "[1 2]");
    const std::string text = description_of(
        pdf.object(5, "<<" + entries + ">>").finish("/Information 1 /Info 5 0 R").bytes);
    const std::string start = lines("1.4", "");
    EXPECT_TRUE(text.starts_with(start)) << text;
    return text.substr(start.size());
}

TEST(PdfInformation, ReadsTheHeader) {
    const std::string rest = std::string("\n") + std::string(60, ' ');
    for (const auto& [start, expected] : std::initializer_list<std::pair<std::string, std::string>>{
             {"", "!-39"},
             {"%PDE-1.4" + rest, "!-208"},
             {std::string(1020, ' ') + "%PDF-1.4" + rest, "!-208"},
             {"%PDF-1.4" + std::string(1100, ' ') + rest, "!-208"},
             {"junk %PDF-1.4 and more" + rest, lines("1.4", further)},
             {"%PDF-\xE9\x80\r" + rest, lines("\u00e9\u2022", further)}})
        EXPECT_EQ(description_of(start), expected);
}

TEST(PdfInformation, ReadsValuesOfAllKinds) {
    for (const auto& row : test::table("pdf_values.txt", 2))
        EXPECT_EQ(information(test::bytes_of_text(row[0])), row[1]) << row[0];
    // No dictionary at all.
    EXPECT_EQ(description_of(Pdf().object(1, "(x)").finish("/Info 1 0 R").bytes), lines("1.4", ""));
}

std::string object_of(const std::string& bytes) {
    const auto file = files::memory_file(bytes);
    auto reader = *files::BufferedReader::over(*file);
    JsonWriter json;
    const Result<void> done = describe_pdf(reader, json);
    return done ? json.take() : "!" + std::to_string(number(done.error()));
}

TEST(PdfInformation, IsOneObjectWithEachNameOnce) {
    EXPECT_EQ(object_of("no PDF"), "!-208");
    const std::string entries =
        "/Title (a: \"b\"\\rC: d) /Title (second) /CreationDate (D:20220801123456Z)"
        "/Number#20of#20pages (Yes) /Empty ()";
    EXPECT_EQ(object_of(Pdf()
                            .object(5, "<<" + entries + ">>")
                            .object(6, "<< /Type /Pages /Count 12 >>")
                            .finish("/Info 5 0 R")
                            .bytes),
              R"({"PDFVersion":"1.4","FastWebView":false,"NumberOfPages":12,"Information":)"
              R"({"Title":"a: \"b\"\rC: d","CreationDate":"2022-08-01T12:34:56",)"
              R"("Number of pages":"Yes","Empty":""}})");
    EXPECT_EQ(
        object_of(Pdf().object(5, "<</Title (x)>>").finish("/Info 5 0 R /Encrypt 6 0 R").bytes)
            .find("\"Encrypted\""),
        std::string::npos); // what can be read is told
    const std::string unreadable = object_of(
        Pdf().object(5, "<</Title (\x01\x02)>>").finish("/Info 5 0 R /Encrypt 6 0 R").bytes);
    EXPECT_NE(unreadable.find(R"("Encrypted":true)"), std::string::npos) << unreadable;
    EXPECT_EQ(unreadable.find("Information"), std::string::npos) << unreadable;
}

TEST(PdfInformation, FollowsUpdates) {
    const auto base = [] {
        return Pdf().object(1, "<</A(old)>>").finish("/Info 1 0 R");
    };
    const std::string prev = " /Prev " + std::to_string(base().table);
    const std::string old = lines("1.4", "|A: old");
    const std::string far(2000, ' ');
    const struct {
        Pdf pdf;
        std::string expected;
    } cases[] = {
        {base().object(1, "<</A(new)>>").finish("/Info 1 0 R" + prev), lines("1.4", "|A: new")},
        {base().object(2, "(x)").finish("/Info 1 0 R" + prev), old},
        {base().object(2, "(x)").finish("/Root 2 0 R"), old},
        {base().object(2, "(x)").finish("/Info 3 0 R"), old},
        {base().object(2, far).finish("/Info 1 0 R" + prev), old},
        {base().object(2, far).finish("/Info 1 0 R"), lines("1.4", further)},
        {base().object(2, far).finish("/Root 2 0 R"), lines("1.4", "")},
        {base().object(2, far).finish("/Encrypt 2 0 R"), lines("1.4", "|Encrypted: Yes")},
        {base().finish("/Encrypt 2 0 R"), old}, // a dictionary that is not encrypted itself
        {Pdf().object(1, "<</A(\x01\x9F)>>").finish("/Info 1 0 R /Encrypt 2 0 R"),
         lines("1.4", "|Encrypted: Yes")},
        {Pdf().object(1, "<</A(x)>>").finish("/Info 1 1 R"), lines("1.4", "!-208")},
        {Pdf().object(1, "<</A(x)>>").finish("/Info 1 0 R /Prev 9"), lines("1.4", "|A: x")},
        {Pdf().finish("/Info 1 0 R /Prev 9"), lines("1.4", further)},
        {Pdf().finish("/Info 1 0"), lines("1.4", "")},
    };
    for (const auto& each : cases)
        EXPECT_EQ(description_of(each.pdf.bytes), each.expected) << &each - cases;
}

// Objects of updates by their numbers, oldest first. No trailer but the last is near the file's
// end.
std::string updated(const std::vector<std::map<int, std::string>>& updates,
                    const std::string& space = std::string(2000, ' ')) {
    Pdf pdf;
    for (const auto& objects : updates) {
        const std::string prev = pdf.table == 0 ? "" : " /Prev " + std::to_string(pdf.table);
        for (const auto& [number, body] : objects)
            pdf.object(number, body);
        pdf.object(2, space).finish("/Info 1 0 R" + prev);
    }
    return pdf.bytes;
}

TEST(PdfInformation, FollowsReferencesThroughAllTables) {
    const std::map<int, std::string> base{{1, "<</A 7 0 R/B 8 0 R>>"}, {7, "(a)"}, {8, "(b)"}};
    const std::map<int, std::string> nothing;
    std::map<int, std::string> many{{7, "(many)"}}; // a table longer than what is read at once
    for (int number = 20; number < 200; ++number)
        many[number] = "null";
    const std::pair<std::vector<std::map<int, std::string>>, std::string> cases[] = {
        {{base, nothing, nothing}, "|A: a|B: b"},
        {{base, {{7, "(new)"}}, nothing}, "|A: new|B: b"},
        {{base, {{7, "(new)"}}, nothing, nothing}, "|A: new|B: b"},
        {{base, {{7, "(new)"}}, {{7, "(newer)"}}, nothing}, "|A: newer|B: b"},
        {{base, {{8, "7 0 R"}}, {{7, "(new)"}}, nothing}, "|A: new|B: new"},
        {{base, nothing, nothing, {{1, "<</B 8 0 R/A(x)>>"}}}, "|B: b|A: x"},
        {{base, many, nothing, {{8, "9 0 R"}}}, "|A: many|B: "},
        {{base, many, nothing, nothing}, "|A: many|B: b"},
        {{{{8, "(b)"}}, {{1, "<</B 8 0 R>>"}}, nothing, nothing}, "|B: b"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(description_of(updated(each.first)), lines("1.4", each.second)) << &each - cases;

    // Tables that lead to each other, or nowhere.
    std::string loop = updated({base, nothing, {{1, "<</A 7 0 R/B 9 0 R>>"}}});
    std::string to_newest = "<< /Prev " + std::to_string(loop.rfind("xref\n0 1"));
    to_newest.resize(14, ' ');
    loop.replace(loop.find("<< /Info 1 0 R"), to_newest.size(), to_newest);
    EXPECT_EQ(description_of(loop), lines("1.4", "|A: a|B: "));
    const std::string lost = updated({{{1, "<</A 7 0 R>>"}, {7, "(a)"}}, nothing});
    EXPECT_EQ(description_of(std::string(lost).replace(lost.find("xref\n"), 4, "gone")),
              lines("1.4", further));

    // More updates than anybody makes.
    std::vector<std::map<int, std::string>> updates{base};
    updates.resize(900);
    EXPECT_EQ(description_of(updated(updates, "")), lines("1.4", "|A: a|B: b"));
    updates.resize(1500);
    updates[1400] = {{1, "<</A 7 0 R/B(b)>>"}};
    EXPECT_EQ(description_of(updated(updates, "")), lines("1.4", "|A: |B: b"));
}

TEST(PdfInformation, SaysWhatIsWrongWithTables) {
    const std::string corrupt = lines("1.4", std::string(further) + " (PDF may be corrupt)");
    const std::string missing = lines("1.4", further);
    const std::string objects = "%PDF-1.4\n1 0 obj <</A(x)>> endobj\n";
    const auto with_table = [&](const std::string& table) {
        return objects + table + "trailer <</Info 1 0 R>> startxref " +
               std::to_string(objects.size()) + " %%EOF";
    };
    const std::string entry = "0000000009 00000 n \n";
    const std::pair<std::string, std::string> cases[] = {
        {with_table("xref\r\n1 1\r\n" + entry), lines("1.4", "|A: x")},
        {with_table("  xref 0 1 \n" + entry + "1 1\n" + entry), lines("1.4", "|A: x")},
        {with_table("xref\n1 x\n" + entry), corrupt},
        {with_table("xref\n1\n1\n" + entry), corrupt},
        {with_table("xref\n1 1\n000000000x 00000 n \n"), lines("1.4", "!-208")},
        {with_table("xref\n1 1\nx00000000x 00000 n \n"), corrupt},
        {with_table("xref\n0 99999999999\n" + entry), missing},
        {with_table("xref\n1 999999999999999999999\n" + entry), corrupt},
        {with_table("xref\n"), missing},
        {objects + "trailer <</Info 1 0 R>> startxref %%EOF          ", missing},
        {objects + "trailer <</Info 1 0 R>> startxref 7              ", missing},
        {objects + "xref trailer <</Info 1 0 R>> startxref 99999999999999 %%EOF ", missing},
    };
    for (const auto& [bytes, expected] : cases)
        EXPECT_EQ(description_of(bytes), expected) << bytes;

    const std::string in_streams =
        "|Version compatibility: contains cross-reference stream object introduced with PDF 1.5" +
        std::string(further) + " (PDF version not supported)";
    const std::string stream = "%PDF-1.5\n4 0 obj << /Type /XRef >> stream\nendobj /Count 3\n";
    EXPECT_EQ(description_of(stream + "startxref 9 %%EOF\n"), lines("1.5", in_streams));
    EXPECT_EQ(description_of(stream + "startxref 30 %%EOF\n"), lines("1.5", further));
}

TEST(PdfInformation, ReadsLinearizedFiles) {
    const struct {
        std::string dictionary;
        std::string table; // and what follows
        std::string expected;
    } cases[] = {
        {"<</Linearized 1/L 99/N 3/T 1>>", "trailer<</Info 4 0 R>>startxref 0 %%EOF /Count 9",
         "Yes|A: x|Number of pages: 3"},
        {"\r\n<< /Linearized 1 >>", "trailer<</Root 4 0 R>>startxref 0 /Info 4 0 R /Count 9",
         "Yes|Number of pages: 9"},
        {"<</Linearized 1/N 3>>", "trailer<</Info 4 0 R/Encrypt 2 0 R>>",
         "Yes|A: x|Number of pages: 3"},
        {"<</Linearized 1/N 3>>", "trailer<</Info 5 0 R/Encrypt 2 0 R>>",
         std::string("Yes|Encrypted: Yes") + further},
        {"<</Linearized 1/N 3>>", "no end", std::string("Yes") + further},
        {"(/Linearized) <</N 3>>", "trailer<</Info 4 0 R>>", std::string("No") + further},
        {"<</LinearizedBy (x)>>", "", std::string("No") + further},
    };
    for (const auto& each : cases) {
        Pdf pdf{"%PDF-1.4\r%\xE2\xE3\r\n"};
        pdf.object(3, each.dictionary).object(4, "<</A(x)>>");
        // The table has one subsection.
        pdf.offsets.erase(3);
        pdf.add_table();
        pdf.bytes.erase(pdf.table + 5, 24);
        EXPECT_EQ(description_of(pdf.bytes + each.table),
                  "|PDF Version: 1.4|Fast Web View: " + each.expected)
            << &each - cases;
    }
    const std::string stream =
        "%PDF-1.5\n1 0 obj <</Linearized 1/N 3>> endobj 2 0 obj <</Type/XRef>>";
    EXPECT_TRUE(description_of(stream + "startxref 0 %%EOF").ends_with("not supported)"));
}

TEST(PdfInformation, CountsPages) {
    for (const auto& [bytes, pages] : std::initializer_list<std::pair<std::string, std::string>>{
             {"/Count 3 /Count/Count\r\n12>> /Count 7", "12"},
             {"/Count 0 /Counts 5 /Count -5 /CCount 6 /Count x9 //Count2", "2"},
             {"/Count 4294967295 /Count 4294967296 /Count 99999999999999999999", "4294967295"},
             {"/Count" + std::string(9000, ' ') + "8/Count", "8"},
             {"/Count" + std::string(1999, '0') + "12", "1"}})
        EXPECT_EQ(description_of(Pdf().object(1, bytes).finish("").bytes),
                  lines("1.4", "|Number of pages: " + pages))
            << bytes.substr(0, 70);
    // Wherever a block of the search ends.
    for (std::size_t length = 8190; length-- > 8165;)
        EXPECT_EQ(description_of(Pdf{std::string("%PDF-1.4\n").append(length, 'x')}
                                     .object(1, "/Count 123")
                                     .finish("")
                                     .bytes),
                  lines("1.4", "|Number of pages: 123"));
}

// Whatever a file repeats, it is read a fixed number of times, and little of it is kept.
TEST(PdfInformation, ReadsLargeFilesOnceInSmallPieces) {
    constexpr std::uint64_t size = 50'000'000;
    constexpr std::uint64_t constant = 12'000'000;
    const auto start = [](const std::string& entries) {
        // The tail of the file is the pattern: the dictionary is found through a first-page table.
        std::string bytes = "%PDF-1.4\n1 0 obj <</Linearized 1>> endobj\nxref\n2 1\n0000000125 "
                            "00000 n \ntrailer<</Info 2 0 R/Prev 42>>startxref";
        bytes.resize(125, ' ');
        return bytes + "2 0 obj << /Loop 2 0 R " + entries;
    };
    const std::pair<std::string, std::string> cases[] = {
        {"%PDF-1.4\n", "trailer<<>>startxref 0%%EOF"},
        {"%PDF-1.4\n", "trailer<</Info 1 0 R/Prev 9>>startxref 9%%EOF xref 1 1\n0000000000"},
        {"%PDF-1.4\n", "/Count 1 "},
        {"%PDF-1.4\n", "/"},
        {start("/A (x"), "long "},
        {start("/A <"), "FEFF"},
        {start(""), "/A"},
        {start(""), "/A 2 0 R "},
        {start("/A "), "["},
        {start("/A "), " "},
        {start("/"), "A"},
    };
    for (const auto& [bytes, pattern] : cases) {
        EndlessFile file(bytes, pattern, size);
        const std::string text = description_of(file);
        EXPECT_TRUE(text.starts_with("|PDF Version: 1.4|Fast Web View: "));
        EXPECT_EQ(text.find('!'), std::string::npos) << text.substr(0, 200);
        EXPECT_LE(text.size(), 33'000u) << pattern;
        EXPECT_LE(file.bytes_read(), size + constant) << pattern;
        EXPECT_LE(file.longest_read(), 8192u);
    }
    // A long value is cut, and others follow; so does the number of pages, whatever is left out.
    const auto with_entries = [](const std::string& entries) {
        return description_of(Pdf()
                                  .object(1, "<<" + entries + ">>")
                                  .object(2, "/Count 3")
                                  .finish("/Info 1 0 R")
                                  .bytes);
    };
    const std::string value = '(' + std::string(40'000, 'x') + ')';
    EXPECT_TRUE(with_entries("/A" + value + "/B" + value + "/C(c)")
                    .ends_with("xx\u2026|C: c|Number of pages: 3"));
    EXPECT_TRUE(with_entries("/A" + value + "/B(b)/C(" + value + value + value + value + value +
                             value + value)
                    .ends_with("xx\u2026|Number of pages: 3" + std::string(further)));
}

// A call gives the description behind what else it asks for.
TEST(PdfInformation, IsPartOfTheMetadata) {
    FakeSystem files;
    const std::string packet = "<?xpacket begin=''?><?xpacket end='r'?>";
    files.add(u"a.pdf", (Pdf().object(1, packet + std::string(9000, ' ')).finish("").bytes));
    const auto result = [&](const std::u16string& switches, const std::u16string& path) {
        FakeCall call({switches, path});
        const Result<void> done = metadata::get_metadata(call, files);
        return done ? utf8_from_utf16(*call.result()) : std::to_string(number(done.error()));
    };
    const std::string description = "PDF Version: 1.4\rFast Web View: No";
    EXPECT_EQ(result(u"-GetPDFDescription", u"a.pdf"), description);
    EXPECT_EQ(result(u"-GetPDFDescription GetXMP", u"a.pdf"), packet + '\r' + description);
    EXPECT_EQ(result(u"-GetPDFDescription -GetImageDescription", u"a.pdf"), description);
    // Every operation on the file may fail.
    files.fail(0, ErrorCode::Ok);
    result(u"-GetPDFDescription", u"a.pdf");
    const int operations = files.operations();
    EXPECT_GE(operations, 6);
    for (int operation = 1; operation <= operations; ++operation) {
        files.fail(operation, ErrorCode::DiskError);
        EXPECT_EQ(result(u"-GetPDFDescription", u"a.pdf"), "-80") << operation;
    }
}

// Real files: sound ones, cut off, and with bytes changed. The size of the buffer never matters.
TEST(PdfInformation, SurvivesRealFilesAndWhatIsLeftOfThem) {
    const auto files = test::real_files({"pdf"});
    if (files.empty())
        GTEST_SKIP() << test::no_real_files;
    std::minstd_rand random(4290);
    for (const auto& path : files) {
        std::string bytes = test::bytes_of(path);
        EXPECT_TRUE(description_of(bytes).starts_with("|PDF Version: 1.")) << path;
        if (bytes.size() > 100'000) // the ends are what counts
            bytes.erase(5000, bytes.size() - 100'000);
        for (std::size_t part = 0; part < 50; ++part)
            description_of(bytes.substr(0, bytes.size() * part / 50));
        for (int round = 0; round < 50; ++round) {
            std::string changed = bytes;
            for (int change = 0; change < 10; ++change) {
                const std::size_t at = random() % std::min<std::size_t>(changed.size(), 2000);
                changed[change % 2 == 0 ? at : changed.size() - 1 - at] =
                    static_cast<char>(random());
            }
            const auto file = files::memory_file(changed);
            EXPECT_EQ(description_of(*file), description_of(*file, 7));
        }
    }
    EXPECT_GT(files.size(), 20u);
}

} // namespace
} // namespace vell::documents
