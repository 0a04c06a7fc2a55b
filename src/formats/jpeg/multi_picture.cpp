#include "src/formats/jpeg/multi_picture.h"

#include "src/formats/tiff/directory.h"

#include <algorithm>

namespace vell::formats::jpeg {
namespace {

// The list's entry in the first directory.
std::optional<tiff::Entry> list_entry(Window block, const tiff::Header& header) {
    const auto directory = tiff::Directory::at(block, header.first_directory, header.order);
    if (!directory)
        return std::nullopt;
    const auto entries = directory->entries();
    if (!entries)
        return std::nullopt;
    const auto found = std::ranges::find(*entries, PictureList::tag, &tiff::Entry::tag);
    return found == entries->end() || found->is_inline() ? std::nullopt : std::optional(*found);
}

} // namespace

std::optional<PictureList> PictureList::read(std::string_view index) {
    BytesInMemory source(index);
    const Window block(source);
    const auto header = tiff::Header::read(index);
    const auto entry = header ? list_entry(block, *header) : std::nullopt;
    if (!entry)
        return std::nullopt;
    PictureList list{header->order, entry->offset(header->order), {}};
    Window values = block.part(list.start, entry->value_size());
    while (const auto picture = values.read_record<Picture>(list.order))
        list.pictures.push_back(*picture);
    return list;
}

void PictureList::write(std::string& index) const {
    std::string bytes;
    for (const Picture& picture : pictures)
        append_record(bytes, picture, order);
    if (!bytes.empty())
        index.replace(start, bytes.size(), bytes);
}

} // namespace vell::formats::jpeg
