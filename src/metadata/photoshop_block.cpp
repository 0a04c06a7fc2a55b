#include "src/metadata/photoshop_block.h"

#include "src/base/bytes.h"

#include <algorithm>
#include <optional>

namespace vell::metadata {
namespace {

constexpr std::string_view own_signature = "8BIM";
// Other programs' resources have the same structure.
constexpr std::string_view signatures[] = {own_signature, "PHUT", "DCSR", "AgHg", "MeSa"};

constexpr std::size_t even(std::size_t size) {
    return size + size % 2;
}

struct ImageResource {
    std::string_view signature;
    std::uint16_t id;
    std::string_view data;
    std::string_view bytes; // all of it

    bool is(ResourceId wanted) const {
        return signature == own_signature && id == static_cast<std::uint16_t>(wanted);
    }

    // nullopt where no whole resource begins. The last one may lack its padding.
    static std::optional<ImageResource> read(std::string_view block) {
        const std::string_view begins = block.substr(0, 4);
        if (std::ranges::count(signatures, begins) == 0)
            return std::nullopt;
        const auto id = load<std::uint16_t>(block, 4, ByteOrder::Big);
        const auto name_length = load<std::uint8_t>(block, 6, ByteOrder::Big);
        if (!id || !name_length)
            return std::nullopt;
        const std::size_t size_at = 6 + even(std::size_t{1} + *name_length);
        const auto size = load<std::uint32_t>(block, size_at, ByteOrder::Big);
        const std::size_t data_at = size_at + 4;
        if (!size || *size > block.size() - data_at)
            return std::nullopt;
        return ImageResource{begins, *id, block.substr(data_at, *size),
                             block.substr(0, data_at + even(*size))};
    }
};

void append_resource(std::string& bytes, ResourceId id, std::string_view data) {
    if (data.empty())
        return;
    bytes += own_signature;
    append_integer<std::uint16_t>(bytes, static_cast<std::uint16_t>(id), ByteOrder::Big);
    append_integer<std::uint16_t>(bytes, 0, ByteOrder::Big); // no name
    append_integer<std::uint32_t>(bytes, static_cast<std::uint32_t>(data.size()), ByteOrder::Big);
    bytes += data;
    bytes.append(data.size() % 2, '\0');
}

} // namespace

std::string_view find_resource(std::string_view block, ResourceId id) {
    while (const auto resource = ImageResource::read(block)) {
        if (resource->is(id))
            return resource->data;
        block.remove_prefix(resource->bytes.size());
    }
    return {};
}

Result<std::string> with_resource(std::string_view block, ResourceId id, std::string_view data) {
    if (data.size() > longest_readable_data)
        return Failure{ErrorCode::ResourceTooLarge};
    std::string bytes;
    bool is_written = false;
    while (const auto resource = ImageResource::read(block)) {
        block.remove_prefix(resource->bytes.size());
        if (!resource->is(id)) {
            bytes += resource->bytes;
            bytes.append(resource->bytes.size() % 2, '\0');
        } else if (!is_written) {
            append_resource(bytes, id, data);
            is_written = true;
        }
    }
    if (!is_written)
        append_resource(bytes, id, data);
    return bytes.append(block);
}

} // namespace vell::metadata
