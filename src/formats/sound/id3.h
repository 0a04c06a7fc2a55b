// Tags before sound (ID3 tag version 2.2.0, 2.3.0 and 2.4.0): the one walk over their frames.
#pragma once

#include "src/formats/window.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace vell::formats::id3 {

struct Frame {
    std::string id;  // of four characters, of three before version 2.3
    Window data;     // as they are kept
    bool is_in_file; // or the tag was expanded as a whole
    bool is_unsynchronised = false;
    bool is_compressed = false;
    bool is_encrypted = false;

    // Whether the file has the value as it is.
    bool is_plain() const {
        return is_in_file && !is_unsynchronised && !is_compressed && !is_encrypted;
    }
    // Absent for an encrypted one, TooLarge beyond the limit, Corrupt for one that cannot be
    // expanded.
    Read<std::string> value(std::size_t limit) const;
};

// What is done with each; a fault ends the walk.
using FrameVisitor = std::function<Read<void>(const Frame&)>;

class Tag {
  public:
    // Of the tag that the window begins with, which outlives it. Absent where there is none, or one
    // of another version.
    static Read<Tag> read(const Window& file);

    std::uint8_t version() const { return version_; } // 2 to 4
    // With its header, and its footer.
    std::uint64_t size() const { return size_; }

    // Gives each frame as far as the tag is sound. TooLarge for a tag that would have to be
    // expanded and is longer than `longest_expanded`.
    Read<void> each_frame(const FrameVisitor& visitor) const;

    static constexpr std::uint64_t longest_expanded = longest_block;

  private:
    explicit Tag(const Window& frames) : frames_(frames) {}
    Read<void> expand();
    Read<std::optional<Frame>> next(Window& frames) const;
    Read<std::uint32_t> size_of_frame(const Window& frames, std::uint32_t field) const;

    struct Expanded;
    Window frames_;
    std::uint8_t version_ = 0;
    std::uint64_t size_ = 0;
    bool is_unsynchronised_ = false;
    bool has_extended_header_ = false;
    std::shared_ptr<Expanded> expanded_;
};

// What "APIC" (4.14; "PIC", 4.15 of version 2.2) has before the picture's data.
struct PictureHeader {
    std::uint8_t type = 0;
    std::uint64_t size = 0;

    static Read<PictureHeader> read(Window value, std::uint8_t version);
};

// Of pictures, for all formats that have taken them over.
enum class PictureType : std::uint8_t { Other = 0, FileIcon = 1, OtherIcon = 2, FrontCover = 3 };

} // namespace vell::formats::id3
