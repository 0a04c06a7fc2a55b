// Pictures as rows of pixels, and what the system knows of pictures.
#pragma once

#include "src/base/byte_source.h"
#include "src/base/result.h"
#include "src/params/paths.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vell::pictures {

enum class ColourModel : std::uint8_t {
    Gray,
    Rgb,
    Cmyk, // amounts of ink: 0 is paper
};

// How the rows of a picture are laid out: components of a pixel side by side, alpha the last.
struct PictureLayout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ColourModel model = ColourModel::Rgb;
    bool has_alpha = false;          // not premultiplied
    std::uint8_t component_size = 1; // bytes: 1, or 2 in the machine's byte order

    constexpr std::uint32_t colours() const {
        return model == ColourModel::Gray ? 1 : model == ColourModel::Rgb ? 3 : 4;
    }
    constexpr std::uint32_t components() const { return colours() + (has_alpha ? 1 : 0); }
    constexpr std::size_t row_size() const {
        return std::size_t{width} * components() * component_size;
    }
};

// A picture that is read from the top, a row at a time.
class PictureRows {
  public:
    PictureRows() = default;
    PictureRows(const PictureRows&) = delete;
    PictureRows& operator=(const PictureRows&) = delete;
    virtual ~PictureRows() = default;

    virtual const PictureLayout& layout() const = 0;
    // The ICC profile that the colours follow; empty for sRGB, and for grey with its curve.
    virtual std::string profile() const { return {}; }
    // The next row, of row_size bytes. A failure ends the picture: what is missing stays unknown.
    virtual Result<void> read_row(std::span<std::byte> row) = 0;
};

// A small picture as a whole: sRGB, 8 bits a component, rows without gaps.
struct Picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool has_alpha = false; // the fourth component, not premultiplied
    std::vector<std::uint8_t> pixels = {};

    constexpr std::uint32_t components() const { return has_alpha ? 4 : 3; }
};

struct PdfPageRequest {
    std::uint32_t page = 1; // counted from 1
    std::uint32_t size = 0; // of the longer side, in pixels
};

// The kinds of things whose icon may be asked for.
enum class IconOf : std::uint8_t {
    Item,      // what stands at the path
    Extension, // a file of that name, whether it is there or not
};

class PictureSystem {
  public:
    virtual ~PictureSystem() = default;

    // A frame, counted from 0, by whatever decoder the system has for these bytes, which must
    // outlive the rows. NotSupported where it has none, BadParameter for a frame beyond the last,
    // PictureTooLarge beyond what it decodes in bounded memory, PictureDamaged otherwise.
    virtual Result<std::unique_ptr<PictureRows>> decode(ByteSource& bytes, std::uint32_t frame) = 0;
    // A page of a PDF file on white paper. The codes of read_pdf_text; BadParameter for a page
    // that is not there. What is worth a line in the debug log is added to `notes`.
    virtual Result<Picture> pdf_page(ByteSource& bytes, const PdfPageRequest& request,
                                     std::vector<std::string>& notes) = 0;
    // The picture that the shell has of a file's contents, its longer side at most `size`.
    // NoPicture when it has only an icon.
    virtual Result<Picture> shell_thumbnail(const params::NativePath& path, std::uint32_t size) = 0;
    // The icon that the shell shows, `size` pixels square.
    virtual Result<Picture> icon(const params::NativePath& path, IconOf what,
                                 std::uint32_t size) = 0;
};

} // namespace vell::pictures
