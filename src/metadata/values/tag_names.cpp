#include "src/metadata/values/tag_names.h"

#include "src/base/ascii.h"
#include "src/base/number_text.h"

#include <algorithm>
#include <array>

namespace vell::metadata {
namespace {

struct TagName {
    std::uint16_t tag;
    std::string_view name;
};

constexpr auto other_names = std::to_array<TagName>({
    {280, "MinSampleValue"},
    {281, "MaxSampleValue"},
    {286, "XPosition"},
    {287, "YPosition"},
    {288, "FreeOffsets"},
    {289, "FreeByteCounts"},
    {290, "GrayResponseUnit"},
    {291, "GrayResponseCurve"},
    {292, "T4Options"},
    {293, "T6Options"},
    {297, "PageNumber"},
    {317, "Predictor"},
    {318, "WhitePoint"},
    {319, "PrimaryChromaticities"},
    {320, "ColorMap"},
    {321, "HalftoneHints"},
    {322, "TileWidth"},
    {323, "TileLength"},
    {324, "TileOffsets"},
    {325, "TileByteCounts"},
    {330, "SubIFDs"},
    {332, "InkSet"},
    {333, "InkNames"},
    {334, "NumberOfInks"},
    {336, "DotRange"},
    {337, "TargetPrinter"},
    {338, "ExtraSamples"},
    {339, "SampleFormat"},
    {340, "SMinSampleValue"},
    {341, "SMaxSampleValue"},
    {342, "TransferRange"},
    {343, "ClipPath"},
    {344, "XClipPathUnits"},
    {345, "YClipPathUnits"},
    {346, "Indexed"},
    {347, "JPEGTables"},
    {351, "OPIProxy"},
    {512, "JPEGProc"},
    {515, "JPEGRestartInterval"},
    {517, "JPEGLosslessPredictors"},
    {518, "JPEGPointTransforms"},
    {519, "JPEGQTables"},
    {520, "JPEGDCTables"},
    {521, "JPEGACTables"},
    {700, "XMLPacket"},
    {4096, "RelatedImageFileFormat"},
    {18246, "Rating"},
    {18249, "RatingPercent"},
    {32781, "ImageID"},
    {33421, "CFARepeatPatternDim"},
    {33422, "CFAPattern"},
    {33423, "BatteryLevel"},
    {33723, "IPTCNAA"},
    {34377, "ImageResources"},
    {34675, "InterColorProfile"},
    {34857, "Interlace"},
    {34858, "TimeZoneOffset"},
    {34859, "SelfTimerMode"},
    {34867, "ISOSpeed"},
    {34868, "ISOSpeedLatitudeyyy"},
    {34869, "ISOSpeedLatitudezzz"},
    {37387, "FlashEnergy"},
    {37388, "SpatialFrequencyResponse"},
    {37389, "Noise"},
    {37390, "FocalPlaneXResolution"},
    {37391, "FocalPlaneYResolution"},
    {37392, "FocalPlaneResolutionUnit"},
    {37393, "ImageNumber"},
    {37394, "SecurityClassification"},
    {37395, "ImageHistory"},
    {37397, "ExposureIndex"},
    {37398, "TIFFEPStandardID"},
    {37399, "SensingMethod"},
    {37891, "WaterDepth"},
    {42038, "ImageTitle"},
    {42039, "Photographer"},
    {42040, "ImageEditor"},
    {42041, "CameraFirmware"},
    {42042, "RAWDevelopingSoftware"},
    {42043, "ImageEditingSoftware"},
    {42044, "MetadataEditingSoftware"},
    {42080, "CompositeImage"},
    {42081, "SourceImageNumberOfCompositeImage"},
    {42082, "SourceExposureTimesOfCompositeImage"},
    {42240, "Gamma"},
    {50706, "DNGVersion"},
    {50707, "DNGBackwardVersion"},
    {50708, "UniqueCameraModel"},
    {50709, "LocalizedCameraModel"},
    {50710, "CFAPlaneColor"},
    {50711, "CFALayout"},
    {50712, "LinearizationTable"},
    {50713, "BlackLevelRepeatDim"},
    {50714, "BlackLevel"},
    {50715, "BlackLevelDeltaH"},
    {50716, "BlackLevelDeltaV"},
    {50717, "WhiteLevel"},
    {50718, "DefaultScale"},
    {50719, "DefaultCropOrigin"},
    {50720, "DefaultCropSize"},
    {50721, "ColorMatrix1"},
    {50722, "ColorMatrix2"},
    {50723, "CameraCalibration1"},
    {50724, "CameraCalibration2"},
    {50725, "ReductionMatrix1"},
    {50726, "ReductionMatrix2"},
    {50727, "AnalogBalance"},
    {50728, "AsShotNeutral"},
    {50729, "AsShotWhiteXY"},
    {50730, "BaselineExposure"},
    {50731, "BaselineNoise"},
    {50732, "BaselineSharpness"},
    {50733, "BayerGreenSplit"},
    {50734, "LinearResponseLimit"},
    {50735, "CameraSerialNumber"},
    {50736, "LensInfo"},
    {50737, "ChromaBlurRadius"},
    {50738, "AntiAliasStrength"},
    {50739, "ShadowScale"},
    {50740, "DNGPrivateData"},
    {50741, "MakerNoteSafety"},
    {50778, "CalibrationIlluminant1"},
    {50779, "CalibrationIlluminant2"},
    {50780, "BestQualityScale"},
    {50781, "RawDataUniqueID"},
    {50827, "OriginalRawFileName"},
    {50828, "OriginalRawFileData"},
    {50829, "ActiveArea"},
    {50830, "MaskedAreas"},
    {50831, "AsShotICCProfile"},
    {50832, "AsShotPreProfileMatrix"},
    {50833, "CurrentICCProfile"},
    {50834, "CurrentPreProfileMatrix"},
    {50879, "ColorimetricReference"},
    {50931, "CameraCalibrationSignature"},
    {50932, "ProfileCalibrationSignature"},
    {50933, "ExtraCameraProfiles"},
    {50934, "AsShotProfileName"},
    {50935, "NoiseReductionApplied"},
    {50936, "ProfileName"},
    {50937, "ProfileHueSatMapDims"},
    {50938, "ProfileHueSatMapData1"},
    {50939, "ProfileHueSatMapData2"},
    {50940, "ProfileToneCurve"},
    {50941, "ProfileEmbedPolicy"},
    {50942, "ProfileCopyright"},
    {50964, "ForwardMatrix1"},
    {50965, "ForwardMatrix2"},
    {50966, "PreviewApplicationName"},
    {50967, "PreviewApplicationVersion"},
    {50968, "PreviewSettingsName"},
    {50969, "PreviewSettingsDigest"},
    {50970, "PreviewColorSpace"},
    {50971, "PreviewDateTime"},
    {50972, "RawImageDigest"},
    {50973, "OriginalRawFileDigest"},
    {50974, "SubTileBlockSize"},
    {50975, "RowInterleaveFactor"},
    {50981, "ProfileLookTableDims"},
    {50982, "ProfileLookTableData"},
    {51008, "OpcodeList1"},
    {51009, "OpcodeList2"},
    {51022, "OpcodeList3"},
    {51041, "NoiseProfile"},
    {51043, "TimeCodes"},
    {51044, "FrameRate"},
    {51058, "TStop"},
    {51081, "ReelName"},
    {51089, "OriginalDefaultFinalSize"},
    {51090, "OriginalBestQualityFinalSize"},
    {51091, "OriginalDefaultCropSize"},
    {51105, "CameraLabel"},
    {51107, "ProfileHueSatMapEncoding"},
    {51108, "ProfileLookTableEncoding"},
    {51109, "BaselineExposureOffset"},
    {51110, "DefaultBlackRender"},
    {51111, "NewRawImageDigest"},
    {51112, "RawToPreviewGain"},
    {51125, "DefaultUserCrop"},
    {51177, "DepthFormat"},
    {51178, "DepthNear"},
    {51179, "DepthFar"},
    {51180, "DepthUnits"},
    {51181, "DepthMeasureType"},
    {51182, "EnhanceParams"},
    {52525, "ProfileGainTableMap"},
    {52526, "SemanticName"},
    {52528, "SemanticInstanceID"},
    {52529, "CalibrationIlluminant3"},
    {52530, "CameraCalibration3"},
    {52531, "ColorMatrix3"},
    {52532, "ForwardMatrix3"},
    {52533, "IlluminantData1"},
    {52534, "IlluminantData2"},
    {52535, "IlluminantData3"},
    {52536, "MaskSubArea"},
    {52537, "ProfileHueSatMapData3"},
    {52538, "ReductionMatrix3"},
    {52543, "RGBTables"},
    {52544, "ProfileGainTableMap2"},
    {52547, "ColumnInterleaveFactor"},
    {52548, "ImageSequenceInfo"},
    {52550, "ImageStats"},
    {52551, "ProfileDynamicRange"},
    {52552, "ProfileGroupName"},
    {52553, "JXLDistance"},
    {52554, "JXLEffort"},
    {52555, "JXLDecodeSpeed"},
});

static_assert(std::ranges::is_sorted(other_names, std::ranges::less_equal{}, &TagName::tag));
// No tag is named in both tables.
static_assert(std::ranges::none_of(other_names, [](const TagName& row) {
    return find_tag_row(TagFamily::General, row.tag) != nullptr;
}));

template <typename Rows>
const typename Rows::value_type* find_name(const Rows& rows, std::string_view name) {
    const auto found = std::ranges::find_if(
        rows, [&](const auto& row) { return equal_ignoring_case(row.name, name); });
    return found == rows.end() ? nullptr : &*found;
}

} // namespace

std::string_view standard_name(TagFamily family, std::uint16_t tag) {
    if (const TagRow* const row = find_tag_row(family, tag))
        return row->name;
    if (family == TagFamily::Gps)
        return {};
    const auto found = std::ranges::lower_bound(other_names, tag, {}, &TagName::tag);
    return found != other_names.end() && found->tag == tag ? found->name : std::string_view();
}

std::string name_of(TagFamily family, std::uint16_t tag) {
    const std::string_view name = standard_name(family, tag);
    if (!name.empty())
        return std::string(name);
    std::string bytes;
    append_integer<std::uint16_t>(bytes, tag, ByteOrder::Big);
    return "Tag0x" + hexadecimal(bytes);
}

std::optional<std::uint16_t> tag_of(TagFamily family, std::string_view name) {
    const TagRow* const row =
        family == TagFamily::Gps ? find_name(table::gps, name) : find_name(table::general, name);
    if (row != nullptr)
        return row->tag;
    const TagName* const other = family == TagFamily::Gps ? nullptr : find_name(other_names, name);
    return other == nullptr ? std::nullopt : std::optional(other->tag);
}

} // namespace vell::metadata
