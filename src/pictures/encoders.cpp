#include "src/pictures/encoders.h"

#include "src/pictures/decoding/jpeg_errors.h"

#include <png.h>

#include <array>
#include <csetjmp>
#include <new>
#include <vector>

namespace vell::pictures {
namespace {

// Takes the library's bytes. All that can fail is memory.
class JpegTarget {
  public:
    explicit JpegTarget(std::string& bytes) : bytes_(bytes) {
        manager_.init_destination = [](j_compress_ptr jpeg) {
            of(jpeg).empty();
        };
        manager_.empty_output_buffer = [](j_compress_ptr jpeg) -> boolean {
            of(jpeg).take(buffer_size);
            return of(jpeg).empty();
        };
        manager_.term_destination = [](j_compress_ptr jpeg) {
            of(jpeg).take(buffer_size - jpeg->dest->free_in_buffer);
        };
    }
    JpegTarget(const JpegTarget&) = delete;
    JpegTarget& operator=(const JpegTarget&) = delete;

    jpeg_destination_mgr* manager() { return &manager_; }
    bool has_failed() const { return has_failed_; }

  private:
    static constexpr std::size_t buffer_size = 16 * 1024;

    static JpegTarget& of(j_compress_ptr jpeg) {
        return *reinterpret_cast<JpegTarget*>(jpeg->dest);
    }
    boolean empty() {
        manager_.next_output_byte = buffer_.data();
        manager_.free_in_buffer = buffer_size;
        return TRUE;
    }
    void take(std::size_t count) {
        try { // must not leave through the library
            bytes_.append(reinterpret_cast<const char*>(buffer_.data()), count);
        } catch (const std::bad_alloc&) {
            has_failed_ = true;
        }
    }

    jpeg_destination_mgr manager_{}; // the first member: the library hands back its address
    std::string& bytes_;
    std::array<JOCTET, buffer_size> buffer_{};
    bool has_failed_ = false;
};

void write_jpeg(jpeg_compress_struct& jpeg, const Picture& picture, int quality) {
    jpeg.image_width = picture.width;
    jpeg.image_height = picture.height;
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, quality, TRUE);
    constexpr int fine_quality = 90; // from which on colours are kept as fine as light
    if (quality >= fine_quality)
        jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1;
    jpeg.optimize_coding = TRUE;
    jpeg_start_compress(&jpeg, TRUE);
    const std::size_t row_size = std::size_t{picture.width} * 3;
    while (jpeg.next_scanline < jpeg.image_height) {
        JSAMPROW row = const_cast<JSAMPROW>(picture.pixels.data() + jpeg.next_scanline * row_size);
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
}

// The library's writer, whose errors are jumps.
struct PngWriter {
    std::string* bytes;
    std::jmp_buf jump{};
    png_structp png = nullptr;
    png_infop info = nullptr;

    explicit PngWriter(std::string& target) : bytes(&target) {
        png = png_create_write_struct(
            PNG_LIBPNG_VER_STRING, this,
            [](png_structp p, png_const_charp) {
                std::longjmp(static_cast<PngWriter*>(png_get_error_ptr(p))->jump, 1); // NOLINT
            },
            [](png_structp, png_const_charp) {});
        if (png)
            info = png_create_info_struct(png);
    }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter() { png_destroy_write_struct(&png, &info); }

    static void take(png_structp png, png_bytep data, std::size_t size) {
        if (!static_cast<PngWriter*>(png_get_io_ptr(png))->append(data, size))
            png_error(png, "");
    }
    bool append(png_bytep data, std::size_t size) {
        try {
            bytes->append(reinterpret_cast<const char*>(data), size);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    bool write(const Picture& picture) {
        if (!info || setjmp(jump) != 0) // NOLINT(cert-err52-cpp)
            return false;
        png_set_write_fn(png, this, take, nullptr);
        png_set_IHDR(png, info, picture.width, picture.height, 8,
                     picture.has_alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_sRGB(png, info, PNG_sRGB_INTENT_RELATIVE);
        png_write_info(png, info);
        const std::size_t row_size = std::size_t{picture.width} * picture.components();
        for (std::uint32_t y = 0; y < picture.height; ++y)
            png_write_row(png, picture.pixels.data() + y * row_size);
        png_write_end(png, info);
        return true;
    }
};

} // namespace

void flatten(Picture& picture, Rgb background) {
    if (!picture.has_alpha)
        return;
    const std::array<unsigned, 3> below{background.red, background.green, background.blue};
    const std::uint8_t* from = picture.pixels.data();
    std::uint8_t* to = picture.pixels.data();
    const std::size_t count = std::size_t{picture.width} * picture.height;
    for (std::size_t i = 0; i < count; ++i, from += 4) {
        const unsigned alpha = from[3];
        for (int c = 0; c < 3; ++c)
            *to++ =
                static_cast<std::uint8_t>((from[c] * alpha + below[c] * (255 - alpha) + 127) / 255);
    }
    picture.pixels.resize(count * 3);
    picture.has_alpha = false;
}

std::string encode_jpeg(const Picture& picture, int quality) {
    std::string bytes;
    JpegErrors errors;
    JpegTarget target(bytes);
    jpeg_compress_struct jpeg{};
    jpeg.err = errors.manager();
    const bool done = errors.guarded([&] {
        jpeg_create_compress(&jpeg);
        jpeg.dest = target.manager();
        write_jpeg(jpeg, picture, quality);
    });
    jpeg_destroy_compress(&jpeg);
    if (!done || target.has_failed())
        throw std::bad_alloc();
    return bytes;
}

std::string encode_png(const Picture& picture) {
    std::string bytes;
    if (!PngWriter(bytes).write(picture))
        throw std::bad_alloc();
    return bytes;
}

} // namespace vell::pictures
