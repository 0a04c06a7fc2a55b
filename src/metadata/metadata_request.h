// What a call of VlFile_GetMetaData asks of the readers of an image's metadata.
#pragma once

#include "src/base/result.h"
#include "src/metadata/values/tag_query.h"
#include "src/movies/movie_request.h"
#include "src/params/encodings.h"
#include "src/params/switches.h"

#include <cstdint>
#include <vector>

namespace vell::metadata {

// What is wanted of a block of tags (TIFF 6.0, Exif 2.3).
struct ExifReadOptions {
    bool want_iptc = false;
    bool want_exif = false; // IFD0, the Exif and the Interoperability IFD
    bool want_xmp = false;
    bool want_gps = false;
    bool decimal_gps = false;    // latitudes and longitudes as signed decimal degrees
    bool raw_values = false;     // rationals as fractions, UNDEFINED values never as UTF-8
    bool hide_maker_note = true; // tag 37500
    bool readable = false;       // texts, dates and positions as a person reads them
};

enum class IccSelector : std::int32_t {
    None = 0,
    Description = 500,
    Name = 600,
    LocalizedName = 601,
};

struct MetadataRequest {
    ExifReadOptions exif;
    bool want_comment = false;
    bool want_image_url = false;
    bool text_chunks = false; // a PNG is read for its tEXt chunks instead of its eXIf chunk
    bool all_application_records = false;
    bool detect_utf8 = true; // IPTC that declares itself UTF-8 is read so
    IccSelector icc = IccSelector::None;
    bool verbose_icc = false; // "-VerboseLevel=2"
    bool icc_as_xml = false;  // "-Format=XML"
    bool first_icc_language = false;
    params::TextEncoding source = params::TextEncoding::Native; // of texts without a declared one

    movies::MovieRequest movie;
    bool image_description = false;
    bool pdf_description = false;

    bool everything = false; // of an image's metadata, what is there of it
    bool as_json = false;
    std::vector<TagQuery> tags; // single values, instead of all else

    // IPTC datasets, or the image URL.
    bool wants_resources() const { return exif.want_iptc || want_image_url; }
    // What the segments, chunks or tags of an image hold.
    bool wants_segments() const {
        return exif.want_exif || exif.want_xmp || exif.want_gps || want_comment ||
               icc != IccSelector::None;
    }
    // What is told of movies and PDF files beside the values of images.
    bool wants_other_objects() const { return movie.has_objects() || pdf_description; }
    bool gives_json() const { return as_json && (value_kinds().any() || wants_other_objects()); }
    // What values are to be read for an answer in JSON, or for single ones.
    ValueKinds value_kinds() const;
};

// The request that the switches make. BadParameter when they ask for nothing, for positions as
// decimal degrees and as raw values at once, or for a tag that is not known.
Result<MetadataRequest> metadata_request_of(const params::SwitchSet& switches);

} // namespace vell::metadata
