// Image resources (Adobe Photoshop File Formats, "Image Resource Blocks"), the one walk over them.
#pragma once

#include "src/formats/window.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace vell::formats::photoshop {

enum class ResourceId : std::uint16_t {
    Resolution = 0x03ED,
    Iptc = 0x0404,
    ImageUrl = 0x040B,
    Thumbnail = 0x040C,
    IccProfile = 0x040F,
    Exif = 0x0422,
    Xmp = 0x0424,
};

inline constexpr std::string_view own_signature = "8BIM";

// Bytes before the data of a resource without a name: signature and identifier, the name's field,
// the size.
inline constexpr std::size_t nameless_header_size = 4 + 2 + 2 + 4;

// What stands before a resource's data.
struct ResourceHeader {
    static constexpr std::size_t longest = 4 + 2 + 256 + 4; // with the longest name

    std::string_view signature; // other programs have their own
    std::uint16_t id;
    std::size_t size; // of the header
    std::uint32_t data_size;

    // Absent where the bytes begin with no signature, CutOff when they end before the data.
    static Read<ResourceHeader> read(std::string_view bytes);
};

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

// A resource in a file, whose data stay there.
struct ResourcePart {
    bool is_own; // not of another program
    std::uint16_t id;
    Window data;

    bool is(ResourceId wanted) const { return is_own && id == static_cast<std::uint16_t>(wanted); }
};

class ResourceWalk {
  public:
    explicit ResourceWalk(const Window& resources) : resources_(resources) { resources_.seek(0); }

    // nullopt where no resource begins.
    Read<std::optional<ResourcePart>> next();

  private:
    Window resources_;
};

// The resources of a Photoshop file ("Image Resources Section"). Absent in another file.
Read<Window> find_resources(Window file);

// The header of a Photoshop file ("File Header Section"), of either version.
struct FileHeader {
    static constexpr std::size_t size = 26;
    static constexpr ByteOrder order = ByteOrder::Big;
    static constexpr std::uint32_t signature = 0x38425053; // "8BPS"

    std::uint16_t channels = 0;
    std::uint32_t height = 0;
    std::uint32_t width = 0;
    std::uint16_t depth = 0; // of a channel

    static constexpr auto fields() {
        return std::tuple{Field{12, &FileHeader::channels}, Field{14, &FileHeader::height},
                          Field{18, &FileHeader::width}, Field{22, &FileHeader::depth}};
    }
};

// Pixels of an inch, with 16 bits behind the point ("ResolutionInfo").
struct ResolutionInfo {
    static constexpr std::size_t size = 16;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t horizontal = 0;
    std::uint32_t vertical = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &ResolutionInfo::horizontal},
                          Field{8, &ResolutionInfo::vertical}};
    }
};

// What the data of a thumbnail begin with ("Thumbnail Resource Format").
struct ThumbnailHeader {
    static constexpr std::size_t size = 28;
    static constexpr ByteOrder order = ByteOrder::Big;
    static constexpr std::uint32_t jpeg = 1;

    std::uint32_t format = 0;
    std::uint32_t compressed_size = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &ThumbnailHeader::format},
                          Field{20, &ThumbnailHeader::compressed_size}};
    }
};

// What a resource begins with.
std::string start_of_resource(ResourceId id);

// With padding, without a name.
void append_resource(std::string& bytes, ResourceId id, std::string_view data);

} // namespace vell::formats::photoshop
