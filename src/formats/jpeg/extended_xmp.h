// An XMP packet that is too long for a segment (XMP part 3, 1.1.3.1): its rest stands in segments
// of their own, and the packet names it by its MD5.
#pragma once

#include "src/formats/window.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace vell::formats::jpeg {

// What stands in such a segment behind its identifier.
struct ExtensionHeader {
    static constexpr std::size_t size = 40;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::array<char, 32> name{}; // the MD5 of the whole in hexadecimal digits
    std::uint32_t full_length = 0;
    std::uint32_t offset = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &ExtensionHeader::name},
                          Field{32, &ExtensionHeader::full_length},
                          Field{36, &ExtensionHeader::offset}};
    }
};

class ExtendedXmp {
  public:
    // A segment's content behind its identifier; CutOff for one that is too short.
    Read<void> add(Window content);

    // The extension of that name, whole and with the MD5 that it is called by. Absent when there is
    // none, Corrupt for one with gaps or another MD5, TooLarge beyond `most` bytes.
    Read<std::string> read(std::string_view name, std::uint64_t most) const;

  private:
    struct Part {
        ExtensionHeader header;
        Window data;
    };
    std::vector<Part> parts_;
};

// The name of the extension that a packet has.
std::optional<std::string_view> extension_name(std::string_view packet);

// The packet with the descriptions of its extension; nullopt where they cannot be put together.
std::optional<std::string> joined_packet(std::string_view packet, std::string_view extension);

} // namespace vell::formats::jpeg
