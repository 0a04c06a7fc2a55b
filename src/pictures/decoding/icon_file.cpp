#include "src/pictures/decoding/icon_file.h"

#include "src/pictures/decoding/dib.h"

#include <algorithm>
#include <cstring>

namespace vell::pictures {
namespace {

using namespace formats;

constexpr std::uint64_t most_icon_pixels = 16'000'000;
constexpr std::size_t most_images = 1000;

// What the file begins with.
struct Directory {
    static constexpr std::size_t size = 6;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint16_t reserved = 0;
    std::uint16_t type = 0; // 1 for icons, 2 for cursors
    std::uint16_t count = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &Directory::reserved}, Field{2, &Directory::type},
                          Field{4, &Directory::count}};
    }
};

// What it tells of each picture, besides what the picture itself tells.
struct DirectoryEntry {
    static constexpr std::size_t size = 16;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint32_t bytes = 0;
    std::uint32_t offset = 0;

    static constexpr auto fields() {
        return std::tuple{Field{8, &DirectoryEntry::bytes}, Field{12, &DirectoryEntry::offset}};
    }
};

constexpr std::string_view png_signature = "\x89PNG\r\n\x1A\n";

std::optional<IconImage> describe(const Window& file, const DirectoryEntry& entry) {
    Window part = file.part(entry.offset, entry.bytes);
    IconImage image{.offset = entry.offset, .size = part.size()};
    const auto start = part.read_bytes(26);
    if (start && start->starts_with(png_signature)) {
        // Width, height and bits of a component stand in the first chunk, IHDR.
        const auto width = load<std::uint32_t>(*start, 16, ByteOrder::Big);
        const auto height = load<std::uint32_t>(*start, 20, ByteOrder::Big);
        const auto bits = load<std::uint8_t>(*start, 24, ByteOrder::Big);
        if (!width || !height || !bits)
            return std::nullopt;
        image.width = *width;
        image.height = *height;
        image.depth = *bits * 4U;
        image.is_png = true;
        return image;
    }
    const auto header = read_dib_header(part, 0, DibOf::Icon);
    if (!header)
        return std::nullopt;
    image.width = header->width;
    image.height = header->height;
    image.depth = header->format.bits;
    return image;
}

Picture blank(std::uint32_t width, std::uint32_t height) {
    Picture picture{width, height, true, {}};
    picture.pixels.resize(std::size_t{width} * height * 4);
    return picture;
}

// The mask behind the colours, where a set bit is transparent.
void apply_mask(Picture& picture, Window part, std::uint64_t start, bool is_top_down) {
    const std::uint64_t stride = (std::uint64_t{picture.width} + 31) / 32 * 4;
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        const std::uint32_t in_file = is_top_down ? y : picture.height - 1 - y;
        part.seek(start + in_file * stride);
        const auto row = part.read_bytes(stride);
        if (!row || row->size() < stride)
            continue;
        for (std::uint32_t x = 0; x < picture.width; ++x)
            if ((static_cast<unsigned char>((*row)[x / 8]) >> (7 - x % 8) & 1) != 0)
                std::memset(&picture.pixels[(std::size_t{y} * picture.width + x) * 4], 0, 4);
    }
}

// A picture with room for alpha, opaque where the row has none.
void put_row(Picture& picture, std::uint32_t y, std::span<const std::byte> row,
             std::uint32_t components) {
    std::uint8_t* out = &picture.pixels[std::size_t{y} * picture.width * 4];
    for (std::uint32_t x = 0; x < picture.width; ++x, out += 4) {
        out[3] = 255;
        std::memcpy(out, row.data() + std::size_t{x} * components, components);
    }
}

bool has_alpha(const Picture& picture) {
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
        if (picture.pixels[i] != 0)
            return true;
    return false;
}

void make_opaque(Picture& picture) {
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
        picture.pixels[i] = 255;
}

} // namespace

Result<std::vector<IconImage>> read_icon_directory(ByteSource& bytes) {
    Window file(bytes);
    const auto directory = file.read_record<Directory>();
    if (!directory || directory->reserved != 0 || (directory->type != 1 && directory->type != 2) ||
        directory->count == 0)
        return Failure{ErrorCode::NotSupported};
    std::vector<IconImage> images;
    for (std::size_t i = 0; i < std::min<std::size_t>(directory->count, most_images); ++i) {
        const auto entry = file.read_record<DirectoryEntry>();
        if (!entry)
            break;
        if (const auto image = describe(file, *entry))
            images.push_back(*image);
    }
    return images;
}

std::vector<IconImage> by_fitness(std::vector<IconImage> images, std::uint32_t size) {
    const auto area = [](const IconImage& image) {
        return std::uint64_t{image.width} * image.height;
    };
    const auto is_large = [size](const IconImage& image) {
        return size != 0 && std::max(image.width, image.height) >= size;
    };
    std::ranges::stable_sort(images, [&](const IconImage& a, const IconImage& b) {
        if (is_large(a) != is_large(b))
            return is_large(a);
        if (area(a) != area(b))
            return (area(a) < area(b)) == is_large(a);
        return a.depth > b.depth;
    });
    return images;
}

Result<Picture> read_icon_bitmap(ByteSource& bytes, const IconImage& image) {
    Window part = Window(bytes).part(image.offset, image.size);
    const DibHeader header = VELL_TRY(read_dib_header(part, 0, DibOf::Icon));
    if (header.compression != DibCompression::None)
        return Failure{ErrorCode::NotSupported};
    if (std::uint64_t{header.width} * header.height > most_icon_pixels)
        return Failure{ErrorCode::PictureTooLarge};
    const RowConverter converter(header.format, header.palette, Curve::Linear);
    const PictureLayout layout = converter.layout(header.width, header.height);
    if (layout.component_size != 1)
        return Failure{ErrorCode::NotSupported};

    Picture picture = blank(header.width, header.height);
    std::vector<std::byte> row(layout.row_size());
    for (std::uint32_t y = 0; y < header.height; ++y) {
        const std::uint32_t in_file = header.is_top_down ? y : header.height - 1 - y;
        part.seek(header.end + in_file * header.stride());
        const auto stored = part.read_bytes(header.stride());
        if (!stored || stored->size() < header.stride())
            return Failure{ErrorCode::PictureDamaged};
        converter.convert(header.width, std::as_bytes(std::span(*stored)), row);
        put_row(picture, y, row, layout.components());
    }
    if (layout.has_alpha && has_alpha(picture))
        return picture;
    make_opaque(picture);
    apply_mask(picture, part, header.end + header.height * header.stride(), header.is_top_down);
    return picture;
}

} // namespace vell::pictures
