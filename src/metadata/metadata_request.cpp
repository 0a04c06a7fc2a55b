#include "src/metadata/metadata_request.h"

#include "src/base/utf8.h"
#include "src/params/switch_text.h"

namespace vell::metadata {
namespace {

using params::SwitchSet;
using params::TextEncoding;

IccSelector icc_selector_of(const SwitchSet& switches) {
    if (switches.has("-GetIccProfileName"))
        return IccSelector::Name;
    if (switches.has("-GetIccProfileDescription"))
        return IccSelector::Description;
    if (switches.has("-GetLocalizedIccProfileName"))
        return IccSelector::LocalizedName;
    return IccSelector::None;
}

// "SourceWinCharset" names what is the default anyway, so nothing asks for it.
TextEncoding source_of(const SwitchSet& switches) {
    if (switches.has("-SourceUTF8Charset"))
        return TextEncoding::Utf8;
    if (switches.has("SourceMacCharset"))
        return TextEncoding::AsciiMac;
    return encoding_of(switches, TextEncoding::Native);
}

bool asks_for_anything(const MetadataRequest& request) {
    return request.wants_resources() || request.wants_segments() ||
           request.movie.asks_for_anything() || request.image_description ||
           request.pdf_description || request.everything || !request.tags.empty();
}

// A list of them may have a line for each.
std::string without_line_ends(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t start = text.find_first_not_of(blanks);
    if (start == std::string_view::npos)
        return {};
    return std::string(text.substr(start, text.find_last_not_of(blanks) - start + 1));
}

Result<std::vector<TagQuery>> queries_of(const SwitchSet& switches) {
    std::vector<TagQuery> queries;
    if (!switches.has("-GetTag="))
        return queries;
    for (const std::u16string& asked :
         params::switch_texts(utf16_from_utf8(switches.text()), u"-GetTag="))
        queries.push_back(VELL_TRY(tag_query_of(without_line_ends(utf8_from_utf16(asked)))));
    return queries;
}

} // namespace

ValueKinds MetadataRequest::value_kinds() const {
    if (!tags.empty())
        return kinds_of(tags);
    if (everything)
        return ValueKinds::all();
    ValueKinds kinds;
    kinds.exif = exif.want_exif && !text_chunks;
    kinds.gps = exif.want_gps;
    kinds.iptc = exif.want_iptc;
    kinds.xmp = exif.want_xmp;
    kinds.icc = icc != IccSelector::None;
    kinds.image = image_description;
    kinds.comment = want_comment;
    kinds.texts = text_chunks;
    kinds.image_url = want_image_url;
    return kinds;
}

Result<MetadataRequest> metadata_request_of(const SwitchSet& switches) {
    MetadataRequest request;
    const bool decimal = switches.has("-Format=Decimal");
    request.text_chunks = switches.has("-GetTextChunkFromPNG");
    request.exif.raw_values = switches.has("-GetRawExif");
    request.exif.want_iptc = switches.has("GetIPTC");
    request.exif.want_exif =
        switches.has("GetExif") || request.exif.raw_values || request.text_chunks;
    request.exif.want_gps = switches.has("GetGPS");
    request.exif.want_xmp = switches.has("GetXMP");
    request.exif.decimal_gps = request.exif.want_gps && decimal;
    request.want_comment = switches.has("GetJPEGComment");
    request.want_image_url = switches.has("GetImageURL");
    request.all_application_records = switches.has("-ParseAllApplicationRecords");
    request.detect_utf8 = !switches.has("-DontUseAutoUTF8Detection");
    request.icc = icc_selector_of(switches);
    request.verbose_icc = switches.has("-VerboseLevel=2");
    request.icc_as_xml = switches.has("-Format=XML");
    request.first_icc_language = switches.has("-GetFirstLanguage");
    request.source = source_of(switches);
    request.movie = movies::movie_request_of(switches);
    request.image_description = switches.has("-GetImageDescription");
    request.pdf_description = switches.has("-GetPDFDescription");

    request.everything = switches.has("-GetAll");
    request.as_json = switches.has("-Format=JSON");
    request.exif.readable = request.as_json || switches.has("-Readable");
    request.tags = VELL_TRY(queries_of(switches));

    if (!asks_for_anything(request) || (request.exif.decimal_gps && request.exif.raw_values))
        return Failure{ErrorCode::BadParameter};
    return request;
}

} // namespace vell::metadata
