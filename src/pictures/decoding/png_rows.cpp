#include "src/pictures/colour.h"
#include "src/pictures/decoding/decoding.h"

#include <png.h>

#include <algorithm>
#include <bit>
#include <csetjmp>
#include <string_view>
#include <utility>
#include <vector>

namespace vell::pictures {
namespace {

// The library's reader of one file. What it reports as an error leaves its functions by a jump, so
// each call of them stands alone in a function without anything to destroy.
class PngReader {
  public:
    explicit PngReader(ByteSource& bytes) : bytes_(&bytes) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, fail, ignore);
        if (png_)
            info_ = png_create_info_struct(png_);
        if (!info_) {
            png_destroy_read_struct(&png_, nullptr, nullptr);
            throw std::bad_alloc();
        }
    }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }

    // Up to the first image data; the rows are of the kinds that a layout can name then.
    bool read_header() {
        return guarded([](PngReader& self) { self.start(); });
    }
    bool read_row(png_bytep row) {
        row_ = row;
        return guarded([](PngReader& self) { png_read_row(self.png_, self.row_, nullptr); });
    }

    // Of the source of the bytes, where that is why reading ended.
    ErrorCode failure() const {
        return source_failure_ == ErrorCode::Ok ? ErrorCode::PictureDamaged : source_failure_;
    }
    bool is_interlaced() const { return png_get_interlace_type(png_, info_) != PNG_INTERLACE_NONE; }
    PictureLayout layout() const {
        const int colour_type = png_get_color_type(png_, info_);
        return {png_get_image_width(png_, info_), png_get_image_height(png_, info_),
                (colour_type & PNG_COLOR_MASK_COLOR) != 0 ? ColourModel::Rgb : ColourModel::Gray,
                (colour_type & PNG_COLOR_MASK_ALPHA) != 0,
                static_cast<std::uint8_t>(png_get_bit_depth(png_, info_) / 8)};
    }

    // The profile in the file, or one of its gamma and primaries (11.3.2). Empty for sRGB.
    std::string profile(ColourModel model) const {
        png_charp name = nullptr;
        int method = 0;
        png_bytep bytes = nullptr;
        png_uint_32 size = 0;
        if (png_get_iCCP(png_, info_, &name, &method, &bytes, &size) != 0)
            return {reinterpret_cast<const char*>(bytes), size};
        double gamma = 0;
        if (png_get_valid(png_, info_, PNG_INFO_sRGB) != 0 ||
            png_get_gAMA(png_, info_, &gamma) == 0 || gamma <= 0)
            return {};
        Primaries primaries = srgb_primaries;
        png_get_cHRM(png_, info_, &primaries.white.x, &primaries.white.y, &primaries.red.x,
                     &primaries.red.y, &primaries.green.x, &primaries.green.y, &primaries.blue.x,
                     &primaries.blue.y);
        return gamma_profile(model, 1 / gamma, primaries);
    }

  private:
    // No side may be longer; a row's memory grows with it.
    static constexpr png_uint_32 longest_width = 300'000;

    template <typename Call>
    bool guarded(Call call) {
        if (setjmp(jump_) != 0) // NOLINT(cert-err52-cpp): the library knows no other way
            return false;
        call(*this);
        return true;
    }

    void start() {
        // What is in the buffer when a file is cut off is lost.
        constexpr std::size_t buffer_size = 512;
        png_set_read_fn(png_, this, read);
        png_set_compression_buffer_size(png_, buffer_size);
        png_set_user_limits(png_, longest_width, PNG_UINT_31_MAX);
        pass_notes_over();
        // A picture with a wrong checksum is shown as it is.
        png_set_crc_action(png_, PNG_CRC_QUIET_USE, PNG_CRC_QUIET_USE);
        png_set_option(png_, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
        png_read_info(png_, info_);
        png_set_expand(png_); // palettes, fewer bits than 8, colours that are transparent
        if constexpr (std::endian::native == std::endian::little)
            png_set_swap(png_);
        png_read_update_info(png_, info_);
    }

    // Chunks that say nothing of how the picture looks. The library would take memory for as many
    // bytes as they claim to have, before it reads them.
    void pass_notes_over() {
        static constexpr std::string_view names("tEXt\0zTXt\0iTXt\0eXIf\0sPLT\0hIST\0pCAL\0sCAL\0",
                                                40);
        constexpr int name_size = 5; // with the zero behind it
        png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER,
                                    reinterpret_cast<png_const_bytep>(names.data()),
                                    static_cast<int>(names.size()) / name_size);
    }

    static PngReader& self_of(void* pointer) { return *static_cast<PngReader*>(pointer); }
    [[noreturn]] static void fail(png_structp png, png_const_charp) {
        std::longjmp(self_of(png_get_error_ptr(png)).jump_, 1); // NOLINT(cert-err52-cpp)
    }
    static void ignore(png_structp, png_const_charp) {}

    static void read(png_structp png, png_bytep target, std::size_t size) {
        if (!self_of(png_get_io_ptr(png)).fetch({reinterpret_cast<char*>(target), size}))
            png_error(png, "");
    }
    bool fetch(std::span<char> target) {
        while (!target.empty()) {
            if (next_ == filled_ && !fill())
                return false;
            const std::size_t count = std::min(target.size(), filled_ - next_);
            std::copy_n(buffer_.data() + next_, count, target.data());
            next_ += count;
            target = target.subspan(count);
        }
        return true;
    }
    bool fill() {
        const Result<std::size_t> count = bytes_->read_at(position_, buffer_);
        if (!count)
            source_failure_ = count.error();
        filled_ = count ? *count : 0;
        next_ = 0;
        position_ += filled_;
        return filled_ > 0;
    }

    ByteSource* bytes_;
    std::uint64_t position_ = 0;
    std::vector<char> buffer_ = std::vector<char>(64 * 1024);
    std::size_t next_ = 0;
    std::size_t filled_ = 0;
    ErrorCode source_failure_ = ErrorCode::Ok;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    png_bytep row_ = nullptr;
    std::jmp_buf jump_{};
};

