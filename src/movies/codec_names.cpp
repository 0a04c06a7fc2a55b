#include "src/movies/codec_names.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace vell::movies {
namespace {

using namespace formats::isobmff;

template <typename Key>
struct Name {
    Key key;
    std::string_view name;
};

template <typename Key, std::size_t count>
std::string_view name_in(const Name<Key> (&names)[count], Key key) {
    const auto* const found = std::ranges::find(names, key, &Name<Key>::key);
    return found == std::end(names) ? std::string_view() : found->name;
}

constexpr Name<FourCc> codecs[] = {
    {"avc1"_4cc, "H.264"},
    {"avc2"_4cc, "H.264"},
    {"avc3"_4cc, "H.264"},
    {"avc4"_4cc, "H.264"},
    {"hvc1"_4cc, "HEVC"},
    {"hev1"_4cc, "HEVC"},
    {"dvh1"_4cc, "Dolby Vision HEVC"},
    {"dvhe"_4cc, "Dolby Vision HEVC"},
    {"dva1"_4cc, "Dolby Vision H.264"},
    {"dvav"_4cc, "Dolby Vision H.264"},
    {"vvc1"_4cc, "VVC"},
    {"vvi1"_4cc, "VVC"},
    {"av01"_4cc, "AV1"},
    {"vp08"_4cc, "VP8"},
    {"vp09"_4cc, "VP9"},
    {"mp4v"_4cc, "MPEG-4 Visual"},
    {"xvid"_4cc, "MPEG-4 Visual"},
    {"s263"_4cc, "H.263"},
    {"h263"_4cc, "H.263"},
    {"H263"_4cc, "H.263"},
    {"jpeg"_4cc, "Photo - JPEG"},
    {"mjpa"_4cc, "Motion JPEG A"},
    {"mjpb"_4cc, "Motion JPEG B"},
    {"mjpg"_4cc, "Motion JPEG"},
    {"mjp2"_4cc, "JPEG 2000"},
    {"apch"_4cc, "ProRes 422 HQ"},
    {"apcn"_4cc, "ProRes 422"},
    {"apcs"_4cc, "ProRes 422 LT"},
    {"apco"_4cc, "ProRes 422 Proxy"},
    {"ap4h"_4cc, "ProRes 4444"},
    {"ap4x"_4cc, "ProRes 4444 XQ"},
    {"aprn"_4cc, "ProRes RAW"},
    {"aprh"_4cc, "ProRes RAW HQ"},
    {"AVdn"_4cc, "DNxHD"},
    {"AVdh"_4cc, "DNxHR"},
    {"dvc "_4cc, "DV NTSC"},
    {"dvcp"_4cc, "DV PAL"},
    {"dvpp"_4cc, "DVCPRO PAL"},
    {"dv5n"_4cc, "DVCPRO50 NTSC"},
    {"dv5p"_4cc, "DVCPRO50 PAL"},
    {"dvh5"_4cc, "DVCPRO HD"},
    {"dvh6"_4cc, "DVCPRO HD"},
    {"mp1v"_4cc, "MPEG-1 Video"},
    {"mp2v"_4cc, "MPEG-2 Video"},
    {"m2v1"_4cc, "MPEG-2 Video"},
    {"rle "_4cc, "Animation"},
    {"png "_4cc, "PNG"},
    {"raw "_4cc, "Uncompressed"},
    {"2vuy"_4cc, "Uncompressed 4:2:2"},
    {"yuv2"_4cc, "Uncompressed 4:2:2"},
    {"v210"_4cc, "Uncompressed 4:2:2, 10 bits"},
    {"SVQ1"_4cc, "Sorenson Video"},
    {"SVQ3"_4cc, "Sorenson Video 3"},
    {"cvid"_4cc, "Cinepak"},
    {"smc "_4cc, "Graphics"},
    {"rpza"_4cc, "Video"},
    {"CFHD"_4cc, "CineForm"},
    {"mp4a"_4cc, "AAC"},
    {"alac"_4cc, "Apple Lossless"},
    {"ac-3"_4cc, "AC-3"},
    {"ec-3"_4cc, "Enhanced AC-3"},
    {"ac-4"_4cc, "AC-4"},
    {"mlpa"_4cc, "Dolby TrueHD"},
    {"dtsc"_4cc, "DTS"},
    {"dtsh"_4cc, "DTS-HD"},
    {"dtsl"_4cc, "DTS-HD lossless"},
    {"dtse"_4cc, "DTS Express"},
    {"Opus"_4cc, "Opus"},
    {"fLaC"_4cc, "FLAC"},
    {"iamf"_4cc, "Immersive Audio"},
    {"mha1"_4cc, "MPEG-H Audio"},
    {"mhm1"_4cc, "MPEG-H Audio"},
    {"twos"_4cc, "PCM, big-endian"},
    {"sowt"_4cc, "PCM, little-endian"},
    {"lpcm"_4cc, "PCM"},
    {"ipcm"_4cc, "PCM"},
    {"fpcm"_4cc, "PCM, floating point"},
    {"in24"_4cc, "PCM, 24 bits"},
    {"in32"_4cc, "PCM, 32 bits"},
    {"fl32"_4cc, "PCM, floating point, 32 bits"},
    {"fl64"_4cc, "PCM, floating point, 64 bits"},
    {"NONE"_4cc, "PCM"},
    {"ulaw"_4cc, "\u00B5-law"},
    {"alaw"_4cc, "A-law"},
    {"ima4"_4cc, "IMA ADPCM"},
    {"MAC3"_4cc, "MACE 3:1"},
    {"MAC6"_4cc, "MACE 6:1"},
    {".mp3"_4cc, "MP3"},
    {"QDM2"_4cc, "QDesign Music 2"},
    {"QDMC"_4cc, "QDesign Music"},
    {"samr"_4cc, "AMR narrow band"},
    {"sawb"_4cc, "AMR wide band"},
    {"sawp"_4cc, "AMR wide band plus"},
    {"sevc"_4cc, "EVRC"},
    {"sqcp"_4cc, "QCELP"},
    {"wma "_4cc, "Windows Media Audio"},
    {"owma"_4cc, "Windows Media Audio"},
    {"vc-1"_4cc, "VC-1"},
    {"ovc1"_4cc, "VC-1"},
    {"text"_4cc, "QuickTime text"},
    {"tx3g"_4cc, "3GPP timed text"},
    {"wvtt"_4cc, "WebVTT"},
    {"stpp"_4cc, "TTML"},
    {"c608"_4cc, "CEA-608 captions"},
    {"c708"_4cc, "CEA-708 captions"},
    {"mp4s"_4cc, "MPEG-4 Systems"},
    {"tmcd"_4cc, "Time code"},
    {"mebx"_4cc, "Timed metadata"},
    {"rtp "_4cc, "RTP hints"},
    {"gpmd"_4cc, "GoPro telemetry"},
    {"camm"_4cc, "Camera motion"},
};

// "objectTypeIndication" (ISO/IEC 14496-1, section 7.2.6.6.2, and its registration authority), for
// what "mp4a" and "mp4v" hold.
constexpr Name<std::uint8_t> object_types[] = {
    {0x20, "MPEG-4 Visual"}, {0x21, "H.264"},        {0x23, "HEVC"},         {0x40, "AAC"},
    {0x60, "MPEG-2 Video"},  {0x61, "MPEG-2 Video"}, {0x62, "MPEG-2 Video"}, {0x63, "MPEG-2 Video"},
    {0x64, "MPEG-2 Video"},  {0x65, "MPEG-2 Video"}, {0x66, "AAC"},          {0x67, "AAC"},
    {0x68, "AAC"},           {0x69, "MP3"},          {0x6A, "MPEG-1 Video"}, {0x6B, "MP3"},
    {0x6C, "JPEG"},          {0x6D, "PNG"},          {0x6E, "JPEG 2000"},    {0xA5, "AC-3"},
    {0xA6, "Enhanced AC-3"}, {0xA9, "DTS"},          {0xAA, "DTS-HD"},       {0xAD, "Opus"},
    {0xDD, "Vorbis"},        {0xE1, "QCELP"},
};

constexpr Name<FourCc> kinds[] = {
    {"vide"_4cc, "Video"},           {"soun"_4cc, "Audio"},     {"text"_4cc, "Text"},
    {"sbtl"_4cc, "Subtitles"},       {"subt"_4cc, "Subtitles"}, {"subp"_4cc, "Subtitles"},
    {"clcp"_4cc, "Closed captions"}, {"tmcd"_4cc, "Time code"}, {"meta"_4cc, "Metadata"},
    {"hint"_4cc, "Hints"},           {"pict"_4cc, "Images"},    {"auxv"_4cc, "Auxiliary video"},
    {"musi"_4cc, "Music"},           {"MPEG"_4cc, "MPEG"},      {"odsm"_4cc, "Object descriptors"},
    {"sdsm"_4cc, "Scene"},           {"sprt"_4cc, "Sprites"},   {"twen"_4cc, "Tween"},
    {"qd3d"_4cc, "QuickDraw 3D"},    {"strm"_4cc, "Streaming"},
};

constexpr Name<FourCc> brand_names[] = {
    {"qt  "_4cc, "QuickTime"}, {"isom"_4cc, "MPEG-4"},      {"iso2"_4cc, "MPEG-4"},
    {"iso3"_4cc, "MPEG-4"},    {"iso4"_4cc, "MPEG-4"},      {"iso5"_4cc, "MPEG-4"},
    {"iso6"_4cc, "MPEG-4"},    {"iso7"_4cc, "MPEG-4"},      {"iso8"_4cc, "MPEG-4"},
    {"iso9"_4cc, "MPEG-4"},    {"mp41"_4cc, "MPEG-4"},      {"mp42"_4cc, "MPEG-4"},
    {"avc1"_4cc, "MPEG-4"},    {"dash"_4cc, "MPEG-4 DASH"}, {"cmfc"_4cc, "MPEG-4 CMAF"},
    {"M4V "_4cc, "MPEG-4"},    {"M4VP"_4cc, "MPEG-4"},      {"M4VH"_4cc, "MPEG-4"},
    {"M4A "_4cc, "MPEG-4"},    {"M4B "_4cc, "MPEG-4"},      {"M4P "_4cc, "MPEG-4"},
    {"F4V "_4cc, "Flash"},     {"F4A "_4cc, "Flash"},       {"MSNV"_4cc, "MPEG-4"},
    {"3gp4"_4cc, "3GPP"},      {"3gp5"_4cc, "3GPP"},        {"3gp6"_4cc, "3GPP"},
    {"3gp7"_4cc, "3GPP"},      {"3gr6"_4cc, "3GPP"},        {"3g2a"_4cc, "3GPP2"},
    {"3g2b"_4cc, "3GPP2"},     {"3g2c"_4cc, "3GPP2"},       {"heic"_4cc, "HEIF"},
    {"heix"_4cc, "HEIF"},      {"hevc"_4cc, "HEIF"},        {"mif1"_4cc, "HEIF"},
    {"msf1"_4cc, "HEIF"},      {"avif"_4cc, "AVIF"},        {"avis"_4cc, "AVIF"},
    {"mjp2"_4cc, "JPEG 2000"}, {"piff"_4cc, "MPEG-4 PIFF"},
};

} // namespace

std::string_view codec_name(const SampleEntry& entry) {
    const bool is_mpeg4 = entry.codec() == "mp4a"_4cc || entry.codec() == "mp4v"_4cc;
    if (is_mpeg4 && entry.decoder)
        if (const auto name = name_in(object_types, entry.decoder->object_type); !name.empty())
            return name;
    return name_in(codecs, entry.codec());
}

std::string_view kind_name(FourCc handler) {
    const auto name = name_in(kinds, handler);
    return name.empty() ? "Other" : name;
}

std::string_view brand_name(FourCc brand) {
    return name_in(brand_names, brand);
}

} // namespace vell::movies
