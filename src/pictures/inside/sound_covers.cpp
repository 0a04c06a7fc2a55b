#include "src/pictures/inside/sound_covers.h"

#include "src/base/base64.h"
#include "src/formats/riff.h"
#include "src/formats/sound/flac.h"
#include "src/formats/sound/id3.h"
#include "src/formats/sound/ogg.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <variant>

namespace vell::pictures {
namespace {

using namespace formats;
using namespace std::string_view_literals;

// Pictures as they come, and how much they are the cover.
class Covers {
  public:
    explicit Covers(FoundPictures& found) : found_(found) {}

    void add(std::uint32_t type, std::variant<Window, std::string> picture) {
        if (covers_.size() < most_pictures)
            covers_.push_back({rank_of(type), std::move(picture)});
    }
    CopyRoom& room() { return found_.room(); }

    Read<void> give() {
        std::ranges::stable_sort(covers_, {}, &Cover::rank);
        for (Cover& each : covers_) {
            if (const auto* const part = std::get_if<Window>(&each.picture))
                VELL_TRY(found_.add(*part, EmbeddedPicture::Kind::Cover));
            else
                VELL_TRY(found_.add_copy(std::move(std::get<std::string>(each.picture)),
                                         EmbeddedPicture::Kind::Cover));
        }
        return {};
    }

  private:
    struct Cover {
        int rank;
        std::variant<Window, std::string> picture;
    };

    static int rank_of(std::uint32_t type) {
        using enum id3::PictureType;
        if (type == std::uint32_t{static_cast<std::uint8_t>(FrontCover)})
            return 0;
        return type == std::uint32_t{static_cast<std::uint8_t>(FileIcon)} ||
                       type == std::uint32_t{static_cast<std::uint8_t>(OtherIcon)}
                   ? 2
                   : 1;
    }

