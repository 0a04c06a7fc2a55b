// Texts of PDF files through Poppler: sound, strange and hostile ones.
#include "src/base/utf8.h"
#include "src/files/contents/buffered_reader.h"
#include "src/windows/documents/encoding_data.h"
#include "src/windows/documents/poppler_text.h"
#include "src/windows/parts.h"
#include "src/windows/process/large_stack.h"
#include "src/windows/storage/private_folder.h"
#include "tests/windows/pdf_documents.h"
#include "tests/windows/plugin_fixture.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <thread>

#include <psapi.h>

namespace vell::test {
namespace {

// A font without its own outlines or a mapping to Unicode.
std::string japanese_font(const std::string& encoding) {
    return "<< /Type /Font /Subtype /Type0 /BaseFont /Ryumin-Light /Encoding " + encoding +
           " /DescendantFonts [<< /Type /Font /Subtype /CIDFontType0 /BaseFont /Ryumin-Light "
           "/CIDSystemInfo << /Registry (Adobe) /Ordering (Japan1) /Supplement 2 >> >>] >>";
}
std::string japanese(const std::string& encoding, const std::string& codes) {
    return page("BT /F 12 Tf 100 700 Td <" + codes + "> Tj ET", {}, "", "",
                japanese_font("/" + encoding));
}

constexpr std::u16string_view nihongo = u"\u65E5\u672C\u8A9E";

// A page with a field of several lines whose look has to be made.
std::string field(const std::string& value) {
    return pdf({"<< /Type /Catalog /Pages 2 0 R /AcroForm << /NeedAppearances true /Fields [4 0 R] "
                "/DR << /Font << /F 5 0 R >> >> >> >>",
                "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
                "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 99 99] /Annots [4 0 R] >>",
                "<< /Type /Annot /Subtype /Widget /FT /Tx /Ff 4096 /T (a) /Rect [0 0 90 90] /F 4 "
                "/DA (/F 9 Tf) /V " +
                    value + " >>",
                "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"});
}

class PlainText : public PluginWithFolder {
  protected:
    std::u16string text_of(const std::u16string& path) {
        return call(u"VlFile_GetAsPlainText", {u"", Value(path)});
    }
    std::u16string text(const std::string& bytes) {
        return text_of(folder.file(L"made.pdf", bytes));
    }
};

TEST_F(PlainText, IsThatOfTheDocument) {
    EXPECT_EQ(text(page(some_text)), u"Some text\r\r");
    EXPECT_EQ(text(japanese("90ms-RKSJ-H", "93FA967B8CEA")), std::u16string(nihongo) + u"\r\r");
    EXPECT_EQ(text(japanese("UniJIS-UCS2-H", "65E5672C8A9E")), std::u16string(nihongo) + u"\r\r");
    const std::u16string file = folder.file(L"made.pdf", page(some_text));
    EXPECT_EQ(call(u"VlFile_GetContents", {u"-ExperimentalPDFToPlainText", Value(file)}),
              u"Some text\r\r");
}

// What is kept of a font for later pages must be that of the font, whatever they call it.
TEST_F(PlainText, KeepsFontsApartThatSwapNames) {
    const auto page_with = [](const std::string& fonts) {
        return "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 600 800] /Contents 5 0 R "
               "/Resources << /Font << " +
               fonts + " >> >> >>";
    };
    EXPECT_EQ(text(pdf({"<< /Type /Catalog /Pages 2 0 R >>",
                        "<< /Type /Pages /Kids [3 0 R 4 0 R 3 0 R] /Count 3 >>",
                        page_with("/F 6 0 R /G 7 0 R"), page_with("/G 6 0 R /F 7 0 R"),
                        stream("BT /F 12 Tf 100 700 Td <65E5> Tj 0 -50 Td /G 12 Tf <65E5> Tj ET"),
                        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding "
                        "/WinAnsiEncoding >>",
                        japanese_font("/UniJIS-UCS2-H")})),
              u"e\u00E5\r\r\u65E5\r\r\r<---------->\r\u65E5\r\re\u00E5\r\r\r<---------->\r"
              u"e\u00E5\r\r\u65E5\r\r");
}

TEST_F(PlainText, ComesFromEveryPathThatWindowsOpens) {
    const std::wstring name = L"gr\u00FC\u00DFe \u65E5 \xD83D\xDE00.PDF";
    EXPECT_EQ(text_of(folder.file(name, page(some_text))), u"Some text\r\r");
    std::u16string path = folder.file(deep_name + name, page(some_text));
    EXPECT_EQ(text_of(path), u"Some text\r\r");
    EXPECT_EQ(text_of(u"\\\\?\\" + path), u"Some text\r\r");
    std::ranges::replace(path, u'\\', u'/');
    EXPECT_EQ(text_of(path), u"Some text\r\r");
    EXPECT_EQ(text_of(u"filewin:/" + path), u"Some text\r\r");
}

TEST_F(PlainText, TellsWhyThereIsNone) {
    EXPECT_EQ(text_of(path(L"none.pdf")), u"$$-43");
    EXPECT_EQ(text_of(path(L"none\\none.pdf")), u"$$-120");
    EXPECT_EQ(text_of(folder.subfolder(L"folder.pdf")), u"$$-47");
    const std::u16string file = folder.file(L"busy.pdf", page(some_text));
    {
        const UniqueFile own = open_file(file, GENERIC_READ);
        EXPECT_EQ(text_of(file), u"$$-47");
    }
    EXPECT_EQ(text(""), u"$$3");
    EXPECT_EQ(text("no document"), u"$$3");
    EXPECT_EQ(text("%PDF-1.7\n1 0 obj << /Type /Catalog >> endobj trailer << "
                   "/Root 1 0 R >>"),
              u"$$2");
    EXPECT_EQ(text(pdf({"<< /Type /Catalog /Pages 2 0 R >>", "<< /Kids [] /Count 0 >>"},
                       " /ID [(a)(b)] "
                       "/Encrypt << /Filter /Standard /V 1 /R 2 /P -4 /O <" +
                           repeated("4f", 32) + "> /U <" + repeated("55", 32) + "> >>")),
              u"$$4");
    EXPECT_EQ(text_of(folder.file(L"a.txt", page(some_text))), u"");
}

// Each would take ages, or the host's stack, if everything that it asks for were done.
TEST_F(PlainText, EndsForHostileDocuments) {
    const std::string catalogue = "<< /Type /Catalog /Pages 2 0 R >>",
                      x = "/XObject << /X 5 0 R >>";
    const std::string form = " /Subtype /Form /BBox [0 0 600 800] /Resources << /XObject << /X ";
    std::vector<std::string> million{catalogue, "<< /Kids [3 0 R] /Count 1 >>",
                                     "<< /Type /Page >>"};
    million.resize(1'000'000, "null");
    std::vector<std::string> forms, fields, functions; // each twice below the one before
    for (int i = 6; i < 5'000; ++i) {
        const std::string next = std::to_string(i) + " 0 R ", both = "[" + next + next + "] >>";
        forms.push_back(stream("/X Do /X Do", form + next + ">> >>"));
        fields.push_back("<< /T (a) /Parent " + std::to_string(i - 2) + " 0 R /Kids " + both);
        functions.push_back(
            "<< /FunctionType 3 /Domain [0 1] /Bounds [0.5] /Encode [0 1 0 1] /Functions " + both);
    }
    std::string fonts;
    for (int i = 0; i < 200; ++i)
        fonts += "/F" + std::to_string(i) + " 6 0 R ";
    const std::vector<std::string> form_with_fonts{
        stream("", " /Subtype /Form /BBox [0 0 9 9] /Resources << /Font << " + fonts + ">> >>"),
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"};
    const auto drawn = [&](const std::string& content, const std::vector<std::string>& more = {},
                           const std::string& resources = "") {
        std::vector<std::string> objects{
            catalogue, "<< /Kids [3 0 R] /Count 1 >>",
            "<< /Type /Page /MediaBox [0 0 600 800] /Contents 4 0 R /Resources << /Font << /F "
            "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> >> " +
                resources + " >> >>",
            small_stream(content)};
        objects.insert(objects.end(), more.begin(), more.end());
        return pdf(objects);
    };
    const std::string tint = "/ColorSpace << /C [/Separation /A /DeviceGray 5 0 R] >>";
    const struct {
        const char* what;
        std::string bytes;
        std::u16string_view text = u"Some text\r\r";
    } cases[] = {
        {"pages in a loop",
         pdf({catalogue, "<< /Kids [2 0 R 3 0 R] /Count 2 >>", "<< /Kids [2 0 R] /Count 1 >>"}),
         u""},
        {"pages beyond all objects", pdf({catalogue, "<< /Kids [] /Count 2000000000 >>"}), u"$$2"},
        {"a million objects", pdf(million), u""},
        {"arrays", page("/X Do " + some_text, {repeated("[", 1'000'000)}, x)},
        {"filters",
         page("/X Do " + some_text,
              {stream("", " /Subtype /Form /Filter [" + repeated("/AHx ", 200'000) + "]")}, x)},
        {"forms", page("/X Do " + some_text, forms, x), u"$$99"},
        {"CMaps",
         page(some_text, {stream("", " /Type /CMap /UseCMap 5 0 R")}, "", "",
              japanese_font("5 0 R")),
         u""},
        {"PostScript",
         page("/C cs " + some_text,
              {stream(repeated("{", 1'000'000), " /FunctionType 4 /Domain [0 1] /Range [0 1]")},
              tint)},
        {"functions", page("/C cs " + some_text, functions, tint)},
        {"form fields", page(some_text, fields, "", "/AcroForm << /Fields [5 0 R] >>")},
        {"half a character", field("<FEFF0042 62>"), u""},
        {"a line that is no more than a mark", field("<FEFF0041000AFEFF>"), u"A\r\r"},
        {"shadings",
         drawn(
             repeated("/S sh ", 3'000) + some_text,
             {"<< /ShadingType 3 /ColorSpace /DeviceRGB /Coords [9 9 0 300 300 300] /Extend [true "
              "true] /Function << /FunctionType 2 /Domain [0 1] /C0 [0 0 0] /C1 [1 1 1] /N 1 >> "
              ">>"},
             "/Shading << /S 5 0 R >>")},
        {"words at one place",
         drawn("BT /F 12 Tf 1 0 0 1 100 700 Tm " +
               repeated("(a) Tj -9 0 Td (b) Tj 9 0 Td ", 32'000) + "ET"),
         u"$$99"},
        {"a picture for operators",
         pdf({catalogue, "<< /Kids [3 0 R] /Count 1 >>", "<< /Type /Page /Contents 4 0 R >>",
              stream(deflated(white_picture(32'000)), " /Filter [/FlateDecode /DCTDecode]")}),
         u"$$99"},
        {"a form with fonts", drawn(repeated("/X Do ", 20'000), form_with_fonts, x), u"$$99"},
        {"an array of millions", drawn("[" + repeated("0 ", 6'000'000) + "] " + some_text),
         u"$$99"},
        {"states that are kept", drawn(repeated("q ", 1'000'000) + some_text), u"$$99"},
        {"a CMap of all codes",
         page(some_text,
              {stream("begincmap 1 begincidrange <00000000> <ffffffff> 0 endcidrange endcmap",
                      " /Type /CMap")},
              "", "", japanese_font("5 0 R")),
         u"$$99"},
        {"blanks without end",
         pdf({catalogue, "<< /Kids [3 0 R] /Count 1 >>", "<< /Type /Page /Contents 4 0 R >>",
              "[" + repeated("5 0 R ", 200) + "]",
              stream(deflated(std::string(1 << 20, ' ')), " /Filter /FlateDecode")}),
         u"$$99"},
    };
    for (const auto& [what, bytes, expected] : cases)
        EXPECT_EQ(text(bytes), expected) << what;
    EXPECT_EQ(text(page(some_text)), u"Some text\r\r"); // the next one is read as ever
}

// The outcome and the text, without the host's objects.
std::string read(const std::u16string& path) {
    std::string text;
    std::vector<std::string> notes;
    const auto file = windows::file_system().open_shared({path, std::nullopt});
    auto source = files::BufferedReader::over(**file);
    windows::run_on_large_stack([&] {
        const auto outcome = windows::read_by_poppler(
            *source,
            [&](std::string_view bytes) {
                text += bytes;
                return Result<void>();
            },
            notes);
        if (!outcome)
            text = "$$" + std::to_string(number(outcome.error()));
    });
    return text;
}

// A document whose objects stand in an object stream, the catalog first: they are read once and
// copied from then on. The page's content is the object behind them.
std::string in_object_stream(const std::vector<std::string>& objects, const std::string& content) {
    std::string places, bodies, rows(9, '\0');
    const auto add_row = [&rows](char kind, std::size_t first, std::size_t second) {
        rows += kind;
        append_integer<std::uint32_t>(rows, static_cast<std::uint32_t>(first), ByteOrder::Big);
        append_integer<std::uint32_t>(rows, static_cast<std::uint32_t>(second), ByteOrder::Big);
    };
    const std::size_t count = objects.size();
    for (std::size_t i = 0; i < count; ++i) {
        places += std::to_string(i + 1) + " " + std::to_string(bodies.size()) + " ";
        bodies += objects[i] + " ";
        add_row('\2', count + 2, i);
    }
    std::string file = "%PDF-1.7\n";
    const auto add = [&](std::size_t number, const std::string& object) {
        add_row('\1', file.size(), 0);
        file += std::to_string(number) + " 0 obj\n" + object + "\nendobj\n";
    };
    add(count + 1, small_stream(content));
    add(count + 2, small_stream(places + bodies, " /Type /ObjStm /N " + std::to_string(count) +
                                                     " /First " + std::to_string(places.size())));
    const std::string start = std::to_string(file.size());
    add_row('\1', file.size(), 0);
    file += std::to_string(count + 3) + " 0 obj\n" +
            small_stream(rows,
                         " /Type /XRef /Root 1 0 R /W [1 4 4] /Size " + std::to_string(count + 4)) +
            "\nendobj\nstartxref\n" + start + "\n%%EOF";
    return file;
}

// By how many bytes this process grows meanwhile.
template <typename Action>
std::size_t growth_during(Action action) {
    const auto used = [] {
        PROCESS_MEMORY_COUNTERS counters{};
        GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
        return counters.WorkingSetSize;
    };
    const std::size_t before = used();
    std::size_t most = before;
    std::jthread watcher([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            most = std::max(most, used());
            Sleep(5);
        }
    });
    action();
    watcher.request_stop();
    watcher.join();
    return most - before;
}

// One string or list of the file, which thousands of fonts or fields have.
TEST_F(PlainText, TakesLittleMemoryForWhatManyShare) {
    const std::string long_word(100'000, 'A');
    const auto with_fonts = [&](const std::string& font, const std::string& shared) {
        std::string fonts, shown;
        for (int i = 0; i < 5000; ++i) {
            fonts += "/F" + std::to_string(i) + " << /Type /Font " + font + " >> ";
            shown += "BT /F" + std::to_string(i) + " 9 Tf (a) Tj ET ";
        }
        return in_object_stream({"<< /Type /Catalog /Pages 2 0 R >>",
                                 "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
                                 "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 600 800] /Contents "
                                 "6 0 R /Resources << /Font 4 0 R >> >>",
                                 "<< " + fonts + " >>", shared},
                                shown);
    };
    const auto with_fields = [&](const std::string& field, const std::string& shared) {
        std::string references;
        std::vector<std::string> objects{"", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
                                         "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 9 9] >>",
                                         shared};
        for (int i = 0; i < 2000; ++i) {
            objects.push_back("<< /Type /Annot /Subtype /Widget /Rect [0 0 9 9] " + field + " >>");
            references += std::to_string(objects.size()) + " 0 R ";
        }
        objects[0] =
            "<< /Type /Catalog /Pages 2 0 R /AcroForm << /Fields [" + references + "] >> >>";
        return in_object_stream(objects, "");
    };
    const std::string documents[] = {
        with_fonts("/Subtype /TrueType /BaseFont 5 0 R", "/" + long_word),
        with_fonts("/Subtype /TrueType /BaseFont /A /Encoding << /Differences 5 0 R >>",
                   "[0 " + repeated("/" + std::string(120, 'g') + " ", 256) + "]"),
        with_fields("/FT /Tx /T 4 0 R /V 4 0 R", "(" + long_word + ")"),
        with_fields("/FT /Ch /T (a) /Opt 4 0 R", "[" + repeated("(a)", 50'000) + "]"),
    };
    for (const std::string& document : documents) {
        ASSERT_LT(document.size(), 1'000'000u);
        const std::size_t growth = growth_during([&] { text(document); });
        EXPECT_LT(growth, 200'000'000u) << &document - documents;
    }
}

TEST_F(PlainText, IsTheSameInEightThreads) {
    std::vector<std::u16string> paths;
    for (const auto& [name, bytes] : {std::pair(L"a.pdf", japanese("90ms-RKSJ-H", "93FA967B8CEA")),
                                      {L"b.pdf", japanese("UniJIS-UCS2-H", "65E5672C8A9E")},
                                      {L"c.pdf", page(some_text)}})
        paths.push_back(folder.file(name, bytes));
    std::array<wchar_t, 1000> corpus{};
    if (GetEnvironmentVariableW(L"VELL_CORPUS", corpus.data(), corpus.size()) > 0)
        for (const auto& item :
             std::filesystem::directory_iterator(L"Z:" + std::wstring(corpus.data()) + L"/pdf"))
            paths.push_back(item.path().u16string());
    std::vector<std::string> alone;
    for (const std::u16string& path : paths)
        alone.push_back(read(path));
    std::array<std::vector<std::string>, 8> together;
    in_threads(together.size(), [&](std::size_t i) {
        together[i].resize(paths.size());
        for (std::size_t j = 0; j < paths.size(); ++j) { // each begins elsewhere
            const std::size_t place = (i * paths.size() / together.size() + j) % paths.size();
            together[i][place] = read(paths[place]);
        }
    });
    for (const auto& texts : together)
        EXPECT_EQ(texts, alone);
}

std::vector<std::filesystem::path> files_in(const std::wstring& place) {
    std::vector<std::filesystem::path> found;
    for (const auto& item : std::filesystem::recursive_directory_iterator(place))
        if (item.is_regular_file())
            found.push_back(item.path());
    std::ranges::sort(found);
    return found;
}

TEST_F(PlainText, BringsItsEncodingDataAlong) {
    const std::wstring local = to_wide(folder.subfolder(L"\u5BB6 Local"));
    const std::wstring temporary = to_wide(folder.subfolder(L"Temp"));
    const auto provide = [&] {
        std::vector<std::string> notes;
        const windows::EncodingData data =
            windows::provide_encoding_data({local, temporary}, notes);
        EXPECT_EQ(notes, std::vector<std::string>());
        return data.folder;
    };
    std::array<std::string, 2> folders; // of two that unpack at once
    in_threads(folders.size(), [&](std::size_t i) { folders[i] = provide(); });
    EXPECT_EQ(folders[0], folders[1]);
    EXPECT_NE(folders[0].find("\\Vell File\\poppler-data-"), std::string::npos);
    const auto files = files_in(local);
    EXPECT_GT(files.size(), 200u);

    // What was lost or changed since is renewed.
    const std::string before = read_file(files[20]);
    std::string changed = before;
    changed[changed.size() / 2] ^= 1;
    std::ofstream(files[20], std::ios::binary) << changed;
    std::filesystem::resize_file(files[30], 10);
    std::filesystem::remove(files[40]);
    EXPECT_EQ(provide(), folders[0]);
    EXPECT_EQ(read_file(files[20]), before);
    EXPECT_GT(read_file(files[30]).size(), 10u);
    EXPECT_EQ(files_in(local), files);
    EXPECT_TRUE(files_in(temporary).empty());
}

// Where others may make folders, too, only a folder of one's own is taken.
TEST_F(PlainText, KeepsItsEncodingDataToItself) {
    const std::wstring no_folder = to_wide(folder.file(L"local", ""));
    const std::wstring temporary = to_wide(folder.subfolder(L"Temp"));
    const std::wstring own = temporary + L"\\Vell File " + *windows::user_identifier();
    std::vector<std::string> notes;
    std::string place;
    for (int i = 0; i < 2; ++i) {
        const auto data = windows::provide_encoding_data({no_folder, temporary}, notes);
        EXPECT_TRUE(data.guard);
        EXPECT_EQ(notes.size(), i + 1u); // of the first place
        EXPECT_FALSE(MoveFileW(own.c_str(), (own + L" gone").c_str()));
        EXPECT_TRUE(place.empty() || place == data.folder);
        place = data.folder;
    }
    EXPECT_NE(place.find("S-1-"), std::string::npos);
    EXPECT_GT(files_in(own).size(), 200u);

    // Somebody else's, as far as it can be told.
    const std::wstring taken = to_wide(folder.subfolder(L"Taken"));
    folder.file(L"Taken\\Vell File " + *windows::user_identifier(), "");
    notes.clear();
    const auto none = windows::provide_encoding_data({L"", taken}, notes);
    EXPECT_EQ(notes.size(), 1u);
    EXPECT_FALSE(none.guard);
    EXPECT_FALSE(std::filesystem::exists(to_wide(utf16_from_utf8(none.folder)) + L"\\cMap"));
}

} // namespace
} // namespace vell::test
