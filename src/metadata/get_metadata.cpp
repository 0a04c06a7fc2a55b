#include "src/metadata/get_metadata.h"

#include "src/base/json_writer.h"
#include "src/base/utf8.h"
#include "src/documents/pdf_information.h"
#include "src/files/contents/source.h"
#include "src/formats/recognition.h"
#include "src/formats/tiff/records.h"
#include "src/metadata/faults.h"
#include "src/metadata/icc/icc_profile.h"
#include "src/metadata/images/image_description.h"
#include "src/metadata/reading/container_metadata.h"
#include "src/metadata/reading/iptc_text.h"
#include "src/metadata/reading/jpeg_metadata.h"
#include "src/metadata/reading/photoshop_resources.h"
#include "src/metadata/reading/png_metadata.h"
#include "src/metadata/reading/tag_reader.h"
#include "src/metadata/reading/xmp.h"
#include "src/metadata/values/file_values.h"
#include "src/movies/movies.h"
#include "src/structure/file_structure.h"
#include "src/system/system.h"

namespace vell::metadata {
namespace {

using files::BufferedReader;
using params::Call;

enum class FileKind : std::uint8_t { Tiff, Png, Other };

Result<FileKind> kind_of(BufferedReader& file) {
    constexpr std::size_t first_read = 1000;
    file.seek(0);
    const std::string start = VELL_TRY(file.read_bytes(first_read));
    if (formats::begins_like_tiff(start))
        return FileKind::Tiff;
    return formats::format_of(start) == formats::Format::Png ? FileKind::Png : FileKind::Other;
}

bool wants_tags(const MetadataRequest& request) {
    return request.exif.want_exif || request.exif.want_gps;
}

Result<void> read_resources(BufferedReader& file, FileKind kind, const MetadataRequest& request,
                            MetadataText& text) {
    if (kind != FileKind::Tiff || !request.exif.want_iptc)
        return read_photoshop_resources(file, request, text);
    file.seek(0);
    const std::string block = VELL_TRY(find_tag(file, formats::tiff::tag::iptc_block));
    VELL_TRY(decode_iptc(block, request.detect_utf8, request.source, text, request.exif.readable));
    return {};
}

Result<void> read_tiff_profile(BufferedReader& file, const MetadataRequest& request,
                               MetadataText& text) {
    constexpr std::uint64_t longest_profile = 0x1000000; // the most that a JPEG has room for
    file.seek(0);
    const std::string profile =
        VELL_TRY(find_tag(file, formats::tiff::tag::icc_profile, longest_profile));
    return describe_icc_profile(profile, request, text);
}

// Whether the file has what was read of it.
Result<bool> is_there(const Result<void>& done) {
    if (!done && done.error() != ErrorCode::NothingFound)
        return Failure{done.error()};
    return done.has_value();
}

// A file that is asked for tags has answered with them. Otherwise it must have a packet or a
// profile, whichever is wanted; comments are a matter of JPEG files.
Result<void> read_tiff(BufferedReader& file, const MetadataRequest& request, MetadataText& text) {
    file.seek(0);
    VELL_TRY(read_tags(file, request.exif, request.source, text));
    bool has_answered = wants_tags(request);
    if (request.exif.want_xmp)
        has_answered |= VELL_TRY(is_there(read_tiff_xmp(file, request.source, text)));
    if (request.icc != IccSelector::None)
        has_answered |= VELL_TRY(is_there(read_tiff_profile(file, request, text)));
    return has_answered ? Result<void>() : Result<void>(Failure{ErrorCode::NothingFound});
}

Result<void> read_png(BufferedReader& file, const MetadataRequest& request, MetadataText& text) {
    if (request.text_chunks)
        return read_png_text(file, text);
    if (request.exif.want_xmp && !wants_tags(request))
        return read_png_xmp(file, request.source, text);
    return read_png_exif(file, request, text);
}

// A JPEG; what is none may still hold tags from its start on, or a packet anywhere.
Result<void> read_other(BufferedReader& file, const MetadataRequest& request, MetadataText& text) {
    Result<void> done = read_jpeg_segments(file, request, text);
    if (!done && done.error() == ErrorCode::NotAJpeg && wants_tags(request)) {
        file.seek(0);
        done = read_tags(file, request.exif, request.source, text);
    }
    if (done || !request.exif.want_xmp)
        return done;
    done = read_tiff_xmp(file, request.source, text);
    return done ? done : scan_for_xmp(file, request.source, text);
}

Result<void> read_by_kind(BufferedReader& file, FileKind kind, const MetadataRequest& request,
                          MetadataText& text) {
    switch (kind) {
    case FileKind::Tiff:
        return read_tiff(file, request, text);
    case FileKind::Png:
        return read_png(file, request, text);
    case FileKind::Other:
        break;
    }
    return read_other(file, request, text);
}

// What comes of looking for segments, tags and packets where there are none. One that is no TIFF
// file begins like one, too.
bool is_of_strange_container(ErrorCode code, FileKind kind) {
    if (kind == FileKind::Tiff)
        return code == ErrorCode::EndOfFile;
    return kind == FileKind::Other &&
           (code == ErrorCode::NotAJpeg || code == ErrorCode::ShortRead ||
            code == ErrorCode::NothingFound);
}

// What stands in a container of another kind. Where nothing is found there either, the code stays
// that of the search without it, which solutions know.
Result<void> read_segments(BufferedReader& file, FileKind kind, const MetadataRequest& request,
                           MetadataText& text) {
    const std::uint64_t before = text.size();
    const Result<void> done = read_by_kind(file, kind, request, text);
    if (done || !is_of_strange_container(done.error(), kind) || text.size() != before)
        return done;
    return read_container(file, request, text) ? Result<void>() : done;
}

// What comes first ends the text before it; at the start it ends nothing.
Result<void> append_movie(BufferedReader& file, const movies::MovieRequest& request,
                          MetadataText& text) {
    if (request.selector == movies::MovieSelector::Boxes)
        VELL_TRY(structure::append_boxes(file, {request.as_xml, request.verbose}, text));
    if (request.selector != movies::MovieSelector::Boxes || request.description)
        VELL_TRY(movies::read_movie(file, request, text));
    text.drop_leading_line_end();
    return {};
}
Result<void> append_pdf_description(BufferedReader& file, MetadataText& text) {
    std::string description;
    VELL_TRY(documents::describe_pdf(file, description));
    text.append(description, TextEncoding::Utf8);
    text.drop_leading_line_end();
    return {};
}

// What one question gives, or nothing where the file does not answer it.
Result<void> append_if_there(BufferedReader& file, const MetadataRequest& request,
                             MetadataText& text) {
    MetadataText answer;
    const Result<void> done = read_image_metadata(file, request, answer);
    if (!done)
        return is_of_contents(done.error()) ? Result<void>() : done;
    if (answer.empty())
        return {};
    if (!text.empty() && !answer.pieces().front().bytes.starts_with('\r'))
        text.append("\r");
    for (MetadataText::Piece& piece : answer.pieces())
        text.take(std::move(piece.bytes), piece.encoding);
    return {};
}

// The answers to the single questions, one after the other.
Result<void> read_everything(BufferedReader& file, const MetadataRequest& request,
                             MetadataText& text) {
    constexpr void (*questions[])(MetadataRequest&) = {
        [](MetadataRequest& one) { one.exif.want_iptc = true; },
        [](MetadataRequest& one) { one.exif.want_exif = true; },
        [](MetadataRequest& one) { one.exif.want_gps = true; },
        [](MetadataRequest& one) { one.exif.want_xmp = true; },
        [](MetadataRequest& one) { one.want_comment = true; },
        [](MetadataRequest& one) { one.want_image_url = true; },
        [](MetadataRequest& one) { one.icc = IccSelector::Description; },
        [](MetadataRequest& one) { one.text_chunks = one.exif.want_exif = true; },
        [](MetadataRequest& one) { one.image_description = true; },
    };
    MetadataRequest nothing = request;
    nothing.everything = nothing.want_comment = nothing.want_image_url = nothing.text_chunks =
        nothing.image_description = false;
    nothing.exif.want_iptc = nothing.exif.want_exif = nothing.exif.want_xmp =
        nothing.exif.want_gps = false;
    nothing.icc = IccSelector::None;
    const bool is_png = VELL_TRY(kind_of(file)) == FileKind::Png;
    for (const auto question : questions) {
        MetadataRequest one = nothing;
        question(one);
        if (one.text_chunks && !is_png)
            continue; // the switch asks other files for their tags
        VELL_TRY(append_if_there(file, one, text));
    }
    return text.empty() ? Result<void>(Failure{ErrorCode::NothingFound}) : Result<void>();
}

// Whatever is UTF-8 is read so, in place of the encoding of what declares none.
void recognise_utf8(TextEncoding source, MetadataText& text) {
    for (MetadataText::Piece& piece : text.pieces())
        if (piece.encoding == source && is_valid_utf8(piece.bytes))
            piece.encoding = TextEncoding::Utf8;
}

// What is asked of a movie or a PDF file must be there.
Result<void> write_other_objects(Call& call, BufferedReader& file, const MetadataRequest& request,
                                 JsonWriter& json) {
    const params::TextDecoder decode = [&call](std::string_view bytes, TextEncoding encoding) {
        return call.decode(bytes, encoding);
    };
    if (request.movie.has_objects())
        VELL_TRY(movies::read_movie(file, request.movie, decode, json));
    if (!request.pdf_description)
        return {};
    json.key("PDF");
    return documents::describe_pdf(file, json);
}

// As JSON, or single values as text.
Result<std::string> values_text(Call& call, BufferedReader& file, const MetadataRequest& request) {
    const TextDecoder decoder = [&call](std::string_view bytes, TextEncoding encoding) {
        return encoding == TextEncoding::Utf8 ? std::string(bytes)
                                              : utf8_from_utf16(call.decode(bytes, encoding));
    };
    Members values = VELL_TRY(read_values(file, request.value_kinds(), request.source, decoder));
    if (!request.tags.empty() && !request.as_json)
        return readable_values(values, request.tags);
    if (!request.tags.empty())
        values = VELL_TRY(queried_members(values, request.tags));
    if (values.empty() && !request.wants_other_objects())
        return Failure{ErrorCode::NothingFound};
    JsonWriter json;
    json.begin_object();
    values.write_members(json);
    VELL_TRY(write_other_objects(call, file, request, json));
    json.end_object();
    return json.take();
}

Result<void> give_values(Call& call, BufferedReader& file, const MetadataRequest& request) {
    const std::string text = VELL_TRY(values_text(call, file, request));
    if (text.size() > MetadataText::max_size)
        return Failure{ErrorCode::ResourceTooLarge};
    call.set_text(utf16_from_utf8(text));
    return {};
}

Result<void> give_metadata(Call& call, files::FileSystem& files) {
    const MetadataRequest request = VELL_TRY(metadata_request_of(call.switches()));
    const files::Source source =
        VELL_TRY(files::open_source(call, 1, files, files::Sharing::Exclusive));
    BufferedReader reader = VELL_TRY(BufferedReader::over(*source.file));

    if (!request.tags.empty() || request.gives_json())
        return give_values(call, reader, request);
    MetadataText text;
    Result<void> done = read_image_metadata(reader, request, text);
    if (done && request.movie.asks_for_anything())
        done = append_movie(reader, request.movie, text);
    if (request.pdf_description)
        done = append_pdf_description(reader, text); // whatever became of the rest
    VELL_TRY(done);
    if (text.size() > MetadataText::max_size)
        return Failure{ErrorCode::ResourceTooLarge};
    call.set_decoded_text(text.encoded(), params::LineEndings::Keep);
    return {};
}

} // namespace

Result<void> read_image_metadata(BufferedReader& file, const MetadataRequest& request,
                                 MetadataText& text) {
    if (request.everything)
        return read_everything(file, request, text);
    if (request.wants_resources() || request.wants_segments()) {
        const FileKind kind = VELL_TRY(kind_of(file));
        if (request.wants_resources())
            VELL_TRY(read_resources(file, kind, request, text));
        if (request.wants_segments())
            VELL_TRY(read_segments(file, kind, request, text));
    }
    if (request.exif.readable)
        recognise_utf8(request.source, text);
    if (!request.image_description)
        return {};
    file.seek(0);
    return describe_image(file, text);
}

Result<void> get_metadata(Call& call, System& system) {
    const Result<void> done = give_metadata(call, system.files());
    if (!done && call.switches().has("-IsValidMovie")) {
        call.set_number(0);
        return {};
    }
    return done;
}

} // namespace vell::metadata