    std::vector<Cover> covers_;
    FoundPictures& found_;
};

Read<void> read_frame(const id3::Tag& tag, const id3::Frame& frame, Covers& covers) {
    if (frame.id != "APIC" && frame.id != "PIC")
        return {};
    if (frame.is_plain()) {
        const auto header = VELL_TRY(id3::PictureHeader::read(frame.data, tag.version()));
        // A torn frame is no whole picture.
        covers.add(header.type, frame.data.part(header.size, frame.data.announced() - header.size));
        return {};
    }
    std::string value =
        VELL_TRY(covers.room().take(frame.value(static_cast<std::size_t>(covers.room().left()))));
    BytesInMemory source(value);
    const auto header = VELL_TRY(id3::PictureHeader::read(Window(source), tag.version()));
    value.erase(0, static_cast<std::size_t>(header.size));
    covers.add(header.type, std::move(value));
    return {};
}

Read<void> read_tag(const Window& file, Covers& covers) {
    const auto tag = VELL_TRY(id3::Tag::read(file));
    return tag.each_frame(
        [&](const id3::Frame& frame) { return if_sound(read_frame(tag, frame, covers)); });
}

Read<void> read_flac(const Window& file, Covers& covers) {
    return flac::each_block(file, [&](flac::BlockType type, const Window& block) -> Read<void> {
        if (type != flac::BlockType::Picture)
            return {};
        const auto picture = VELL_TRY(if_sound(flac::Picture::read(block)));
        if (picture)
            covers.add(picture->type, picture->data);
        return {};
    });
}

// The tag, and a FLAC stream behind it.
Read<void> read_tagged_file(const Window& file, Covers& covers) {
    const auto tag = VELL_TRY(id3::Tag::read(file));
    VELL_TRY(if_sound(read_tag(file, covers)));
    return read_flac(file.from(tag.size()), covers);
}

// A picture's block that stands in comments or packets. It gives its memory for the picture.
Read<void> copy_block(std::string block, Covers& covers) {
    BytesInMemory source(block);
    const auto picture = VELL_TRY(flac::Picture::read(Window(source)));
    if (!picture.data.is_whole())
        return fault(Damage::CutOff);
    block.erase(0, static_cast<std::size_t>(picture.data.start()));
    block.resize(static_cast<std::size_t>(picture.data.size()));
    covers.add(picture.type, VELL_TRY(covers.room().take(std::move(block))));
    return {};
}

Read<void> read_comment(std::string_view comment, Covers& covers) {
    constexpr std::string_view name = "METADATA_BLOCK_PICTURE=";
    const bool is_picture =
        std::ranges::equal(comment.substr(0, name.size()), name, {},
                           [](char c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; });
    auto block = is_picture ? from_base64(comment.substr(name.size())) : std::nullopt;
    if (!block)
        return {};
    return copy_block(*std::move(block), covers);
}

// Of a packet the comments, which begin behind its name; nothing for another packet.
std::string_view comments_in(std::string_view packet) {
    for (const std::string_view name : {"\3vorbis"sv, "OpusTags"sv})
        if (packet.starts_with(name))
            return packet.substr(name.size());
    return {};
}

// FLAC has a block in each packet, of which the first ones count.
Read<void> read_flac_packet(std::string packet, Covers& covers) {
    const auto header = read_record<flac::BlockHeader>(packet);
    if (!header)
        return {};
    packet.erase(0, flac::BlockHeader::size);
    if (header->type() == flac::BlockType::VorbisComment)
        return ogg::each_comment(packet, [&](std::string_view comment) {
            return if_sound(read_comment(comment, covers));
        });
    if (header->type() != flac::BlockType::Picture)
        return {};
    return copy_block(std::move(packet), covers);
}

Read<void> read_ogg(const Window& file, Covers& covers) {
    constexpr int most_packets = 64; // of headers
    constexpr std::uint64_t longest = longest_copy / 3 * 4;
    ogg::PacketWalk walk(file);
    const auto first = VELL_TRY(walk.next(longest));
    const bool is_flac = first && first->starts_with("\x7F\x46LAC");
    for (int i = 0; i < (is_flac ? most_packets : 1); ++i) {
        auto packet = VELL_TRY(walk.next(longest));
        if (!packet || packet->empty() || packet->front() == '\xFF') // sound of FLAC
            return {};
        if (is_flac)
            VELL_TRY(if_sound(read_flac_packet(*std::move(packet), covers)));
        else
            VELL_TRY(if_sound(ogg::each_comment(comments_in(*packet), [&](std::string_view each) {
                return if_sound(read_comment(each, covers));
            })));
    }
    return {};
}

// Chunks beside the sound.
Read<void> read_chunks(Window file, ByteOrder order, Covers& covers) {
    riff::ChunkWalk files(file, order);
    const auto form = VELL_TRY(files.next());
    if (!form)
        return {};
    Window content = form->data;
    const std::string kind = VELL_TRY(content.read_bytes(riff::form_size));
    if (kind != "WAVE" && kind != "AIFF" && kind != "AIFC")
        return {};
    riff::ChunkWalk walk(content.from(riff::form_size), order);
    for (;;) {
        const auto chunk = VELL_TRY(walk.next());
        if (!chunk)
            return {};
        if (chunk->type() == "ID3 " || chunk->type() == "id3 ")
            VELL_TRY(if_sound(read_tag(chunk->data, covers)));
    }
}

Read<void> read_sound(Format format, const Window& file, Covers& covers) {
    switch (format) {
    case Format::Id3:
        return read_tagged_file(file, covers);
    case Format::Flac:
        return read_flac(file, covers);
    case Format::Ogg:
        return read_ogg(file, covers);
    case Format::Riff:
        return read_chunks(file, ByteOrder::Little, covers);
    case Format::Aiff:
        return read_chunks(file, ByteOrder::Big, covers);
    default:
        return {};
    }
}

} // namespace

Read<void> find_covers_of_sound(Format format, FoundPictures& found) {
    Covers covers(found);
    VELL_TRY(if_sound(read_sound(format, found.file(), covers)));
    return covers.give();
}

} // namespace vell::pictures
