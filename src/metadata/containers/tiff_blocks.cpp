#include "src/formats/tiff/directory.h"
#include "src/metadata/containers/block_collector.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace vell::metadata {
namespace {

using namespace formats;

class FirstDirectory {
  public:
    static Read<FirstDirectory> of(Window file) {
        file.seek(0);
        const auto header = tiff::Header::read(VELL_TRY(file.read_bytes(tiff::Header::size)));
        if (!header)
            return fault(Damage::Absent);
        const auto directory =
            VELL_TRY(tiff::Directory::at(file, header->first_directory, header->order));
        return FirstDirectory(file, header->order, VELL_TRY(directory.entries()));
    }

    // The value's place; nullopt for a tag that is not there, or whose value stands in its entry.
    std::optional<Window> place_of(std::uint16_t tag) const {
        const auto found = std::ranges::find(entries_, tag, &tiff::Entry::tag);
        if (found == entries_.end() || found->is_inline())
            return std::nullopt;
        return file_.part(found->offset(order_), found->value_size());
    }
    // The value itself, for which there is room. Absent for a tag that is not there.
    Read<std::string> value(std::uint16_t tag, BlockCollector& found) const {
        const auto place = place_of(tag);
        return place ? found.read(*place) : Read<std::string>(fault(Damage::Absent));
    }

  private:
    FirstDirectory(const Window& file, ByteOrder order, std::vector<tiff::Entry> entries)
        : file_(file), order_(order), entries_(std::move(entries)) {}

    Window file_;
    ByteOrder order_;
    std::vector<tiff::Entry> entries_;
};

} // namespace

Read<void> find_in_tiff(const Window& file, BlockCollector& found) {
    if (found.wants_tags())
        VELL_TRY(if_sound(found.add_tags(file)));
    const FirstDirectory first = VELL_TRY(FirstDirectory::of(file));
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

} // namespace vell::metadata
