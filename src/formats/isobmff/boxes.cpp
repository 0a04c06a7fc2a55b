#include "src/formats/isobmff/boxes.h"

#include "src/base/number_text.h"

#include <algorithm>

namespace vell::formats::isobmff {

std::string text_of(FourCc four) {
    constexpr std::string_view copyright_sign = "\u00A9";
    constexpr char copyright_byte = '\xA9';
    std::string bytes;
    append_integer<std::uint32_t>(bytes, static_cast<std::uint32_t>(four), ByteOrder::Big);
    const auto is_printable = [](char c) {
        return c >= ' ' && c <= '~';
    };
    if (bytes.front() == copyright_byte &&
        std::all_of(bytes.begin() + 1, bytes.end(), is_printable))
        return std::string(copyright_sign) + bytes.substr(1);
    if (std::ranges::all_of(bytes, is_printable))
        return bytes;
    return "0x" + hexadecimal(bytes);
}

Read<std::optional<Box>> BoxWalk::next() {
    if (around_.remaining() < BoxHeader::size)
        return std::optional<Box>();
    Box box{.content = around_};
    const std::uint64_t start = around_.position();
    box.start = position();
    const auto header = VELL_TRY(around_.read_record<BoxHeader>());
    box.type = header.type;
    std::uint64_t size = header.box_size;
    if (size == BoxHeader::has_large_size)
        size = VELL_TRY(around_.read_integer<std::uint64_t>(ByteOrder::Big));
    else if (size == BoxHeader::to_the_end) {
        box.runs_to_the_end = true;
        size = around_.size() - start;
    }
    if (box.type == "uuid"_4cc && size >= around_.position() - start + sizeof(UserType))
        VELL_TRY(around_.read_exactly(box.user_type));
    box.header_size = around_.position() - start;
    if (size < box.header_size)
        return fault(Damage::Corrupt);
    box.content = around_.part(around_.position(), size - box.header_size);
    around_.skip(size - box.header_size);
    return std::optional(box);
}

Read<void> each_box(const Window& around, const BoxVisitor& visitor) {
    BoxWalk walk(around);
    for (;;) {
        auto box = VELL_TRY(if_sound(walk.next()));
        if (!box || !*box)
            return {};
        VELL_TRY(visitor(**box));
    }
}

Read<std::optional<Box>> find_box(const Window& around, FourCc type) {
    BoxWalk walk(around);
    for (;;) {
        auto box = VELL_TRY(if_sound(walk.next()));
        if (!box || !*box)
            return std::optional<Box>();
        if ((*box)->type == type)
            return *box;
    }
}

Read<std::optional<Window>> find_user_box(const Window& around, const UserType& type) {
    BoxWalk walk(around);
    for (;;) {
        const auto box = VELL_TRY(if_sound(walk.next()));
        if (!box || !*box)
            return std::optional<Window>();
        if ((*box)->type == "uuid"_4cc && (*box)->user_type == type)
            return std::optional((*box)->content);
    }
}

Read<FullBoxHeader> read_full_box(Window& content) {
    const auto header = VELL_TRY(content.read_record<FullBoxHeader>());
    if (header.is_too_high())
        return fault(Damage::Absent);
    return header;
}

Read<bool> is_plain_meta(Window content) {
    content.seek(0);
    const auto header = VELL_TRY(if_sound(content.read_record<BoxHeader>()));
    return header && header->type == "hdlr"_4cc;
}

} // namespace vell::formats::isobmff
