// Image resources (Adobe Photoshop File Formats, "Image Resource Blocks"), the one walk over them.
#pragma once

#include "src/formats/damage.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vell::formats::photoshop {

enum class ResourceId : std::uint16_t {
    Iptc = 0x0404,
    ImageUrl = 0x040B,
};

inline constexpr std::string_view own_signature = "8BIM";

// Bytes before the data of a resource without a name: signature and identifier, the name's field,
// the size.
inline constexpr std::size_t nameless_header_size = 4 + 2 + 2 + 4;

struct ImageResource {
    std::string_view signature; // other programs have their own
    std::uint16_t id;
    std::size_t data_start;
    std::string_view data;
    std::string_view bytes; // all of it; the last one may lack its padding

    bool is(ResourceId wanted) const {
        return signature == own_signature && id == static_cast<std::uint16_t>(wanted);
    }

    // Absent where the bytes begin with no signature, CutOff when they end before the resource.
    static Read<ImageResource> read(std::string_view bytes);
};

// What a resource begins with.
std::string start_of_resource(ResourceId id);

// With padding, without a name.
void append_resource(std::string& bytes, ResourceId id, std::string_view data);

} // namespace vell::formats::photoshop
