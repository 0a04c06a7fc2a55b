#include "src/metadata/writing/photoshop_block.h"

namespace vell::metadata {
namespace {

using photoshop::ImageResource;

void append_new(std::string& bytes, photoshop::ResourceId id, std::string_view data) {
    if (!data.empty())
        append_resource(bytes, id, data);
}

} // namespace

std::string_view find_resource(std::string_view block, photoshop::ResourceId id) {
    while (const auto resource = ImageResource::read(block)) {
        if (resource->is(id))
            return resource->data;
        block.remove_prefix(resource->bytes.size());
    }
    return {};
}

Result<std::string> with_resource(std::string_view block, photoshop::ResourceId id,
                                  std::string_view data) {
    if (data.size() > longest_readable_data)
        return Failure{ErrorCode::ResourceTooLarge};
    constexpr std::size_t most_of_header = 16;
    std::string bytes;
    bytes.reserve(block.size() - find_resource(block, id).size() + most_of_header + data.size());
    bool is_written = false;
    while (const auto resource = ImageResource::read(block)) {
        block.remove_prefix(resource->bytes.size());
        if (!resource->is(id)) {
            bytes += resource->bytes;
            bytes.append(resource->bytes.size() % 2, '\0');
        } else if (!is_written) {
            append_new(bytes, id, data);
            is_written = true;
        }
    }
    if (!is_written)
        append_new(bytes, id, data);
    bytes += block;
    return bytes;
}

} // namespace vell::metadata
