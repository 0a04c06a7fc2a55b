#include "src/windows/pictures/wic_decoder.h"

#include "src/pictures/decoding/pixel_format.h"
#include "src/windows/desktop/com.h"
#include "src/windows/pictures/source_stream.h"
#include "src/windows/pictures/wic_formats.h"

#include <wincodec.h>

#include <algorithm>

namespace vell::windows {
namespace {

using namespace pictures;

constexpr std::uint64_t most_pixels = 250'000'000;
constexpr std::uint64_t most_kept_bytes = 512 << 20;
// Decoders that keep no state go through a picture anew for each part that they are asked for.
constexpr std::uint64_t part_of_whole = 64 << 20;
constexpr std::uint64_t part_of_tiff = 16 << 20;
constexpr std::uint32_t rows_of_tiles = 256;

ErrorCode picture_error(HRESULT result) {
    switch (result) {
    case WINCODEC_ERR_COMPONENTNOTFOUND:
    case WINCODEC_ERR_COMPONENTINITIALIZEFAILURE:
    case WINCODEC_ERR_UNKNOWNIMAGEFORMAT:
    case WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT:
    case WINCODEC_ERR_UNSUPPORTEDVERSION:
    case WINCODEC_ERR_UNSUPPORTEDOPERATION:
    case REGDB_E_CLASSNOTREG: // a codec that came and went
    case E_NOTIMPL:
        return ErrorCode::NotSupported;
    case WINCODEC_ERR_FRAMEMISSING:
        return ErrorCode::BadParameter;
    case WINCODEC_ERR_IMAGESIZEOUTOFRANGE:
    case E_OUTOFMEMORY:
        return ErrorCode::PictureTooLarge;
    default:
        return ErrorCode::PictureDamaged;
    }
}

Result<void> check_picture(HRESULT result) {
    if (FAILED(result))
        return Failure{picture_error(result)};
    return {};
}

bool fits(std::string_view profile, ColourModel model) {
    constexpr std::size_t place_of_colour_space = 16; // ICC.1, 7.2.1
    const std::string_view space =
        profile.size() < 128 ? std::string_view() : profile.substr(place_of_colour_space, 4);
    return space == (model == ColourModel::Gray  ? "GRAY"
                     : model == ColourModel::Rgb ? "RGB "
                                                 : "CMYK");
}

std::string profile_of(IWICColorContext& context) {
    constexpr UINT largest_profile = 16 << 20;
    WICColorContextType type = WICColorContextUninitialized;
    UINT size = 0;
    if (FAILED(context.GetType(&type)) || type != WICColorContextProfile ||
        FAILED(context.GetProfileBytes(0, nullptr, &size)) || size > largest_profile)
        return {};
    std::string profile(size, '\0');
    if (FAILED(context.GetProfileBytes(size, reinterpret_cast<BYTE*>(profile.data()), &size)))
        return {};
    return profile;
}

std::string find_profile(IWICImagingFactory& factory, IWICBitmapFrameDecode& frame,
                         ColourModel model) {
    constexpr UINT most_contexts = 8;
    UINT count = 0;
    if (FAILED(frame.GetColorContexts(0, nullptr, &count)))
        return {};
    count = std::min(count, most_contexts);
    std::vector<ComPtr<IWICColorContext>> contexts(count);
    std::vector<IWICColorContext*> pointers;
    for (auto& context : contexts) {
        if (FAILED(factory.CreateColorContext(&context)))
            return {};
        pointers.push_back(context.Get());
    }
    if (count == 0 || FAILED(frame.GetColorContexts(count, pointers.data(), &count)))
        return {};
    for (const auto& context : contexts) {
        std::string profile = profile_of(*context.Get());
        if (fits(profile, model))
            return profile;
    }
    return {};
}

// A frame, read in parts of several rows.
class WicRows final : public PictureRows {
  public:
    explicit WicRows(ByteSource& bytes) : stream_(bytes) {}

    Result<void> open(std::uint32_t frame) {
        VELL_TRY(check_picture(CoCreateInstance(CLSID_WICImagingFactory, nullptr,
                                                CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&factory_))));
        VELL_TRY(check_picture(factory_->CreateDecoderFromStream(
            stream_.get(), nullptr, WICDecodeMetadataCacheOnDemand, &decoder_)));
        UINT count = 0;
        VELL_TRY(check_picture(decoder_->GetFrameCount(&count)));
        if (count == 0)
            return Failure{ErrorCode::PictureDamaged};
        if (frame >= count)
            return Failure{ErrorCode::BadParameter};
        VELL_TRY(check_picture(decoder_->GetFrame(frame, &frame_)));
        VELL_TRY(choose_format());
        VELL_TRY(check_size());
        return read_part();
    }

    const PictureLayout& layout() const override { return layout_; }
    std::string profile() const override { return profile_; }

    Result<void> read_row(std::span<std::byte> row) override {
        if (next_ == part_end_)
            VELL_TRY(read_part());
        const auto source = std::span<const std::byte>(part_).subspan(
            std::size_t{next_ - part_start_} * row_size_, row_size_);
        converter_.convert(layout_.width, source, row);
        ++next_;
        return {};
    }

