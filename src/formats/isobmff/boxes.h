// The boxes of ISO base media files (ISO/IEC 14496-12, section 4.2), which are the atoms of
// QuickTime files (QuickTime File Format, "Atoms"); the one walk over them.
#pragma once

#include "src/formats/window.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace vell::formats::isobmff {

// Four bytes that name a type, a brand or a codec, as the integer that they are in the file.
enum class FourCc : std::uint32_t {};

constexpr FourCc four_cc(std::string_view four) {
    return FourCc{*load<std::uint32_t>(four, 0, ByteOrder::Big)};
}
consteval FourCc operator""_4cc(const char* four, std::size_t size) {
    return four_cc({four, size});
}
// The types of user data that begin with a copyright sign: classic("nam") is ©nam.
constexpr FourCc classic(std::string_view three) {
    const std::array<char, 4> four{'\xA9', three[0], three[1], three[2]};
    return four_cc({four.data(), four.size()});
}

// As UTF-8: the copyright sign for its byte in Mac OS Roman, and "0x0000002A" for bytes that are no
// characters.
std::string text_of(FourCc four);

struct BoxHeader {
    static constexpr std::size_t size = 8;
    static constexpr ByteOrder order = ByteOrder::Big;
    static constexpr std::uint32_t to_the_end = 0;
    static constexpr std::uint32_t has_large_size = 1;

    std::uint32_t box_size = 0; // with this header
    FourCc type{};

    static constexpr auto fields() {
        return std::tuple{Field{0, &BoxHeader::box_size}, Field{4, &BoxHeader::type}};
    }
};

// What full boxes begin their content with (section 4.2).
struct FullBoxHeader {
    static constexpr std::size_t size = 4;
    static constexpr ByteOrder order = ByteOrder::Big;
    // Versions above are of nothing that is documented.
    static constexpr std::uint8_t highest_version = 2;

    std::uint32_t version_and_flags = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &FullBoxHeader::version_and_flags}};
    }
    std::uint8_t version() const { return static_cast<std::uint8_t>(version_and_flags >> 24); }
    std::uint32_t flags() const { return version_and_flags & 0xFFFFFF; }
    bool is_too_high() const { return version() > highest_version; }
};

using UserType = std::array<char, 16>;
// Of the box with an XMP packet (XMP part 3, 1.2.7.1).
inline constexpr UserType xmp_user_type{'\xBE', '\x7A', '\xCF', '\xCB', '\x97', '\xA9',
                                        '\x42', '\xE8', '\x9C', '\x71', '\x99', '\x94',
                                        '\x91', '\xE3', '\xAF', '\xAC'};

struct Box {
    FourCc type{};
    UserType user_type{}; // of a "uuid" box
    std::uint64_t start = 0;
    std::uint64_t header_size = 0;
    Window content;
    // Of a last box whose size is left open.
    bool runs_to_the_end = false;

    std::uint64_t size() const { return header_size + content.announced(); }
};

class BoxWalk {
  public:
    explicit BoxWalk(const Window& around) : around_(around) { around_.seek(0); }

    // nullopt where no whole header is left. CutOff when a long header is torn, Corrupt for a box
    // that is smaller than its header; nothing that follows can be found then. A box that reaches
    // beyond the end has the content that is there.
    Read<std::optional<Box>> next();

    // Where the next box is looked for.
    std::uint64_t position() const { return around_.start() + around_.position(); }

  private:
    Window around_;
};

// What is done with each of several boxes; a fault ends the walk.
using BoxVisitor = std::function<Read<void>(Box&)>;

// Gives each of the boxes; where the walk itself finds damage, it ends there without a fault, for
// what came before is good. Faults of the source are passed on.
Read<void> each_box(const Window& around, const BoxVisitor& visitor);

// The first box of that type, under the same rules.
Read<std::optional<Box>> find_box(const Window& around, FourCc type);
// The content of the first "uuid" box of that type.
Read<std::optional<Window>> find_user_box(const Window& around, const UserType& type);

// Reads a full box's header at the content's position. Absent when the version is too high.
Read<FullBoxHeader> read_full_box(Window& content);

// Whether the content of a "meta" box begins with its handler at once, as in QuickTime files, where
// it is no full box.
Read<bool> is_plain_meta(Window content);

} // namespace vell::formats::isobmff
