#include "src/formats/camera/cr3.h"

#include "src/formats/isobmff/movie.h"

#include <cstdint>
#include <tuple>

namespace vell::formats::cr3 {
namespace {

using namespace isobmff;

// Boxes of Canon: that in "moov", and that of the larger preview.
constexpr UserType in_movie{'\x85', '\xC0', '\xB6', '\x87', '\x82', '\x0F', '\x11', '\xE0',
                            '\x81', '\x11', '\xF4', '\xCE', '\x46', '\x2B', '\x6A', '\x48'};
constexpr UserType of_preview{'\xEA', '\xF4', '\x2B', '\x5E', '\x1C', '\x98', '\x4B', '\x88',
                              '\xB9', '\xFB', '\xB7', '\xDC', '\x40', '\x6E', '\x4D', '\x16'};
// What the latter has before its boxes.
constexpr std::uint64_t preview_start = 8;

// Size and place of the picture in "THMB".
struct SmallPicture {
    static constexpr std::size_t size = 16;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t picture_size = 0;

    static constexpr auto fields() { return std::tuple{Field{8, &SmallPicture::picture_size}}; }
};
// In "PRVW".
struct LargePicture {
    static constexpr std::size_t size = 16;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t picture_size = 0;

    static constexpr auto fields() { return std::tuple{Field{12, &LargePicture::picture_size}}; }
};

Read<Window> find_box_in_movie(const Window& file) {
    const auto movie = VELL_TRY(find_box(file, "moov"_4cc));
    if (!movie)
        return fault(Damage::Absent);
    const auto box = VELL_TRY(find_user_box(movie->content, in_movie));
    if (!box)
        return fault(Damage::Absent);
    return *box;
}

template <IsRecord Header>
Read<void> add_picture(const Window& around, FourCc type, std::vector<Window>& pictures) {
    const auto box = VELL_TRY(find_box(around, type));
    if (!box)
        return {};
    Window content = box->content;
    const auto header = VELL_TRY(content.read_record<Header>());
    pictures.push_back(content.part(Header::size, header.picture_size));
    return {};
}

// Of tracks with a single sample, which one of Canon's cameras codes as JPEG.
Read<void> add_samples(const Window& file, std::vector<Window>& pictures) {
    const auto opened = VELL_TRY(MovieFile::open(file));
    const Movie movie = VELL_TRY(opened.read());
    for (const Track& track : movie.tracks)
        if (track.entry && track.entry->format == "CRAW"_4cc && track.sizes &&
            track.sizes->samples == 1 && track.sizes->bytes_are_known && track.first_chunk)
            pictures.push_back(file.part(*track.first_chunk, track.sizes->bytes));
    return {};
}

} // namespace

Read<Tags> read_tags(const Window& file) {
    const Window around = VELL_TRY(find_box_in_movie(file));
    Tags tags;
    VELL_TRY(each_box(around, [&](Box& box) -> Read<void> {
        if (box.type == "CMT1"_4cc)
            tags.image = box.content;
        else if (box.type == "CMT2"_4cc)
            tags.exif = box.content;
        else if (box.type == "CMT4"_4cc)
            tags.gps = box.content;
        return {};
    }));
    return tags;
}

Read<Window> find_tags(const Window& file) {
    const Tags tags = VELL_TRY(read_tags(file));
    if (!tags.image)
        return fault(Damage::Absent);
    return *tags.image;
}

Read<std::vector<Window>> read_pictures(const Window& file) {
    const Window small = VELL_TRY(find_box_in_movie(file));
    std::vector<Window> pictures;
    VELL_TRY(if_sound(add_picture<SmallPicture>(small, "THMB"_4cc, pictures)));
    const auto large = VELL_TRY(if_sound(find_user_box(file, of_preview)));
    if (large && *large)
        VELL_TRY(if_sound(
            add_picture<LargePicture>((*large)->from(preview_start), "PRVW"_4cc, pictures)));
    VELL_TRY(if_sound(add_samples(file, pictures)));
    return pictures;
}

} // namespace vell::formats::cr3
