#include "src/documents/plain_text.h"

#include "src/base/utf8_stream.h"
#include "src/files/contents/buffered_reader.h"
#include "src/files/contents/contents.h"
#include "src/files/paths/path_parts.h"
#include "src/formats/recognition.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vell::documents {
namespace {

constexpr std::u16string_view page_separator = u"\r<---------->\r";

Result<std::unique_ptr<files::File>> open_pdf(System& system, const files::NativePath& path) {
    auto file = system.files().open_shared(path);
    if (!file && number(file.error()) >= 0) // a number that tells something else of a document
        return Failure{ErrorCode::PdfCannotOpen};
    return file;
}

// What reads the pages, each with a form feed behind it.
using Reading = std::function<Result<void>(const params::ByteSink&, std::vector<std::string>&)>;

Result<void> give_text(params::Call& call, const Reading& read) {
    Utf8Stream text;
    std::uint64_t bytes_so_far = 0;
    const params::ByteSink sink = [&](std::string_view bytes) -> Result<void> {
        // A character of UTF-16 comes from three bytes at most.
        bytes_so_far += bytes.size();
        if (bytes_so_far > std::uint64_t{3} * longest_plain_text)
            return Failure{ErrorCode::ResourceTooLarge};
        text.append(bytes);
        return {};
    };
    std::vector<std::string> notes;
    const Result<void> outcome = read(sink, notes);
    for (const std::string& note : notes)
        call.debug_note(note);
    VELL_TRY(outcome);
    std::u16string& units = text.finish();
    VELL_TRY(separate_pages(units));
    call.set_text(units);
    return {};
}

Result<void> read_file(System& system, files::File& file, const params::ByteSink& sink,
                       std::vector<std::string>& notes) {
    constexpr std::size_t buffer_size = 16 * 1024;
    auto bytes = VELL_TRY(files::BufferedReader::over(file, buffer_size));
    return system.read_pdf_text(bytes, sink, notes);
}

// A container need not have a name: what is in it tells.
Result<void> get_container_text(params::Call& call, System& system) {
    const auto bytes = VELL_TRY(call.open_container(1));
    std::array<char, formats::recognizable_size> start{};
    const std::size_t count = VELL_TRY(bytes->read_at(0, start));
    if (formats::format_of({start.data(), count}) != formats::Format::Pdf) {
        call.set_text(u"");
        return {};
    }
    return give_text(call, [&](const params::ByteSink& sink, std::vector<std::string>& notes) {
        return system.read_pdf_text(*bytes, sink, notes);
    });
}

} // namespace

Result<void> get_as_plain_text(params::Call& call, const PdfTextReader& read) {
    const params::NativePath path = VELL_TRY(call.path(1));
    if (!files::has_extension(path.wide, u"pdf")) {
        call.set_text(u"");
        return {};
    }
    return give_text(call, [&](const params::ByteSink& sink, std::vector<std::string>& notes) {
        return read(path, sink, notes);
    });
}

Result<void> get_as_plain_text(params::Call& call, System& system) {
    if (call.is_container(1))
        return get_container_text(call, system);
    return get_as_plain_text(call,
                             [&system](const files::NativePath& path, const params::ByteSink& sink,
                                       std::vector<std::string>& notes) -> Result<void> {
                                 const auto file = VELL_TRY(open_pdf(system, path));
                                 return read_file(system, *file, sink, notes);
                             });
}

Result<void> get_contents(params::Call& call, System& system) {
    if (call.switches().has("-ExperimentalPDFToPlainText"))
        return get_as_plain_text(call, system);
    return files::get_contents(call, system);
}

Result<void> separate_pages(std::u16string& text, std::size_t longest) {
    if (text.ends_with(u'\f'))
        text.pop_back();
    const auto pages = static_cast<std::size_t>(std::count(text.begin(), text.end(), u'\f'));
    const std::size_t size = text.size();
    if (size > longest || pages > (longest - size) / (page_separator.size() - 1))
        return Failure{ErrorCode::ResourceTooLarge};
    // From the end on, so that the text moves within its own memory.
    text.resize(size + pages * (page_separator.size() - 1));
    auto to = text.end();
    for (auto from = text.begin() + static_cast<std::ptrdiff_t>(size); from != text.begin();) {
        const char16_t unit = *--from;
        if (unit == u'\f')
            to = std::copy_backward(page_separator.begin(), page_separator.end(), to);
        else
            *--to = unit == u'\n' ? u'\r' : unit;
    }
    return {};
}

} // namespace vell::documents
