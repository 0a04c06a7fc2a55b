#include "src/formats/sound/id3.h"

#include "src/base/inflate.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <tuple>

namespace vell::formats::id3 {
namespace {

constexpr std::uint8_t oldest_version = 2;
constexpr std::uint8_t newest_version = 4;
constexpr std::uint32_t most_frames = 1U << 16U;

struct TagHeader {
    static constexpr std::size_t size = 10;
    static constexpr ByteOrder order = ByteOrder::Big;
    static constexpr std::uint8_t unsynchronised = 0x80;
    static constexpr std::uint8_t extended = 0x40; // before 2.3: compressed in no known way
    static constexpr std::uint8_t footer = 0x10;

    std::array<char, 3> identifier{};
    std::uint8_t version = 0;
    std::uint8_t flags = 0;
    std::uint32_t tag_size = 0; // seven bits of each byte

    static constexpr auto fields() {
        return std::tuple{Field{0, &TagHeader::identifier}, Field{3, &TagHeader::version},
                          Field{5, &TagHeader::flags}, Field{6, &TagHeader::tag_size}};
    }
};

// Flags of frames: those of 2.3 and those of 2.4.
namespace flag3 {
constexpr unsigned compressed = 0x80, encrypted = 0x40, grouped = 0x20;
}
namespace flag4 {
constexpr unsigned grouped = 0x40, compressed = 0x08, encrypted = 0x04, unsynchronised = 0x02,
                   has_length = 0x01;
}

constexpr std::uint32_t from_seven_bits(std::uint32_t field) {
    return (field & 0x7FU) | (field >> 1 & 0x3F80U) | (field >> 2 & 0x1FC000U) |
           (field >> 3 & 0xFE00000U);
}

constexpr bool is_frame_id(std::string_view id) {
    return std::ranges::all_of(
        id, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

// Without the zero bytes that were put behind 0xFF. Bytes that nothing was put between, whatever
// their tag says, stay as they are.
std::string resynchronised(std::string bytes) {
    constexpr auto mark = static_cast<char>(0xFF);
    constexpr unsigned first_sync = 0xE0;
    std::string result;
    result.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        result += bytes[i];
        if (bytes[i] != mark || i + 1 == bytes.size())
            continue;
        if (static_cast<unsigned char>(bytes[i + 1]) >= first_sync)
            return bytes;
        if (bytes[i + 1] == '\0')
            ++i;
    }
    return result;
}

Read<std::string> read_within(Window window, std::uint64_t limit) {
    if (window.size() > limit)
        return fault(Damage::TooLarge);
    window.seek(0);
    return window.read_bytes(window.size());
}

} // namespace

struct Tag::Expanded {
    std::string bytes;
    BytesInMemory source;