  private:
    Result<void> choose_format() {
        source_ = frame_;
        WICPixelFormatGUID wic_format{};
        VELL_TRY(check_picture(frame_->GetPixelFormat(&wic_format)));
        auto format = pixel_format(wic_format);
        if (!format) {
            VELL_TRY(convert(GUID_WICPixelFormat32bppBGRA));
            format = pixel_format(GUID_WICPixelFormat32bppBGRA);
        }
        profile_ = find_profile(*factory_.Get(), *frame_.Get(), format->model);
        std::vector<Colour> palette;
        if (format->coding == Coding::Index)
            palette = VELL_TRY(read_palette());
        converter_ = RowConverter(*format, std::move(palette),
                                  profile_.empty() ? Curve::Linear : Curve::OfProfile);
        return {};
    }

    Result<void> convert(REFGUID wic_format) {
        ComPtr<IWICFormatConverter> converter;
        VELL_TRY(check_picture(factory_->CreateFormatConverter(&converter)));
        if (FAILED(converter->Initialize(frame_.Get(), wic_format, WICBitmapDitherTypeNone, nullptr,
                                         0, WICBitmapPaletteTypeCustom)))
            return Failure{ErrorCode::NotSupported};
        source_ = converter;
        return {};
    }

    Result<std::vector<Colour>> read_palette() {
        ComPtr<IWICPalette> palette;
        VELL_TRY(check_picture(factory_->CreatePalette(&palette)));
        VELL_TRY(check_picture(frame_->CopyPalette(palette.Get())));
        UINT count = 0;
        VELL_TRY(check_picture(palette->GetColorCount(&count)));
        std::vector<WICColor> stored(count);
        VELL_TRY(check_picture(palette->GetColors(count, stored.data(), &count)));
        std::vector<Colour> colours;
        for (const WICColor colour : stored) {
            const auto part = [colour](unsigned shift) {
                return static_cast<std::uint8_t>(colour >> shift);
            };
            colours.push_back({part(16), part(8), part(0), part(24)});
        }
        return colours;
    }

    Result<void> check_size() {
        UINT width = 0;
        UINT height = 0;
        VELL_TRY(check_picture(source_->GetSize(&width, &height)));
        if (width == 0 || height == 0)
            return Failure{ErrorCode::PictureDamaged};
        layout_ = converter_.layout(width, height);
        row_size_ = converter_.format().row_size(width);
        GUID container{};
        VELL_TRY(check_picture(decoder_->GetContainerFormat(&container)));
        const bool is_tiff = container == GUID_ContainerFormatTiff;
        if (std::uint64_t{width} * height > most_pixels ||
            (!is_tiff && row_size_ * height > most_kept_bytes) || row_size_ > part_of_tiff)
            return Failure{ErrorCode::PictureTooLarge};
        const std::uint64_t wanted = (is_tiff ? part_of_tiff : part_of_whole) / row_size_;
        part_rows_ = static_cast<std::uint32_t>(std::clamp<std::uint64_t>(wanted, 1, height));
        if (part_rows_ < height && part_rows_ > rows_of_tiles)
            part_rows_ -= part_rows_ % rows_of_tiles;
        return {};
    }

    // Rows from the next one on: fewer and fewer where a part cannot be read, down to the last one
    // that can.
    Result<void> read_part() {
        if (next_ >= layout_.height)
            return Failure{ErrorCode::PictureDamaged};
        std::uint32_t count = std::min(part_rows_, layout_.height - next_);
        for (;;) {
            part_.resize(row_size_ * count);
            const WICRect part{0, static_cast<INT>(next_), static_cast<INT>(layout_.width),
                               static_cast<INT>(count)};
            const HRESULT result = source_->CopyPixels(&part, static_cast<UINT>(row_size_),
                                                       static_cast<UINT>(part_.size()),
                                                       reinterpret_cast<BYTE*>(part_.data()));
            if (SUCCEEDED(result))
                break;
            if (count == 1)
                return check_picture(result);
            count /= 2;
            part_rows_ = count;
        }
        part_start_ = next_;
        part_end_ = next_ + count;
        return {};
    }

    const ComApartment apartment_; // the last to go
    SourceStream stream_;
    ComPtr<IWICImagingFactory> factory_;
    ComPtr<IWICBitmapDecoder> decoder_;
    ComPtr<IWICBitmapFrameDecode> frame_;
    ComPtr<IWICBitmapSource> source_;
    std::string profile_;
    RowConverter converter_;
    PictureLayout layout_;
    std::size_t row_size_ = 0; // of the source
    std::uint32_t part_rows_ = 0;
    std::vector<std::byte> part_;
    std::uint32_t part_start_ = 0;
    std::uint32_t part_end_ = 0;
    std::uint32_t next_ = 0;
};

} // namespace

Result<std::unique_ptr<PictureRows>> decode_by_wic(ByteSource& bytes, std::uint32_t frame) {
    auto rows = std::make_unique<WicRows>(bytes);
    VELL_TRY(rows->open(frame));
    return Result<std::unique_ptr<PictureRows>>(std::move(rows));
}

} // namespace vell::windows
