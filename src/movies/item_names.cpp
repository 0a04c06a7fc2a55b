#include "src/movies/item_names.h"

#include <algorithm>
#include <iterator>

namespace vell::movies {
namespace {

using namespace formats::isobmff;

struct TypeName {
    FourCc type;
    std::string_view name;
};
// "ilst" and "udta" of QuickTime and 3GPP.
constexpr TypeName type_names[] = {
    {classic("nam"), item::title},
    {classic("ART"), "Artist"},
    {classic("alb"), "Album"},
    {classic("arg"), "Arranger"},
    {classic("ark"), "Arranger keywords"},
    {classic("aut"), "Author"},
    {classic("cmt"), item::comment},
    {classic("cok"), "Composer keywords"},
    {classic("com"), "Composer"},
    {classic("cpy"), item::copyright},
    {classic("day"), item::date},
    {classic("des"), item::description},
    {classic("dir"), item::director},
    {classic("dis"), "Disclaimer"},
    {classic("enc"), item::encoded_by},
    {classic("fmt"), "Original format"},
    {classic("gen"), "Genre"},
    {classic("gpt"), "Grouping"},
    {classic("grp"), "Grouping"},
    {classic("inf"), item::information},
    {classic("isr"), "ISRC"},
    {classic("key"), item::keywords},
    {classic("lab"), "Record label"},
    {classic("lyr"), "Lyrics"},
    {classic("mak"), "Make"},
    {classic("mod"), "Model"},
    {classic("mvc"), "Movement count"},
    {classic("mvi"), "Movement number"},
    {classic("mvn"), "Movement name"},
    {classic("nrt"), "Narrator"},
    {classic("ope"), "Original artist"},
    {classic("PRD"), "Producer"},
    {classic("prd"), "Producer"},
    {classic("prf"), "Performers"},
    {classic("pub"), "Publisher"},
    {classic("req"), "Requirements"},
    {classic("snm"), "Song name"},
    {classic("src"), "Source credits"},
    {classic("st3"), "Subtitle"},
    {classic("swf"), "Songwriter"},
    {classic("swk"), "Songwriter keywords"},
    {classic("swr"), item::software},
    {classic("too"), item::encoder},
    {classic("trk"), "Track number"},
    {classic("url"), "URL"},
    {classic("wrk"), "Work"},
    {classic("wrn"), "Warning"},
    {classic("wrt"), "Composer"},
    {classic("xyz"), item::location},
    {"aART"_4cc, "Album artist"},
    {"akID"_4cc, "Store account type"},
    {"albm"_4cc, "Album"},
    {"apID"_4cc, "Store account"},
    {"atID"_4cc, "Artist ID"},
    {"auth"_4cc, "Author"},
    {"catg"_4cc, "Category"},
    {"chpl"_4cc, "Chapters"},
    {"clsf"_4cc, "Classification"},
    {"cmID"_4cc, "Composer ID"},
    {"cnID"_4cc, "Catalog ID"},
    {"coll"_4cc, "Collection"},
    {"covr"_4cc, "Cover"},
    {"cpil"_4cc, "Compilation"},
    {"cprt"_4cc, item::copyright},
    {"desc"_4cc, item::description},
    {"disk"_4cc, "Disk number"},
    {"dscp"_4cc, item::description},
    {"egid"_4cc, "Episode global ID"},
    {"geID"_4cc, "Genre ID"},
    {"gnre"_4cc, "Genre"},
    {"grup"_4cc, "Grouping"},
    {"hdvd"_4cc, "HD video"},
    {"itnu"_4cc, "iTunes U"},
    {"keyw"_4cc, item::keywords},
    {"kywd"_4cc, item::keywords},
    {"ldes"_4cc, item::long_description},
    {"loci"_4cc, item::location},
    {"LOOP"_4cc, item::loop},
    {"name"_4cc, "Name"},
    {"ownr"_4cc, "Owner"},
    {"pcst"_4cc, "Podcast"},
    {"perf"_4cc, "Performer"},
    {"pgap"_4cc, "Gapless"},
    {"plID"_4cc, "Album ID"},
    {"purd"_4cc, "Purchase date"},
    {"purl"_4cc, "Podcast URL"},
    {"rate"_4cc, "Rating percent"},
    {"rtng"_4cc, "Rating"},
    {"sdes"_4cc, "Store description"},
    {"sfID"_4cc, "Store country"},
    {"shwm"_4cc, "Show movement"},
    {"soaa"_4cc, "Sort album artist"},
    {"soal"_4cc, "Sort album"},
    {"soar"_4cc, "Sort artist"},
    {"soco"_4cc, "Sort composer"},
    {"sonm"_4cc, "Sort title"},
    {"sosn"_4cc, "Sort show"},
    {"stik"_4cc, "Media kind"},
    {"titl"_4cc, item::title},
    {"tmpo"_4cc, "Beats per minute"},
    {"trkn"_4cc, "Track number"},
    {"tven"_4cc, "TV episode ID"},
    {"tves"_4cc, "TV episode"},
    {"tvnn"_4cc, "TV network"},
    {"tvsh"_4cc, "TV show"},
    {"tvsn"_4cc, "TV season"},
    {"yrrc"_4cc, item::year},
};

struct KeyName {
    std::string_view key;
    std::string_view name;
};
// Behind "com.apple.quicktime." (QuickTime File Format, "QuickTime metadata keys").
constexpr std::string_view quicktime_keys = "com.apple.quicktime.";
constexpr KeyName key_names[] = {
    {"album", "Album"},
    {"artist", "Artist"},
    {"artwork", "Artwork"},
    {"author", "Author"},
    {"camera.framereadouttimeinmicroseconds", "Frame readout time"},
    {"camera.identifier", "Camera identifier"},
    {"collection.user", "User collection"},
    {"comment", item::comment},
    {"content.identifier", "Content identifier"},
    {"copyright", item::copyright},
    {"creationdate", item::creation_date},
    {"description", item::description},
    {"director", item::director},
    {"displayname", item::display_name},
    {"encodedby", item::encoded_by},
    {"genre", "Genre"},
    {"information", item::information},
    {"keywords", item::keywords},
    {"location.accuracy.horizontal", "Location accuracy"},
    {"location.ISO6709", item::location},
    {"location.body", "Location body"},
    {"location.date", "Location date"},
    {"location.name", "Location name"},
    {"location.note", "Location note"},
    {"location.role", "Location role"},
    {"make", "Make"},
    {"model", "Model"},
    {"originalartist", "Original artist"},
    {"performer", "Performers"},
    {"phonogramrights", "Phonogram rights"},
    {"producer", "Producer"},
    {"publisher", "Publisher"},
    {"rating.user", "User rating"},
    {"software", item::software},
    {"title", item::title},
    {"year", item::year},
};

template <std::size_t count>
std::string_view name_of_key(const KeyName (&names)[count], std::string_view key) {
    const auto* const found = std::ranges::find(names, key, &KeyName::key);
    return found == std::end(names) ? std::string_view() : found->name;
}

std::string_view known_name(const MetadataItem& item) {
    if (item.source == ItemSource::Xmp)
        return "XMP";
    if (item.source == ItemSource::Keys) {
        const std::string_view key = item.name;
        return key.starts_with(quicktime_keys)
                   ? name_of_key(key_names, key.substr(quicktime_keys.size()))
                   : std::string_view();
    }
    const auto* const found = std::ranges::find(type_names, item.type, &TypeName::type);
    return found == std::end(type_names) ? std::string_view() : found->name;
}

} // namespace

std::string item_name(const MetadataItem& item) {
    const std::string_view name = known_name(item);
    return name.empty() ? item_key(item) : std::string(name);
}

std::string item_key(const MetadataItem& item) {
    return item.name.empty() ? text_of(item.type) : item.name;
}

std::string_view source_name(ItemSource source) {
    switch (source) {
    case ItemSource::Itunes:
        return "iTunes";
    case ItemSource::Keys:
        return "QuickTime keys";
    case ItemSource::UserText:
    case ItemSource::UserData:
    case ItemSource::Skipped:
        return "user data";
    case ItemSource::Asset:
    case ItemSource::Location:
        return "3GPP";
    case ItemSource::Xmp:
        return "XMP";
    }
    return {};
}

} // namespace vell::movies
