#include "src/pictures/decoding/dib.h"

#include "src/formats/bmp.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace vell::pictures {
namespace {

using namespace formats;
using Masks = std::array<std::uint32_t, 4>;

// biCompression; OS/2 has other meanings for 3 and 4.
enum Compression : std::uint32_t {
    rgb = 0,
    rle8 = 1,
    rle4 = 2,
    bit_fields = 3,
    os2_rle24 = 4,
    alpha_bit_fields = 6,
};

constexpr std::uint32_t header_with_masks = 52;
constexpr std::uint32_t header_with_alpha_mask = 56;
constexpr std::uint32_t longest_os2_header = 64;

// What decides on the rest.
struct Announced {
    std::uint32_t header_size = 0;
    std::uint32_t bits = 0;
    std::uint32_t compression = rgb;
    std::uint32_t colours_used = 0;

    bool is_os2() const {
        return header_size <= longest_os2_header &&
               header_size != bmp::info_header_with_resolution &&
               header_size != header_with_masks && header_size != header_with_alpha_mask;
    }
    bool has_masks() const { return compression == bit_fields || compression == alpha_bit_fields; }
};

class HeaderReader {
  public:
    HeaderReader(const Window& dib, std::uint64_t data, DibOf of)
        : dib_(dib), data_(data), of_(of) {}

    Result<DibHeader> read() {
        if (!read_announced())
            return Failure{ErrorCode::PictureDamaged};
        VELL_TRY(decide_compression());
        if (!decide_format())
            return Failure{ErrorCode::NotSupported};
        if (header_.format.coding == Coding::Masked && !read_masks())
            return Failure{ErrorCode::PictureDamaged};
        header_.end = std::uint64_t{announced_.header_size} + masks_behind_header_;
        read_palette();
        return header_;
    }

  private:
    Read<std::uint32_t> integer_at(std::uint64_t place) {
        dib_.seek(place);
        return dib_.read_integer<std::uint32_t>(ByteOrder::Little);
    }

    bool read_announced() {
        const auto size = integer_at(0);
        if (!size)
            return false;
        announced_.header_size = *size;
        const bool read = *size == bmp::core_header ? read_core() : read_info();
        return read && header_.width > 0 && header_.height > 0;
    }
    bool read_core() {
        const auto core = dib_.read_record<bmp::CoreHeader>();
        if (!core)
            return false;
        header_.width = core->width;
        announced_.bits = core->bit_count;
        header_.height = of_ == DibOf::Icon ? core->height / 2U : core->height;
        return true;
    }
    bool read_info() {
        if (announced_.header_size < bmp::shortest_info_header ||
            announced_.header_size > bmp::longest_info_header)
            return false;
        const auto info = dib_.read_record<bmp::InfoHeader>();
        constexpr auto most = std::numeric_limits<std::int32_t>::max();
        if (!info || info->width > most || info->height < -most)
            return false;
        header_.width = info->width;
        header_.is_top_down = info->height < 0;
        const auto height =
            static_cast<std::uint32_t>(info->height < 0 ? -info->height : info->height);
        header_.height = of_ == DibOf::Icon ? height / 2 : height;
        announced_.bits = info->bit_count;
        constexpr std::uint32_t end_of_compression = 20;
        constexpr std::uint32_t end_of_colours_used = 36;
        if (announced_.header_size >= end_of_compression)
            announced_.compression = value_or_0(end_of_compression - 4);
        if (announced_.header_size >= end_of_colours_used)
            announced_.colours_used = value_or_0(end_of_colours_used - 4);
        return true;
    }
    std::uint32_t value_or_0(std::uint64_t place) {
        const auto value = integer_at(place);
        return value ? *value : 0;
    }

