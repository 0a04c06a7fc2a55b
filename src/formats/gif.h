// The blocks of a GIF file (GIF89a, sections 15 to 27).
#pragma once

#include "src/formats/window.h"

#include <cstdint>
#include <tuple>

namespace vell::formats::gif {

// Logical screen descriptor (18), behind signature and version.
struct LogicalScreen {
    static constexpr std::size_t start = 6;
    static constexpr std::size_t size = 7;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint8_t packed = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &LogicalScreen::width}, Field{2, &LogicalScreen::height},
                          Field{4, &LogicalScreen::packed}};
    }
    unsigned bits_per_pixel() const { return (packed & 7U) + 1; }
};

// Image descriptor (20), behind its introducer.
struct ImageDescriptor {
    static constexpr std::size_t size = 9;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint16_t left = 0;
    std::uint16_t top = 0;
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint8_t packed = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &ImageDescriptor::left}, Field{2, &ImageDescriptor::top},
                          Field{4, &ImageDescriptor::width}, Field{6, &ImageDescriptor::height},
                          Field{8, &ImageDescriptor::packed}};
    }
};

// What a block begins with; any other byte is taken for the trailer.
enum class Introducer : std::uint8_t { Extension = 0x21, Image = 0x2C, Trailer = 0x3B };

class BlockWalk {
  public:
    // `file` with the screen that was read of it.
    BlockWalk(const Window& file, const LogicalScreen& screen);

    // The next block, with the descriptor of an image read. CutOff where the file ends before.
    Read<Introducer> next();
    // Goes to the end of the block that came last. CutOff where the file ends before.
    Read<void> pass_data();

    std::uint64_t position() const { return file_.position(); }
    // Of the extension that came last (23.c, 24.c, 25.c, 26.c).
    std::uint8_t label() const { return label_; }

  private:
    Window file_;
    bool has_data_ = false; // which the block before ends with
    std::uint8_t label_ = 0;
};

} // namespace vell::formats::gif
