#include "src/formats/camera/x3f.h"

#include <algorithm>

namespace vell::formats::x3f {
namespace {

struct DirectoryHeader {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Little;
    static constexpr std::uint32_t signature = 0x64434553; // "SECd"

    std::uint32_t entries = 0;

    static constexpr auto fields() { return std::tuple{Field{8, &DirectoryHeader::entries}}; }
};

struct Entry {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint32_t offset = 0;
    std::uint32_t length = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &Entry::offset}, Field{4, &Entry::length}};
    }
};

} // namespace

Read<std::vector<Image>> read_images(const Window& file) {
    Window directory = file;
    if (file.size() < sizeof(std::uint32_t))
        return fault(Damage::CutOff);
    directory.seek(file.size() - sizeof(std::uint32_t));
    directory.seek(VELL_TRY(directory.read_integer<std::uint32_t>(ByteOrder::Little)));
    const auto header = VELL_TRY(directory.read_record<DirectoryHeader>());
    std::vector<Image> images;
    for (std::uint32_t i = 0; i < std::min(header.entries, most_sections); ++i) {
        const auto entry = VELL_TRY(if_sound(directory.read_record<Entry>()));
        if (!entry)
            break;
        Window section = file.part(entry->offset, entry->length);
        // Sections of other kinds have other signatures.
        if (const auto image = VELL_TRY(if_sound(section.read_record<ImageHeader>())))
            images.push_back({*image, section.from(ImageHeader::size)});
    }
    return images;
}

} // namespace vell::formats::x3f
