#include "src/pictures/decoding/bmp_picture.h"

#include "src/formats/bmp.h"
#include "src/pictures/decoding/dib.h"

#include <algorithm>
#include <cstring>

namespace vell::pictures {
namespace {

using namespace formats;

constexpr std::uint64_t most_pixels = 250'000'000;
constexpr std::uint64_t most_compressed_pixels = 50'000'000;
constexpr std::uint64_t strip_size = 256 * 1024;

constexpr std::uint64_t file_header_size = 14;

// Rows that lie in the file as they are.
class PlainRows final : public PictureRows {
  public:
    PlainRows(ByteSource& bytes, std::uint64_t data, const DibHeader& header)
        : bytes_(bytes), data_(data), header_(header),
          whole_rows_((bytes.size() - std::min(bytes.size(), data)) / header.stride()) {}

    // Whether there is any row, and what is to be known before the first one is given.
    Result<void> prepare(std::string profile) {
        profile_ = std::move(profile);
        if (whole_rows_ == 0)
            return Failure{ErrorCode::PictureDamaged};
        PixelFormat& format = header_.format;
        if (format.alpha != Alpha::None && !VELL_TRY(has_visible_pixel()))
            format.alpha = Alpha::None;
        converter_ = RowConverter(format, header_.palette, Curve::Linear);
        layout_ = converter_.layout(header_.width, header_.height);
        adds_alpha_ = !header_.is_top_down && whole_rows_ < header_.height && !layout_.has_alpha;
        if (adds_alpha_)
            layout_.has_alpha = true;
        return {};
    }

    const PictureLayout& layout() const override { return layout_; }
    std::string profile() const override { return profile_; }

    Result<void> read_row(std::span<std::byte> row) override {
        const std::uint32_t y = next_++;
        const std::uint32_t in_file = header_.is_top_down ? y : header_.height - 1 - y;
        if (y >= header_.height || (header_.is_top_down && in_file >= whole_rows_))
            return Failure{ErrorCode::PictureDamaged};
        if (in_file >= whole_rows_) {
            std::ranges::fill(row, std::byte{0});
            return {};
        }
        converter_.convert(header_.width, VELL_TRY(stored_row(in_file)), row);
        if (adds_alpha_)
            add_alpha(row);
        return {};
    }

  private:
    Result<std::span<const std::byte>> stored_row(std::uint32_t row) {
        const std::uint64_t stride = header_.stride();
        if (row < strip_start_ || row >= strip_start_ + strip_.size() / stride)
            VELL_TRY(read_strip(row));
        return std::span<const std::byte>(strip_).subspan((row - strip_start_) * stride, stride);
    }

    // Rows around that one, in the direction in which they are asked for.
    Result<void> read_strip(std::uint32_t row) {
        const std::uint64_t stride = header_.stride();
        const std::uint64_t count = std::max<std::uint64_t>(strip_size / stride, 1);
        const std::uint64_t first =
            header_.is_top_down ? row : row + 1 - std::min<std::uint64_t>(count, row + 1);
        const std::uint64_t end = std::min(first + count, whole_rows_);
        strip_.resize((end - first) * stride);
        const auto target = std::span(reinterpret_cast<char*>(strip_.data()), strip_.size());
        strip_start_ = first;
        if (VELL_TRY(bytes_.read_at(data_ + first * stride, target)) == target.size())
            return {};
        strip_.clear();
        return Failure{ErrorCode::PictureDamaged};
    }

    Result<bool> has_visible_pixel() {
        const std::uint32_t mask = header_.format.masks[3];
        const std::size_t size = header_.format.bits / 8U;
        const auto rows =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(whole_rows_, header_.height));
        for (std::uint32_t y = 0; y < rows; ++y) {
            const std::uint32_t in_file = header_.is_top_down ? y : rows - 1 - y;
            const std::span<const std::byte> row = VELL_TRY(stored_row(in_file));
            for (std::size_t x = 0; x < header_.width; ++x) {
                std::uint32_t pixel = 0;
                std::memcpy(&pixel, row.data() + x * size, size);
                if ((pixel & mask) != 0)
                    return true;
            }
        }
        return false;
    }

