#include "src/metadata/metadata_request.h"

namespace vell::metadata {
namespace {

using params::SwitchSet;
using params::TextEncoding;

struct MovieSwitch {
    std::string_view name;
    MovieSelector selector;
};
// The first one present counts.
constexpr MovieSwitch movie_switches[] = {
    {"-GetMovieDuration", MovieSelector::Duration},
    {"-GetTimeCodeBegin", MovieSelector::TimeCodeBegin},
    {"-GetTimeCodeEnd", MovieSelector::TimeCodeEnd},
    {"-GetTimeCodeCurrent", MovieSelector::TimeCodeCurrent},
    {"-GetMovieGPS", MovieSelector::Gps},
    {"-GetMovieCreationDate", MovieSelector::CreationDate},
    {"-GetMovieMetadata", MovieSelector::AllMetadata},
    {"-GetMovieBoxes", MovieSelector::Boxes},
    {"-GetMovieTitle", MovieSelector::Title},
    {"-GetMovDescriptionStr", MovieSelector::DescriptionText},
    {"-GetMovieKeywords", MovieSelector::Keywords},
    {"-GetMovieComment", MovieSelector::Comment},
    {"-GetMovieInformation", MovieSelector::Information},
    {"-GetMovieDirector", MovieSelector::Director},
    {"-GetMovieSoftware", MovieSelector::Software},
    {"-GetMovieYear", MovieSelector::Year},
    {"-GetMovieEncodedBy", MovieSelector::EncodedBy},
    {"-GetMovieLoopSetting", MovieSelector::LoopSetting},
    {"-GetMovieLoopVariation", MovieSelector::LoopVariation},
    {"-GetMovieWidth", MovieSelector::Width},
    {"-GetMovieHeight", MovieSelector::Height},
    {"-GetMovieRotation", MovieSelector::Rotation},
    {"-GetMovieFrameCount", MovieSelector::FrameCount},
    {"-IsValidMovie", MovieSelector::IsValid},
    {"-GetMovieCopyright", MovieSelector::Copyright},
};

MovieSelector movie_selector_of(const SwitchSet& switches) {
    for (const MovieSwitch& entry : movie_switches)
        if (switches.has(entry.name))
            return entry.selector;
    return MovieSelector::None;
}

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
    return request.wants_resources() || request.wants_segments() || request.wants_movie() ||
           request.image_description || request.pdf_description;
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
    request.movie = movie_selector_of(switches);
    request.movie_description = switches.has("-GetMovieDescription");
    request.image_description = switches.has("-GetImageDescription");
    request.pdf_description = switches.has("-GetPDFDescription");

    if (!asks_for_anything(request) || (request.exif.decimal_gps && request.exif.raw_values))
        return Failure{ErrorCode::BadParameter};
    return request;
}

} // namespace vell::metadata
