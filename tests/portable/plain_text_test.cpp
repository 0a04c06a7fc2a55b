// Text of PDF files: what becomes of a reader's bytes, and the data that the reader needs.
#include "src/archive/zip_writer.h"
#include "src/documents/encoding_data.h"
#include "src/documents/plain_text.h"
#include "tests/portable/answer_of.h"

#include <gtest/gtest.h>

namespace vell::documents {
namespace {

using test::FakeCall;
using test::FakeSystem;
using test::native;

// The answer for a file that reads as these bytes, whatever the pieces.
std::string plain_text(std::vector<std::u16string> parameters, std::string_view bytes,
                       std::size_t piece_size, Result<void> outcome = {}) {
    FakeCall call(std::move(parameters));
    const auto result =
        get_as_plain_text(call,
                          [&](const files::NativePath&, const params::ByteSink& sink,
                              std::vector<std::string>& notes) -> Result<void> {
                              notes.push_back("a note");
                              for (std::size_t at = 0; at < bytes.size(); at += piece_size)
                                  VELL_TRY(sink(bytes.substr(at, piece_size)));
                              return outcome;
                          });
    EXPECT_TRUE(call.notes().empty() || call.notes() == std::vector<std::string>{"a note"});
    return answer_of(call, result);
}

TEST(PlainText, SeparatesPagesAndLines) {
    const struct {
        std::string_view bytes;
        std::string_view text;
    } cases[] = {
        {"\f", ""},
        {"one\n\ftwo\f\fthree\n\f", "one\r\r<---------->\rtwo\r<---------->\r"
                                    "\r<---------->\rthree\r"},
        {"no form feed at the end\r\n", "no form feed at the end\r\r"},
        {"a\xED\xA0\x80\xFF z\xF0\x9F\x98\x80\f\xE2\x82", "a<INVALID UTF8> z\xF0\x9F\x98\x80"
                                                          "\r<---------->\r<INVALID UTF8>"},
    };
    for (const auto& [bytes, text] : cases)
        for (const std::size_t piece_size : {1, 3, 100})
            EXPECT_EQ(plain_text({u"", u"C:\\a.pDf"}, bytes, piece_size), text) << bytes;
}

TEST(PlainText, ReadsContainersThatHoldPdfFiles) {
    class SystemWithPdf : public FakeSystem {
      public:
        Result<void> read_pdf_text(ByteSource& bytes, const params::ByteSink& sink,
                                   std::vector<std::string>&) override {
            return sink(std::to_string(bytes.size()));
        }
    };
    for (const auto& [bytes, text] : {std::pair("%PDF-1.4 ", u"9"), {"no PDF at all", u""}}) {
        SystemWithPdf system;
        FakeCall call({u"", u""});
        call.set_container_parameter(1, bytes);
        EXPECT_TRUE(get_as_plain_text(call, system));
        EXPECT_EQ(call.result(), text);
    }
}

TEST(PlainText, TellsWhatKeepsItFromATextOfItsOwn) {
    const Result<void> refused = Failure{ErrorCode::PdfCopyForbidden};
    EXPECT_EQ(plain_text({u"", u"C:\\a.pdf"}, "part", 9, refused), "$$8");
    EXPECT_EQ(plain_text({u"", u"C:\\a.txt"}, "part", 9, refused), "");
    EXPECT_EQ(plain_text({u"", u"C:\\pdf"}, "part", 9, refused), "");
    EXPECT_EQ(plain_text({u""}, "", 1), "$$-50");
    EXPECT_EQ(plain_text({u"", u""}, "", 1), "$$-50");
    std::u16string text = u"a\fb";
    EXPECT_TRUE(separate_pages(text, 16));
    text = u"a\fb";
    EXPECT_EQ(separate_pages(text, 15).error(), ErrorCode::ResourceTooLarge);
}

std::string archive_of_two_files() {
    FakeSystem source;
    source.add(u"C:\\long", std::string(100'000, 'a'));
    source.add(u"C:\\empty", "");
    archive::ZipWriter writer(source.open_emptied(native(u"C:\\zip")).value());
    EXPECT_TRUE(writer.add_file(source, "f/g/long", native(u"C:\\long"), {}));
    EXPECT_TRUE(writer.add_file(source, "empty", native(u"C:\\empty"), {}));
    EXPECT_TRUE(writer.finish());
    return source.at(u"C:\\zip");
}

TEST(EncodingData, IsWholeWhateverFailedOrWentMissingBefore) {
    const std::string archive = archive_of_two_files();
    const auto unpack = [&](FakeSystem& system) {
        return unpack_missing(system, archive, native(u"C:\\top\\data"));
    };
    const auto is_whole = [](FakeSystem& system) {
        return system.contents().size() == 2 && system.open_files() == 0 &&
               system.at(u"C:\\top\\data\\f\\g\\long") == std::string(100'000, 'a') &&
               system.at(u"C:\\top\\data\\empty").empty();
    };
    FakeSystem first;
    ASSERT_TRUE(unpack(first));
    EXPECT_TRUE(is_whole(first));
    first.add(u"C:\\top\\data\\f\\g\\long", "cut off"); // what a full disk left
    ASSERT_TRUE(unpack(first));
    EXPECT_TRUE(is_whole(first));
    std::string changed(100'000, 'a');
    changed[50'000] = 'b';
    first.add(u"C:\\top\\data\\f\\g\\long", changed);
    ASSERT_TRUE(unpack(first));
    EXPECT_TRUE(is_whole(first));

    for (int operation = 1;; ++operation) {
        FakeSystem system;
        system.fail(operation, ErrorCode::Busy);
        const bool done = static_cast<bool>(unpack(system));
        if (system.operations() < operation)
            break;
        EXPECT_EQ(done, is_whole(system)) << operation;
        const std::string file = system.at(u"C:\\top\\data\\f\\g\\long");
        EXPECT_TRUE(file == "<none>" || file.size() == 100'000) << operation;
        EXPECT_TRUE(unpack(system)) << operation;
        EXPECT_TRUE(is_whole(system)) << operation;
    }
    FakeSystem full;
    full.die(1, ErrorCode::Busy);
    EXPECT_EQ(unpack(full).error(), ErrorCode::Busy);
}

} // namespace
} // namespace vell::documents
