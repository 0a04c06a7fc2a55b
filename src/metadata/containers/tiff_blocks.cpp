#include "src/formats/tiff/directory.h"
#include "src/metadata/containers/block_collector.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace vell::metadata {
namespace {

using namespace formats;

// Raw photographs of Panasonic have a JPEG picture in a tag, with tags that say more of the
// photograph than the directory around it.
constexpr std::uint16_t panasonic_number = 85;
constexpr std::uint16_t panasonic_picture = 46;

class FirstDirectory {
  public:
    static Read<FirstDirectory> of(const Window& file) {
        const auto start = VELL_TRY(tiff::Start::read(file));
        const auto directory =
            VELL_TRY(tiff::Directory::at(file, start.first_directory, start.layout));
        auto entries = VELL_TRY(directory.entries());
        return FirstDirectory(file, start, std::move(entries));
    }
    bool is_of_panasonic() const { return start_.magic == panasonic_number; }

    // The value's place; nullopt for a tag that is not there, or whose value stands in its entry.
    std::optional<Window> place_of(std::uint16_t tag) const {
        const auto found = std::ranges::find(entries_, tag, &tiff::Entry::tag);
        if (found == entries_.end() || found->is_inline())
            return std::nullopt;
        return file_.part(found->place(start_.layout.order), found->value_size());
    }
    // The value itself, for which there is room. Absent for a tag that is not there.
    Read<std::string> value(std::uint16_t tag, BlockCollector& found) const {
        const auto place = place_of(tag);
        return place ? found.read(*place) : Read<std::string>(fault(Damage::Absent));
    }

  private:
    FirstDirectory(const Window& file, const tiff::Start& start, std::vector<tiff::Entry> entries)
        : file_(file), start_(start), entries_(std::move(entries)) {}

    Window file_;
    tiff::Start start_;
    std::vector<tiff::Entry> entries_;
};

// What has tags of its own.
Read<void> find_values(const FirstDirectory& first, BlockCollector& found) {
    if (found.wants_xmp())
        if (auto packet = VELL_TRY(if_sound(first.value(tiff::tag::xmp_packet, found))))
            found.set_xmp(*std::move(packet));
    if (found.wants_iptc())
        if (auto datasets = VELL_TRY(if_sound(first.value(tiff::tag::iptc_block, found))))
            found.set_iptc(*std::move(datasets));
    if (found.wants_icc())
        if (auto profile = VELL_TRY(if_sound(first.value(tiff::tag::icc_profile, found))))
            found.set_icc(*std::move(profile));
    if (found.wants_resources())
        if (const auto resources = first.place_of(tiff::tag::photoshop_resources))
            VELL_TRY(if_sound(find_in_resources(*resources, found)));
    return {};
}

} // namespace

Read<void> find_in_tiff(const Window& file, BlockCollector& found) {
    const auto directory = VELL_TRY(if_sound(FirstDirectory::of(file)));
    if (directory && directory->is_of_panasonic())
        if (const auto picture = directory->place_of(panasonic_picture))
            VELL_TRY(if_sound(find_in_jpeg(*picture, found)));
    if (found.wanted().tags)
        VELL_TRY(if_sound(found.add_tags(file)));
    return directory ? find_values(*directory, found) : Read<void>();
}

} // namespace vell::metadata
