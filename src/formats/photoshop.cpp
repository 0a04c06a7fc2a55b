#include "src/formats/photoshop.h"

#include "src/base/bytes.h"

#include <algorithm>

namespace vell::formats::photoshop {
namespace {

// Other programs' resources have the same structure.
constexpr std::string_view signatures[] = {own_signature, "PHUT", "DCSR", "AgHg", "MeSa"};
constexpr std::size_t signature_size = 4;

constexpr std::size_t even(std::size_t size) {
    return size + size % 2;
}

} // namespace

Read<ResourceHeader> ResourceHeader::read(std::string_view bytes) {
    constexpr std::size_t name_start = signature_size + sizeof(std::uint16_t);
    const std::string_view begins = bytes.substr(0, signature_size);
    if (std::ranges::count(signatures, begins) == 0)
        return fault(Damage::Absent);
    const auto id = load<std::uint16_t>(bytes, signature_size, ByteOrder::Big);
    const auto name_length = load<std::uint8_t>(bytes, name_start, ByteOrder::Big);
    if (!id || !name_length)
        return fault(Damage::CutOff);
    const std::size_t size_start = name_start + even(sizeof *name_length + *name_length);
    const auto size = load<std::uint32_t>(bytes, size_start, ByteOrder::Big);
    if (!size)
        return fault(Damage::CutOff);
    return ResourceHeader{begins, *id, size_start + sizeof *size, *size};
}

Read<ImageResource> ImageResource::read(std::string_view bytes) {
    const ResourceHeader header = VELL_TRY(ResourceHeader::read(bytes));
    if (header.data_size > bytes.size() - header.size)
        return fault(Damage::CutOff);
    return ImageResource{header.signature, header.id, header.size,
                         bytes.substr(header.size, header.data_size),
                         bytes.substr(0, header.size + even(header.data_size))};
}

Read<std::optional<ResourcePart>> ResourceWalk::next() {
    const std::uint64_t start = resources_.position();
    const std::string bytes = VELL_TRY(resources_.read_bytes(ResourceHeader::longest));
    const auto header = VELL_TRY(if_sound(ResourceHeader::read(bytes)));
    if (!header)
        return std::optional<ResourcePart>();
    const std::uint64_t data_start = start + header->size;
    resources_.seek(data_start + even(header->data_size));
    return std::optional(ResourcePart{header->signature == own_signature, header->id,
                                      resources_.part(data_start, header->data_size)});
}

Read<Window> find_resources(Window file) {
    constexpr std::uint64_t header_size = 26;
    constexpr std::uint32_t signature = 0x38425053; // "8BPS"
    file.seek(0);
    if (VELL_TRY(file.read_integer<std::uint32_t>(ByteOrder::Big)) != signature)
        return fault(Damage::Absent);
    file.seek(header_size);
    file.skip(VELL_TRY(file.read_integer<std::uint32_t>(ByteOrder::Big))); // colours of its mode
    const auto size = VELL_TRY(file.read_integer<std::uint32_t>(ByteOrder::Big));
    return file.part(file.position(), size);
}

std::string start_of_resource(ResourceId id) {
    std::string bytes(own_signature);
    append_integer<std::uint16_t>(bytes, static_cast<std::uint16_t>(id), ByteOrder::Big);
    return bytes;
}

void append_resource(std::string& bytes, ResourceId id, std::string_view data) {
    bytes += start_of_resource(id);
    append_integer<std::uint16_t>(bytes, 0, ByteOrder::Big); // no name
    append_integer<std::uint32_t>(bytes, static_cast<std::uint32_t>(data.size()), ByteOrder::Big);
    bytes += data;
    bytes.append(data.size() % 2, '\0');
}

} // namespace vell::formats::photoshop
