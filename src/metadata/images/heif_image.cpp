#include "src/metadata/images/heif_image.h"

#include "src/formats/isobmff/items.h"

#include <algorithm>
#include <array>
#include <set>

namespace vell::metadata {
namespace {

using namespace formats::isobmff;

struct Codec {
    FourCc type;
    std::string_view name;
};
constexpr std::array codecs{
    Codec{"hvc1"_4cc, "HEVC"},         Codec{"hev1"_4cc, "HEVC"},
    Codec{"lhv1"_4cc, "HEVC"},         Codec{"av01"_4cc, "AV1"},
    Codec{"avc1"_4cc, "H.264"},        Codec{"vvc1"_4cc, "VVC"},
    Codec{"j2k1"_4cc, "JPEG 2000"},    Codec{"jpeg"_4cc, "Photo - JPEG"},
    Codec{"unci"_4cc, "Uncompressed"},
};
// Images that are made of others (6.6.2).
constexpr std::array derived{"grid"_4cc, "iovl"_4cc, "iden"_4cc, "tmap"_4cc};

bool is_image(FourCc type) {
    return std::ranges::find(codecs, type, &Codec::type) != codecs.end() ||
           std::ranges::find(derived, type) != derived.end();
}

std::uint64_t count_images(const Items& items) {
    std::set<ItemId> parts; // of other images, or made for them
    for (const ItemReference& reference : items.references()) {
        if (reference.type == "dimg"_4cc)
            parts.insert(reference.to.begin(), reference.to.end());
        else if (reference.type == "thmb"_4cc || reference.type == "auxl"_4cc)
            parts.insert(reference.from);
    }
    const auto count = std::ranges::count_if(items.all(), [&](const auto& each) {
        return is_image(each.second.type) && !each.second.is_hidden && !parts.contains(each.first);
    });
    return std::max<std::uint64_t>(1, static_cast<std::uint64_t>(count));
}

} // namespace

Result<ImageHeader> read_heif_header(formats::Window file) {
    constexpr unsigned usual_depth = 24;
    const auto unless_unreadable = [](const formats::Fault& fault) {
        return Failure{fault.damage == formats::Damage::Unreadable ? fault.of_source
                                                                   : ErrorCode::NotSupported};
    };
    const auto items = Items::read(file);
    if (!items)
        return unless_unreadable(items.error());
    const auto image = items->image(items->primary());
    if (!image)
        return unless_unreadable(image.error());
    ImageHeader header;
    header.width = image->width;
    header.height = image->height;
    header.depth = image->depth == 0 ? usual_depth : image->depth;
    header.image_count = count_images(*items);
    header.codec_type = text_of(image->codec);
    const auto* const codec = std::ranges::find(codecs, image->codec, &Codec::type);
    header.codec_name = codec == codecs.end() ? "HEIF" : codec->name;
    return header;
}

} // namespace vell::metadata