    Result<void> decide_compression() {
        switch (announced_.compression) {
        case rgb:
            return {};
        case rle8:
            header_.compression = DibCompression::Rle8;
            return check_bits(8);
        case rle4:
            header_.compression = DibCompression::Rle4;
            return check_bits(4);
        case os2_rle24:
            header_.compression = DibCompression::Rle24;
            return announced_.is_os2() ? check_bits(24) : Failure{ErrorCode::NotSupported};
        case bit_fields:
        case alpha_bit_fields:
            if (!announced_.is_os2() && (announced_.bits == 16 || announced_.bits == 32))
                return {};
            [[fallthrough]];
        default:
            return Failure{ErrorCode::NotSupported};
        }
    }
    Result<void> check_bits(std::uint32_t bits) {
        if (announced_.bits != bits)
            return Failure{ErrorCode::PictureDamaged};
        return {};
    }

    bool decide_format() {
        header_.format.bits = static_cast<std::uint8_t>(announced_.bits);
        switch (announced_.bits) {
        case 1:
        case 2:
        case 4:
        case 8:
            header_.format.coding = Coding::Index;
            return true;
        case 24:
            header_.format.coding = Coding::Byte;
            header_.format.blue_first = true;
            return true;
        case 16:
        case 32:
            header_.format.coding = Coding::Masked;
            return true;
        default:
            return false;
        }
    }

    // Masks stand in the longer headers, and behind the shorter ones.
    bool read_masks() {
        PixelFormat& format = header_.format;
        format.masks = announced_.bits == 16 ? Masks{0x7C00, 0x3E0, 0x1F, 0}
                                             : Masks{0xFF0000, 0xFF00, 0xFF, 0};
        if (of_ == DibOf::Icon && announced_.bits == 32)
            format.masks[3] = 0xFF000000;
        if (announced_.has_masks()) {
            const bool has_alpha = announced_.header_size >= header_with_alpha_mask ||
                                   announced_.compression == alpha_bit_fields;
            const std::size_t count = has_alpha ? 4 : 3;
            for (std::size_t i = 0; i < count; ++i) {
                const auto mask = integer_at(bmp::info_header_with_resolution + i * 4);
                if (!mask || !is_one_run(*mask))
                    return false;
                format.masks[i] = *mask;
            }
            if (announced_.header_size == bmp::info_header_with_resolution)
                masks_behind_header_ = count * 4;
        }
        format.alpha = format.masks[3] != 0 ? Alpha::Straight : Alpha::None;
        return true;
    }
    static bool is_one_run(std::uint32_t mask) {
        const std::uint64_t run = mask == 0 ? 0 : mask >> std::countr_zero(mask);
        return (run & (run + 1)) == 0;
    }

    void read_palette() {
        const std::size_t entry_size = announced_.header_size == bmp::core_header ? 3 : 4;
        const bool is_indexed = header_.format.coding == Coding::Index;
        std::uint64_t count = announced_.colours_used;
        if (is_indexed && count == 0)
            count = std::uint64_t{1} << announced_.bits;
        if (data_ != 0)
            count = std::min(count, (std::max(data_, header_.end) - header_.end) / entry_size);
        dib_.seek(header_.end);
        header_.end += count * entry_size;
        if (!is_indexed)
            return;
        const auto bytes = dib_.read_bytes(std::min<std::uint64_t>(count, 256) * entry_size);
        for (std::size_t i = 0; bytes && i + entry_size <= bytes->size(); i += entry_size) {
            const auto part = [&](std::size_t n) {
                return static_cast<std::uint8_t>((*bytes)[i + n]);
            };
            header_.palette.push_back({part(2), part(1), part(0)});
        }
    }

    Window dib_;
    std::uint64_t data_;
    DibOf of_;
    Announced announced_;
    std::uint64_t masks_behind_header_ = 0;
    DibHeader header_;
};

} // namespace

Result<DibHeader> read_dib_header(const Window& dib, std::uint64_t data, DibOf of) {
    return HeaderReader(dib, data, of).read();
}

} // namespace vell::pictures