    // Opaque pixels moved apart, from the last one on.
    void add_alpha(std::span<std::byte> row) const {
        const std::size_t component = layout_.component_size;
        const std::size_t colours = layout_.colours() * component;
        for (std::size_t x = header_.width; x-- > 0;) {
            std::byte* const pixel = row.data() + x * (colours + component);
            std::memmove(pixel, row.data() + x * colours, colours);
            std::memset(pixel + colours, 0xFF, component);
        }
    }

    ByteSource& bytes_;
    std::uint64_t data_;
    DibHeader header_;
    std::uint64_t whole_rows_;
    std::string profile_;
    RowConverter converter_;
    PictureLayout layout_;
    bool adds_alpha_ = false;
    std::vector<std::byte> strip_;
    std::uint64_t strip_start_ = 0;
    std::uint32_t next_ = 0;
};

// A run-length compressed picture, drawn as a whole.
class RunReader {
  public:
    RunReader(Window data, const DibHeader& header)
        : data_(data), header_(header), y_(header.height),
          pixels_(std::size_t{header.width} * header.height, Colour{0, 0, 0, 0}) {}

    // Ends with the picture, with the file, and with what makes no sense.
    std::vector<Colour> read() {
        while (y_ > 0) {
            const int count = next_byte();
            if (count < 0)
                break;
            if (count > 0)
                put_run(static_cast<unsigned>(count));
            else if (!escape())
                break;
        }
        return std::move(pixels_);
    }

  private:
    int next_byte() {
        if (position_ == block_.size()) {
            const auto bytes = data_.read_bytes(65536);
            block_ = bytes ? *bytes : std::string();
            position_ = 0;
            if (block_.empty())
                return -1;
        }
        return static_cast<unsigned char>(block_[position_++]);
    }

    Colour colour_at(unsigned index) const {
        return index < header_.palette.size() ? header_.palette[index] : Colour{};
    }
    Colour next_colour() {
        const auto blue = static_cast<std::uint8_t>(next_byte());
        const auto green = static_cast<std::uint8_t>(next_byte());
        return {static_cast<std::uint8_t>(next_byte()), green, blue};
    }

    void put(const Colour& colour) {
        if (x_ < header_.width && y_ > 0) {
            const std::size_t row = header_.is_top_down ? header_.height - y_ : y_ - 1;
            pixels_[row * header_.width + x_] = colour;
        }
        ++x_;
    }

    void put_run(unsigned count) {
        if (header_.compression == DibCompression::Rle24) {
            const Colour colour = next_colour();
            for (unsigned i = 0; i < count; ++i)
                put(colour);
            return;
        }
        const auto value = static_cast<unsigned>(next_byte()) & 0xFF;
        const std::uint64_t room = header_.width - std::min<std::uint64_t>(x_, header_.width);
        for (unsigned i = 0; i < std::min<std::uint64_t>(count, room); ++i)
            put(colour_at(part_of(value, i)));
        x_ += count - std::min<std::uint64_t>(count, room);
    }
    unsigned part_of(unsigned value, unsigned place) const {
        if (header_.compression == DibCompression::Rle8)
            return value;
        return place % 2 == 0 ? value >> 4 : value & 0xF;
    }

    bool escape() {
        enum { end_of_line, end_of_bitmap, move };
        const int code = next_byte();
        switch (code) {
        case end_of_line:
            x_ = 0;
            --y_;
            return true;
        case move: {
            const int right = next_byte();
            const int down = next_byte();
            if (down < 0)
                return false;
            x_ += static_cast<unsigned>(right);
            y_ -= std::min(y_, static_cast<std::uint32_t>(down));
            return true;
        }
        default:
            if (code <= end_of_bitmap)
                return false;
            put_literals(static_cast<unsigned>(code));
            return true;
        }
    }

