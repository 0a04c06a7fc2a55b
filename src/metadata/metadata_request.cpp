#include "src/metadata/metadata_request.h"

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
           request.pdf_description;
}

} // namespace

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

    if (!asks_for_anything(request) || (request.exif.decimal_gps && request.exif.raw_values))
        return Failure{ErrorCode::BadParameter};
    return request;
}

} // namespace vell::metadata