// Rows in the order of the file.
class SequentialPng final : public PictureRows {
  public:
    explicit SequentialPng(std::unique_ptr<PngReader> reader)
        : reader_(std::move(reader)), layout_(reader_->layout()) {}

    const PictureLayout& layout() const override { return layout_; }
    std::string profile() const override { return reader_->profile(layout_.model); }
    Result<void> read_row(std::span<std::byte> row) override {
        if (!reader_->read_row(reinterpret_cast<png_bytep>(row.data())))
            return Failure{reader_->failure()};
        return {};
    }

  private:
    std::unique_ptr<PngReader> reader_;
    PictureLayout layout_;
};

// The mean of square blocks of an interlaced picture, whose pixels come in the order of Adam7's
// passes (section 8): each is added to its block as it comes.
class InterlacedPng final : public PictureRows {
  public:
    InterlacedPng(std::unique_ptr<PngReader> reader, std::uint32_t block)
        : reader_(std::move(reader)), source_(reader_->layout()), block_(block), layout_(source_) {
        layout_.width = (source_.width + block - 1) / block;
        layout_.height = (source_.height + block - 1) / block;
        layout_.component_size = 2;
        sums_.resize(std::size_t{layout_.width} * layout_.height * stride());
    }

    // Bytes of the sums.
    static std::uint64_t memory_of(const PictureLayout& source, std::uint32_t block) {
        return std::uint64_t{(source.width + block - 1) / block} *
               ((source.height + block - 1) / block) * (source.components() + 1) * sizeof(float);
    }

    const PictureLayout& layout() const override { return layout_; }
    std::string profile() const override { return reader_->profile(layout_.model); }
    Result<void> read_row(std::span<std::byte> row) override {
        if (!read_)
            read_passes();
        const float* sums = sums_.data() + std::size_t{next_row_} * layout_.width * stride();
        ++next_row_;
        auto* pixel = reinterpret_cast<std::uint16_t*>(row.data());
        float weight_of_row = 0;
        for (std::uint32_t x = 0; x < layout_.width; ++x, sums += stride()) {
            weight_of_row += sums[stride() - 1];
            pixel = write_mean(sums, pixel);
        }
        if (weight_of_row == 0) // the file ended before
            return Failure{reader_->failure()};
        return {};
    }

