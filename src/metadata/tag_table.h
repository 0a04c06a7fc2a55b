// The tags that are known, as the Exif standard lists them (Exif 2.3, sections 4.6.3 to 4.6.7), and
// what becomes of each.
#pragma once

#include "src/formats/tiff/records.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace vell::metadata {

namespace tiff = formats::tiff;
using tiff::FieldType;

// Numbers mean one thing in the GPS directory and another in all others.
enum class TagFamily : std::uint8_t { General, Gps };

enum class TagCategory : std::uint8_t {
    Baseline, // printed wherever it stands
    TiffImage,
    Exif,
    ExifPointer,
    Structural, // says how the block is built; never printed
    InteroperabilityPointer,
    Gps,
    GpsPointer,
    MakerNote, // printed unless it is to be hidden
    Unknown,   // never printed
};

struct TagRow {
    std::uint16_t tag;
    std::string_view name;
    TagCategory category;
    FieldType type; // that the standard lays down, or the widest of them; files may have another
};

namespace table {

using enum TagCategory;
using enum FieldType;

inline constexpr auto general = std::to_array<TagRow>({
    {1, "InteroperabilityIndex", Structural, Ascii},
    {2, "InteroperabilityVersion", Structural, Undefined},
    {11, "ProcessingSoftware", TiffImage, Ascii},
    {254, "NewSubfileType", Structural, Long},
    {255, "SubfileType", Structural, Short},
    {256, "ImageWidth", Baseline, Long},
    {257, "ImageLength", Baseline, Long},
    {258, "BitsPerSample", Baseline, Short},
    {259, "Compression", Baseline, Short},
    {262, "PhotometricInterpretation", Baseline, Short},
    {263, "Threshholding", Baseline, Short}, // the spelling of TIFF 6.0
    {264, "CellWidth", Baseline, Short},
    {265, "CellLength", Baseline, Short},
    {266, "FillOrder", Baseline, Short},
    {269, "DocumentName", TiffImage, Ascii},
    {270, "ImageDescription", TiffImage, Ascii},
    {271, "Make", TiffImage, Ascii},
    {272, "Model", TiffImage, Ascii},
    {273, "StripOffsets", Baseline, Long},
    {274, "Orientation", TiffImage, Short},
    {277, "SamplesPerPixel", Baseline, Short},
    {278, "RowsPerStrip", Baseline, Long},
    {279, "StripByteCounts", Baseline, Long},
    {282, "XResolution", TiffImage, Rational},
    {283, "YResolution", TiffImage, Rational},
    {284, "PlanarConfiguration", Baseline, Short},
    {285, "PageName", TiffImage, Ascii},
    {296, "ResolutionUnit", TiffImage, Short},
    {301, "TransferFunction", Baseline, Short},
    {305, "Software", TiffImage, Ascii},
    {306, "DateTime", TiffImage, Ascii},
    {315, "Artist", TiffImage, Ascii},
    {316, "HostComputer", TiffImage, Ascii},
    {513, "JPEGInterchangeFormat", Baseline, Long},
    {514, "JPEGInterchangeFormatLength", Baseline, Long},
    {529, "YCbCrCoefficients", Baseline, Rational},
    {530, "YCbCrSubSampling", Baseline, Short},
    {531, "YCbCrPositioning", TiffImage, Short},
    {532, "ReferenceBlackWhite", Baseline, Rational},
    {4097, "RelatedImageWidth", Structural, Short},
    {4098, "RelatedImageLength", Structural, Short},
    {33432, "Copyright", TiffImage, Ascii},
    {33434, "ExposureTime", Exif, Rational},
    {33437, "FNumber", Exif, Rational},
    {34665, "ExifIFDPointer", ExifPointer, Long},
    {34850, "ExposureProgram", Exif, Short},
    {34852, "SpectralSensitivity", Exif, Ascii},
    {34853, "GPSInfoIFDPointer", GpsPointer, Long},
    {34855, "PhotographicSensitivity", Exif, Short},
    {34856, "OECF", Exif, Undefined},
    {34864, "SensitivityType", Exif, Short},
    {34865, "StandardOutputSensitivity", Exif, Long},
    {34866, "RecommendedExposureIndex", Exif, Long},
    {36864, "ExifVersion", Exif, Undefined},
    {36867, "DateTimeOriginal", Exif, Ascii},
    {36868, "DateTimeDigitized", Exif, Ascii},
    {36880, "OffsetTime", Exif, Ascii},
    {36881, "OffsetTimeOriginal", Exif, Ascii},
    {36882, "OffsetTimeDigitized", Exif, Ascii},
    {37121, "ComponentsConfiguration", Exif, Undefined},
    {37122, "CompressedBitsPerPixel", Exif, Rational},
    {37377, "ShutterSpeedValue", Exif, SignedRational},
    {37378, "ApertureValue", Exif, Rational},
    {37379, "BrightnessValue", Exif, SignedRational},
    {37380, "ExposureBiasValue", Exif, SignedRational},
    {37381, "MaxApertureValue", Exif, Rational},
    {37382, "SubjectDistance", Exif, Rational},
    {37383, "MeteringMode", Exif, Short},
    {37384, "LightSource", Exif, Short},
    {37385, "Flash", Exif, Short},
    {37386, "FocalLength", Exif, Rational},
    {37396, "SubjectArea", Exif, Rational},
    {37500, "MakerNote", MakerNote, Undefined},
    {37510, "UserComment", Exif, Undefined},
    {37520, "SubSecTime", Exif, Ascii},
    {37521, "SubSecTimeOriginal", Exif, Ascii},
    {37522, "SubSecTimeDigitized", Exif, Ascii},
    {37888, "Temperature", Exif, Rational},
    {37889, "Humidity", Exif, Rational},
    {37890, "Pressure", Exif, Rational},
    {37892, "Acceleration", Exif, Rational},
    {37893, "CameraElevationAngle", Exif, Rational},
    {40091, "XPTitle", TiffImage, Byte},
    {40092, "XPComment", TiffImage, Byte},
    {40093, "XPAuthor", TiffImage, Byte},
    {40094, "XPKeywords", TiffImage, Byte},
    {40095, "XPSubject", TiffImage, Byte},
    {40960, "FlashpixVersion", Exif, Undefined},
    {40961, "ColorSpace", Exif, Short},
    {40962, "PixelXDimension", Exif, Long},
    {40963, "PixelYDimension", Exif, Long},
    {40964, "RelatedSoundFile", Exif, Ascii},
    {40965, "InteroperabilityIFDPointer", InteroperabilityPointer, Long},
    {41483, "FlashEnergy", Exif, Rational},
    {41484, "SpatialFrequencyResponse", Exif, Undefined},
    {41486, "FocalPlaneXResolution", Exif, Rational},
    {41487, "FocalPlaneYResolution", Exif, Rational},
    {41488, "FocalPlaneResolutionUnit", Exif, Short},
    {41492, "SubjectLocation", Exif, Short},
    {41493, "ExposureIndex", Exif, Rational},
    {41495, "SensingMethod", Exif, Short},
    {41728, "FileSource", Exif, Undefined},
    {41729, "SceneType", Exif, Undefined},
    {41730, "CFAPattern", Exif, Undefined},
    {41985, "CustomRendered", Exif, Short},
    {41986, "ExposureMode", Exif, Short},
    {41987, "WhiteBalance", Exif, Short},
    {41988, "DigitalZoomRatio", Exif, Rational},
    {41989, "FocalLengthIn35mmFilm", Exif, Short},
    {41990, "SceneCaptureType", Exif, Short},
    {41991, "GainControl", Exif, Short},
    {41992, "Contrast", Exif, Short},
    {41993, "Saturation", Exif, Short},
    {41994, "Sharpness", Exif, Short},
    {41995, "DeviceSettingDescription", Exif, Undefined},
    {41996, "SubjectDistanceRange", Exif, Short},
    {42016, "ImageUniqueID", Exif, Ascii},
    {42032, "CameraOwnerName", Exif, Ascii},
    {42033, "BodySerialNumber", Exif, Ascii},
    {42034, "LensSpecification", Exif, Rational},
    {42035, "LensMake", Exif, Ascii},
    {42036, "LensModel", Exif, Ascii},
    {42037, "LensSerialNumber", Exif, Ascii},
    {59932, "Padding", Exif, Undefined},
});

inline constexpr auto gps = std::to_array<TagRow>({
    {0, "GPSVersionID", Gps, Byte},
    {1, "GPSLatitudeRef", Gps, Ascii},
    {2, "GPSLatitude", Gps, Rational},
    {3, "GPSLongitudeRef", Gps, Ascii},
    {4, "GPSLongitude", Gps, Rational},
    {5, "GPSAltitudeRef", Gps, Byte},
    {6, "GPSAltitude", Gps, Rational},
    {7, "GPSTimeStamp", Gps, Rational},
    {8, "GPSSatellites", Gps, Ascii},
    {9, "GPSStatus", Gps, Ascii},
    {10, "GPSMeasureMode", Gps, Ascii},
    {11, "GPSDOP", Gps, Rational},
    {12, "GPSSpeedRef", Gps, Ascii},
    {13, "GPSSpeed", Gps, Rational},
    {14, "GPSTrackRef", Gps, Ascii},
    {15, "GPSTrack", Gps, Rational},
    {16, "GPSImgDirectionRef", Gps, Ascii},
    {17, "GPSImgDirection", Gps, Rational},
    {18, "GPSMapDatum", Gps, Ascii},
    {19, "GPSDestLatitudeRef", Gps, Ascii},
    {20, "GPSDestLatitude", Gps, Rational},
    {21, "GPSDestLongitudeRef", Gps, Ascii},
    {22, "GPSDestLongitude", Gps, Rational},
    {23, "GPSDestBearingRef", Gps, Ascii},
    {24, "GPSDestBearing", Gps, Rational},
    {25, "GPSDestDistanceRef", Gps, Ascii},
    {26, "GPSDestDistance", Gps, Rational},
    {27, "GPSProcessingMethod", Gps, Undefined},
    {28, "GPSAreaInformation", Gps, Undefined},
    {29, "GPSDateStamp", Gps, Ascii},
    {30, "GPSDifferential", Gps, Short},
    {31, "GPSHPositioningError", Gps, Rational},
});

// Each number once, in rising order: the search halves.
template <typename Rows>
constexpr bool is_strictly_sorted(const Rows& rows) {
    return std::ranges::is_sorted(rows, std::ranges::less_equal{}, &TagRow::tag);
}
static_assert(is_strictly_sorted(general) && is_strictly_sorted(gps));

template <typename Rows>
constexpr const TagRow* find(const Rows& rows, std::uint16_t tag) {
    const auto found = std::ranges::lower_bound(rows, tag, {}, &TagRow::tag);
    return found != rows.end() && found->tag == tag ? &*found : nullptr;
}

} // namespace table

// Null for a tag that is not known there.
constexpr const TagRow* find_tag_row(TagFamily family, std::uint16_t tag) {
    return family == TagFamily::Gps ? table::find(table::gps, tag)
                                    : table::find(table::general, tag);
}

constexpr TagCategory category_of(TagFamily family, std::uint16_t tag) {
    const TagRow* row = find_tag_row(family, tag);
    return row == nullptr ? TagCategory::Unknown : row->category;
}

constexpr bool is_printed(TagCategory category, bool hide_maker_note) {
    return category != TagCategory::Structural && category != TagCategory::Unknown &&
           (category != TagCategory::MakerNote || !hide_maker_note);
}

} // namespace vell::metadata
