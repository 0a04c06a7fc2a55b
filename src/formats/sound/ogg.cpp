#include "src/formats/sound/ogg.h"

#include <array>
#include <tuple>

namespace vell::formats::ogg {
namespace {

struct PageHeader {
    static constexpr std::size_t size = 27;
    static constexpr ByteOrder order = ByteOrder::Little;
    static constexpr std::uint32_t signature = 0x5367674F; // "OggS"

    std::uint32_t stream = 0;
    std::uint8_t segments = 0;

    static constexpr auto fields() {
        return std::tuple{Field{14, &PageHeader::stream}, Field{26, &PageHeader::segments}};
    }
};

constexpr std::uint8_t full_segment = 255; // another one follows that belongs to it

// Takes a text with its length before it.
std::optional<std::string_view> take_text(std::string_view& bytes) {
    const auto length = load<std::uint32_t>(bytes, 0, ByteOrder::Little);
    if (!length || *length > bytes.size() - sizeof *length)
        return std::nullopt;
    const std::string_view text = bytes.substr(sizeof *length, *length);
    bytes.remove_prefix(sizeof *length + *length);
    return text;
}

} // namespace

// False where no page follows.
Read<bool> PacketWalk::next_page() {
    for (;;) {
        const auto header = VELL_TRY(if_sound(file_.read_record<PageHeader>()));
        if (!header)
            return false;
        lengths_ = VELL_TRY(file_.read_bytes(header->segments));
        segment_ = 0;
        if (!stream_)
            stream_ = header->stream;
        if (*stream_ == header->stream)
            return true;
        for (const char length : lengths_)
            file_.skip(static_cast<std::uint8_t>(length));
    }
}

Read<std::optional<std::string>> PacketWalk::next(std::uint64_t limit) {
    std::string packet;
    for (;;) {
        while (segment_ == lengths_.size())
            if (!VELL_TRY(next_page()))
                return std::optional<std::string>();
        const auto length = static_cast<std::uint8_t>(lengths_[segment_++]);
        if (packet.size() + length > limit)
            return fault(Damage::TooLarge);
        const std::string bytes = VELL_TRY(file_.read_bytes(length));
        if (bytes.size() < length)
            return std::optional<std::string>();
        packet += bytes;
        if (length < full_segment)
            return std::optional(std::move(packet));
    }
}

Read<void> each_comment(std::string_view bytes, const CommentVisitor& visitor) {
    if (!take_text(bytes)) // who wrote it
        return fault(Damage::CutOff);
    const auto count = load<std::uint32_t>(bytes, 0, ByteOrder::Little);
    if (!count)
        return fault(Damage::CutOff);
    bytes.remove_prefix(sizeof *count);
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto comment = take_text(bytes);
        if (!comment)
            return fault(Damage::CutOff);
        VELL_TRY(visitor(*comment));
    }
    return {};
}

} // namespace vell::formats::ogg