  private:
    // Sums of the components, colours multiplied with their alpha, and the number of pixels.
    std::size_t stride() const { return source_.components() + 1; }

    void read_passes() {
        read_ = true;
        std::vector<std::uint8_t> row(source_.row_size());
        for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
            const std::uint32_t columns = PNG_PASS_COLS(source_.width, pass);
            const std::uint32_t rows = columns > 0 ? PNG_PASS_ROWS(source_.height, pass) : 0;
            for (std::uint32_t y = 0; y < rows; ++y) {
                if (!reader_->read_row(row.data()))
                    return;
                float* sums = sums_.data() + std::size_t{PNG_ROW_FROM_PASS_ROW(y, pass) / block_} *
                                                 layout_.width * stride();
                if (source_.component_size == 1)
                    add_row(row.data(), columns, pass, sums);
                else
                    add_row(reinterpret_cast<const std::uint16_t*>(row.data()), columns, pass,
                            sums);
            }
        }
    }

    template <typename Component>
    void add_row(const Component* pixel, std::uint32_t columns, int pass, float* sums) {
        constexpr float largest = sizeof(Component) == 1 ? 255.0F : 65535.0F;
        const std::uint32_t colours = source_.colours();
        for (std::uint32_t x = 0; x < columns; ++x, pixel += source_.components()) {
            float* sum = sums + std::size_t{PNG_COL_FROM_PASS_COL(x, pass) / block_} * stride();
            const float alpha =
                source_.has_alpha ? static_cast<float>(pixel[colours]) / largest : 1.0F;
            for (std::uint32_t c = 0; c < colours; ++c)
                sum[c] += alpha * static_cast<float>(pixel[c]) / largest;
            if (source_.has_alpha)
                sum[colours] += alpha;
            sum[stride() - 1] += 1;
        }
    }

    // Gives the place behind the pixel.
    std::uint16_t* write_mean(const float* sums, std::uint16_t* pixel) const {
        const float count = sums[stride() - 1];
        const float alpha = source_.has_alpha ? sums[source_.colours()] : count;
        for (std::uint32_t c = 0; c < source_.colours(); ++c)
            *pixel++ = alpha > 0 ? scaled(sums[c] / alpha) : std::uint16_t{0};
        if (source_.has_alpha)
            *pixel++ = count > 0 ? scaled(alpha / count) : std::uint16_t{0};
        return pixel;
    }
    static std::uint16_t scaled(float value) {
        return static_cast<std::uint16_t>(std::min(value, 1.0F) * 65535.0F + 0.5F);
    }

    std::unique_ptr<PngReader> reader_;
    PictureLayout source_;
    std::uint32_t block_;
    PictureLayout layout_;
    std::vector<float> sums_;
    std::uint32_t next_row_ = 0;
    bool read_ = false;
};

} // namespace

Result<std::unique_ptr<PictureRows>> open_png(ByteSource& bytes, const DecodingRequest& request) {
    auto reader = std::make_unique<PngReader>(bytes);
    if (!reader->read_header())
        return Failure{reader->failure()};
    if (!reader->is_interlaced())
        return std::unique_ptr<PictureRows>(std::make_unique<SequentialPng>(std::move(reader)));
    const PictureLayout source = reader->layout();
    // Whole where that fits; otherwise in blocks as large as the size asked for allows.
    std::uint32_t block = 1;
    if (InterlacedPng::memory_of(source, block) > decoder_memory)
        while (is_enough({source.width / (block + 1), source.height / (block + 1)}, request.shape))
            ++block;
    if (InterlacedPng::memory_of(source, block) > decoder_memory)
        return Failure{ErrorCode::PictureTooLarge};
    return std::unique_ptr<PictureRows>(std::make_unique<InterlacedPng>(std::move(reader), block));
}

} // namespace vell::pictures