    // Literals fill up to an even number of bytes.
    void put_literals(unsigned count) {
        unsigned bytes = 0;
        unsigned value = 0;
        for (unsigned i = 0; i < count; ++i) {
            if (header_.compression == DibCompression::Rle24) {
                put(next_colour());
                bytes += 3;
                continue;
            }
            if (header_.compression == DibCompression::Rle8 || i % 2 == 0) {
                value = static_cast<unsigned>(next_byte()) & 0xFF;
                ++bytes;
            }
            put(colour_at(part_of(value, i)));
        }
        if (bytes % 2 != 0)
            next_byte();
    }

    Window data_;
    const DibHeader& header_;
    std::uint64_t x_ = 0;
    std::uint32_t y_; // rows that are left, the current one among them
    std::string block_;
    std::size_t position_ = 0;
    std::vector<Colour> pixels_;
};

class DrawnRows final : public PictureRows {
  public:
    DrawnRows(const DibHeader& header, std::vector<Colour> pixels) : pixels_(std::move(pixels)) {
        layout_.width = header.width;
        layout_.height = header.height;
        layout_.has_alpha = std::ranges::any_of(pixels_, [](const auto& c) { return !c.alpha; });
    }

    const PictureLayout& layout() const override { return layout_; }
    Result<void> read_row(std::span<std::byte> row) override {
        if (next_ == pixels_.size())
            return Failure{ErrorCode::PictureDamaged};
        store_colours(std::span(pixels_).subspan(next_, layout_.width), layout_.has_alpha, row);
        next_ += layout_.width;
        return {};
    }

  private:
    std::vector<Colour> pixels_;
    std::size_t next_ = 0;
    PictureLayout layout_;
};

// The profile that BITMAPV5HEADER points to.
std::string embedded_profile(Window dib) {
    constexpr std::uint32_t embedded = 0x4D424544; // PROFILE_EMBEDDED, "MBED"
    constexpr std::uint64_t largest_profile = 16 * 1024 * 1024;
    const auto integer_at = [&](std::uint64_t place) -> std::uint64_t {
        dib.seek(place);
        const auto value = dib.read_integer<std::uint32_t>(ByteOrder::Little);
        return value ? *value : 0;
    };
    if (integer_at(0) != bmp::longest_info_header || integer_at(56) != embedded)
        return {};
    const std::uint64_t start = integer_at(112);
    const std::uint64_t size = integer_at(116);
    if (size > largest_profile)
        return {};
    dib.seek(start);
    auto bytes = dib.read_bytes(size);
    return bytes && bytes->size() == size ? std::move(*bytes) : std::string();
}

} // namespace

Result<std::unique_ptr<PictureRows>> decode_bmp(ByteSource& bytes, std::uint32_t frame) {
    using Rows = Result<std::unique_ptr<PictureRows>>;
    Window file(bytes);
    const auto signature = file.read_bytes(2);
    if (!signature || *signature != "BM")
        return Failure{ErrorCode::NotSupported};
    if (frame != 0)
        return Failure{ErrorCode::BadParameter};
    file.seek(10);
    const auto announced = file.read_integer<std::uint32_t>(ByteOrder::Little);
    if (!announced)
        return Failure{ErrorCode::PictureDamaged};
    const Window dib = file.from(file_header_size);
    const bool has_place = *announced > file_header_size;
    const DibHeader header =
        VELL_TRY(read_dib_header(dib, has_place ? *announced - file_header_size : 0, DibOf::File));
    const std::uint64_t data = has_place ? *announced : file_header_size + header.end;

    const std::uint64_t pixels = std::uint64_t{header.width} * header.height;
    const bool is_plain = header.compression == DibCompression::None;
    if (pixels > (is_plain ? most_pixels : most_compressed_pixels))
        return Failure{ErrorCode::PictureTooLarge};
    if (!is_plain) {
        if (data >= bytes.size())
            return Failure{ErrorCode::PictureDamaged};
        return Rows(std::make_unique<DrawnRows>(header, RunReader(file.from(data), header).read()));
    }
    auto rows = std::make_unique<PlainRows>(bytes, data, header);
    VELL_TRY(rows->prepare(embedded_profile(dib)));
    return Rows(std::move(rows));
}

} // namespace vell::pictures