    explicit Expanded(std::string expanded) : bytes(std::move(expanded)), source(bytes) {}
    Expanded(const Expanded&) = delete;
    Expanded& operator=(const Expanded&) = delete;
};

Read<std::string> Frame::value(std::size_t limit) const {
    if (is_encrypted)
        return fault(Damage::Absent);
    std::string bytes = VELL_TRY(read_within(data, limit));
    if (is_unsynchronised)
        bytes = resynchronised(std::move(bytes));
    if (!is_compressed)
        return bytes;
    auto expanded = inflate_within(bytes, limit);
    if (!expanded)
        return fault(Damage::Corrupt);
    return std::move(expanded).value();
}

Read<Tag> Tag::read(const Window& file) {
    Window start = file.from(0);
    const auto header = VELL_TRY(start.read_record<TagHeader>());
    if (std::string_view(header.identifier.data(), header.identifier.size()) != "ID3" ||
        header.version < oldest_version || header.version > newest_version)
        return fault(Damage::Absent);
    const std::uint32_t size = from_seven_bits(header.tag_size);
    Tag tag(file.part(TagHeader::size, size));
    tag.version_ = header.version;
    tag.size_ = TagHeader::size + size;
    if (header.version == 4 && (header.flags & TagHeader::footer) != 0)
        tag.size_ += TagHeader::size;
    if (header.version == 2 && (header.flags & TagHeader::extended) != 0)
        return fault(Damage::Absent);
    tag.has_extended_header_ = (header.flags & TagHeader::extended) != 0;
    tag.is_unsynchronised_ = (header.flags & TagHeader::unsynchronised) != 0;
    return tag;
}

Read<void> Tag::each_frame(const FrameVisitor& visitor) const {
    Tag tag = *this;
    // From version 2.4 on each frame is for itself.
    if (is_unsynchronised_ && version_ < 4)
        VELL_TRY(tag.expand());
    Window frames = tag.frames_;
    if (has_extended_header_) {
        const auto field = VELL_TRY(frames.read_integer<std::uint32_t>(ByteOrder::Big));
        frames.seek(version_ < 4 ? sizeof field + std::uint64_t{field} : from_seven_bits(field));
    }
    for (std::uint32_t i = 0; i < most_frames; ++i) {
        const auto frame = VELL_TRY(tag.next(frames));
        if (!frame)
            return {};
        VELL_TRY(visitor(*frame));
    }
    return {};
}

Read<void> Tag::expand() {
    expanded_ = std::make_shared<Expanded>(
        resynchronised(VELL_TRY(read_within(frames_, longest_expanded))));
    frames_ = Window(expanded_->source);
    return {};
}

// Sizes have seven bits in each byte since 2.4, which not all writers know: where no frame follows
// but one does at the size that eight bits tell, that is meant.
Read<std::uint32_t> Tag::size_of_frame(const Window& frames, std::uint32_t field) const {
    constexpr std::uint32_t eighth_bits = 0x80808080;
    const std::uint32_t size = from_seven_bits(field);
    if (version_ < 4 || (field & eighth_bits) != 0)
        return field;
    const auto is_end = [&](std::uint32_t at) -> Read<bool> {
        Window behind = frames.from(frames.position() + at);
        const std::string id = VELL_TRY(behind.read_bytes(4));
        return frames.remaining() >= at && (id.empty() || id[0] == '\0' || is_frame_id(id));
    };
    if (size == field || VELL_TRY(is_end(size)) || !VELL_TRY(is_end(field)))
        return size;
    return field;
}

// nullopt where padding begins, or something else that is no frame.
Read<std::optional<Frame>> Tag::next(Window& frames) const {
    const std::size_t id_size = version_ == 2 ? 3 : 4;
    const std::string id = VELL_TRY(frames.read_bytes(id_size));
    if (id.size() < id_size || !is_frame_id(id))
        return std::optional<Frame>();
    std::uint32_t size = 0;
    unsigned flags = 0;
    if (version_ == 2) {
        const auto high = VELL_TRY(frames.read_integer<std::uint8_t>(ByteOrder::Big));
        size = std::uint32_t{high} << 16 |
               VELL_TRY(frames.read_integer<std::uint16_t>(ByteOrder::Big));
    } else {
        size = VELL_TRY(frames.read_integer<std::uint32_t>(ByteOrder::Big));
        flags = VELL_TRY(frames.read_integer<std::uint16_t>(ByteOrder::Big));
        size = VELL_TRY(size_of_frame(frames, size));
    }
    Frame frame{
        .id = id, .data = frames.part(frames.position(), size), .is_in_file = expanded_ == nullptr};
    frames.skip(size);
    std::uint64_t additions = 0;
    if (version_ == 3) {
        frame.is_compressed = (flags & flag3::compressed) != 0;
        frame.is_encrypted = (flags & flag3::encrypted) != 0;
        additions = (frame.is_compressed ? 4 : 0) + (frame.is_encrypted ? 1 : 0) +
                    ((flags & flag3::grouped) != 0 ? 1 : 0);
    } else if (version_ == 4) {
        frame.is_unsynchronised = is_unsynchronised_ || (flags & flag4::unsynchronised) != 0;
        frame.is_compressed = (flags & flag4::compressed) != 0;
        frame.is_encrypted = (flags & flag4::encrypted) != 0;
        additions = ((flags & flag4::grouped) != 0 ? 1 : 0) + (frame.is_encrypted ? 1 : 0) +
                    ((flags & flag4::has_length) != 0 ? 4 : 0);
    }
    if (additions > 0)
        frame.data = frame.data.part(additions, size - std::min<std::uint64_t>(additions, size));
    return std::optional(frame);
}

Read<PictureHeader> PictureHeader::read(Window value, std::uint8_t version) {
    constexpr std::size_t longest = 4096;
    constexpr std::size_t old_format_size = 3;
    std::array<char, longest> buffer{};
    value.seek(0);
    const std::string_view bytes(buffer.data(), VELL_TRY(value.read(buffer)));
    // The encoding, the kind of image, the type, the description.
    const std::size_t type_at = version == 2 ? 1 + old_format_size : bytes.find('\0', 1) + 1;
    if (type_at == 0 || type_at + 1 > bytes.size())
        return fault(Damage::CutOff);
    PictureHeader header;
    header.type = static_cast<std::uint8_t>(bytes[type_at]);
    const bool has_wide_text = bytes[0] == 1 || bytes[0] == 2;
    std::size_t at = type_at + 1;
    if (has_wide_text) {
        while (at + 1 < bytes.size() && (bytes[at] != '\0' || bytes[at + 1] != '\0'))
            at += 2;
        header.size = at + 2;
    } else {
        at = std::min(bytes.find('\0', at), bytes.size());
        header.size = at + 1;
    }
    if (header.size > bytes.size())
        return fault(Damage::CutOff);
    return header;
}

} // namespace vell::formats::id3
