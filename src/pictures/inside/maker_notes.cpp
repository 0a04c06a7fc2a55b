#include "src/pictures/inside/maker_notes.h"

#include <string>
#include <string_view>

namespace vell::pictures {
namespace {

using namespace formats;
using namespace std::string_view_literals;
using Kind = EmbeddedPicture::Kind;

constexpr std::uint16_t jpeg_offset = 513;
constexpr std::uint16_t jpeg_length = 514;

// A whole block of tags; one of its directories has the picture as an IFD of TIFF would.
namespace nikon {
constexpr std::string_view start = "Nikon\0\2"sv;
constexpr std::uint64_t header_size = 10;
constexpr std::uint16_t preview_directory = 0x0011;
} // namespace nikon

// Offsets count from the note in newer ones, from the block around it in older ones.
namespace olympus {
struct Header {
    std::string_view start;
    std::uint64_t size;
    bool counts_from_note;
};
constexpr Header headers[] = {
    {"OM SYSTEM\0"sv, 16, true}, {"OLYMPUS\0"sv, 12, true}, {"OLYMP\0"sv, 8, false}};
constexpr std::uint16_t camera_settings = 0x2020;
constexpr std::uint16_t preview_start = 0x0101;
constexpr std::uint16_t preview_length = 0x0102;
} // namespace olympus

namespace minolta {
constexpr std::uint16_t preview = 0x0081;
constexpr std::uint16_t preview_start = 0x0088;
constexpr std::uint16_t preview_length = 0x0089;
} // namespace minolta

class NoteReader {
  public:
    NoteReader(std::optional<Orientation> of_file, FoundPictures& found)
        : of_file_(of_file), found_(found) {}

    Read<void> read_nikon(const Window& block) {
        Window start = block;
        const std::string bytes = VELL_TRY(start.read_bytes(tiff::Header::size));
        const auto header = tiff::Header::read(bytes);
        if (!header)
            return {};
        const auto note = VELL_TRY(TagDirectory::at(block, header->first_directory, header->order));
        const auto preview = VELL_TRY(note.number(nikon::preview_directory));
        if (!preview)
            return {};
        return add(VELL_TRY(TagDirectory::at(block, *preview, header->order)), jpeg_offset,
                   jpeg_length);
    }

    Read<void> read_olympus(const TagDirectory& note) {
        VELL_TRY(read_minolta(note)); // the oldest ones are the same
        const tiff::Entry* const entry = note.find(olympus::camera_settings);
        if (entry == nullptr)
            return {};
        const std::uint32_t settings = entry->offset(note.order());
        return add(VELL_TRY(TagDirectory::at(note.block(), settings, note.order())),
                   olympus::preview_start, olympus::preview_length);
    }

    Read<void> read_minolta(const TagDirectory& note) {
        if (const auto value = note.value(minolta::preview))
            VELL_TRY(found_.add(*value, Kind::Preview, of_file_));
        return add(note, minolta::preview_start, minolta::preview_length);
    }

  private:
    Read<void> add(const TagDirectory& directory, std::uint16_t offset, std::uint16_t length) {
        if (const auto part = VELL_TRY(directory.part(offset, length)))
            VELL_TRY(found_.add(*part, Kind::Preview, of_file_));
        return {};
    }

    std::optional<Orientation> of_file_;
    FoundPictures& found_;
};

// In notes with their own byte order it stands at the end of their header.
ByteOrder order_of_note(std::string_view header, ByteOrder otherwise) {
    if (header.find("II") != std::string_view::npos)
        return ByteOrder::Little;
    return header.find("MM") != std::string_view::npos ? ByteOrder::Big : otherwise;
}

} // namespace

Read<void> find_in_maker_note(const TagDirectory& exif, std::optional<Orientation> of_file,
                              FoundPictures& found) {
    constexpr std::uint64_t longest_header = 16;
    const tiff::Entry* const entry = exif.find(tiff::tag::maker_note);
    if (entry == nullptr || entry->is_inline())
        return {};
    const std::uint64_t offset = entry->offset(exif.order());
    Window note = exif.block().from(offset);
    const std::string start = VELL_TRY(note.read_bytes(longest_header));
    NoteReader reader(of_file, found);
    if (start.starts_with(nikon::start))
        return reader.read_nikon(note.from(nikon::header_size));
    for (const olympus::Header& header : olympus::headers) {
        if (!start.starts_with(header.start))
            continue;
        const std::string_view order_mark =
            std::string_view(start).substr(header.start.size(), header.size - header.start.size());
        const ByteOrder order = order_of_note(order_mark, exif.order());
        return reader.read_olympus(VELL_TRY(
            header.counts_from_note ? TagDirectory::at(note.from(0), header.size, order)
                                    : TagDirectory::at(exif.block(), offset + header.size, order)));
    }
    // Minolta's have no header. What is none of theirs holds no pictures where theirs would.
    return reader.read_minolta(VELL_TRY(TagDirectory::at(exif.block(), offset, exif.order())));
}

} // namespace vell::pictures
