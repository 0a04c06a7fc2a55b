// The pictures that are found in a file: looked at before they count.
#pragma once

#include "src/formats/window.h"
#include "src/pictures/inside/previews.h"

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vell::pictures {

// Bytes that all copies together may have: as many as one picture.
class CopyRoom {
  public:
    std::uint64_t left() const { return left_; }
    // The value, when there is room for it. One that fails costs half of the room, for all of it
    // may have been read or expanded in vain.
    formats::Read<std::string> take(formats::Read<std::string> value) {
        if (value && value->size() > left_)
            return formats::fault(formats::Damage::TooLarge);
        left_ = value ? left_ - value->size() : left_ / 2;
        return value;
    }

  private:
    std::uint64_t left_ = longest_copy;
};

class FoundPictures {
  public:
    using Kind = EmbeddedPicture::Kind;

    explicit FoundPictures(const formats::Window& file) : file_(file) {}

    const formats::Window& file() const { return file_; }

    // A part of the file, when it is a whole picture that can be decoded; whether it was taken. The
    // file's orientation is for a picture that has none.
    formats::Read<bool> add(const formats::Window& part, Kind kind,
                            std::optional<Orientation> of_file = {});
    CopyRoom& room() { return room_; }
    // One that the file does not have in one piece, for which there was room.
    formats::Read<bool> add_copy(std::string bytes, Kind kind,
                                 std::optional<Orientation> of_file = {});

    std::vector<EmbeddedPicture> take() { return std::move(pictures_); }

  private:
    formats::Window file_;
    std::set<std::uint64_t> seen_; // where parts began
    std::vector<EmbeddedPicture> pictures_;
    CopyRoom room_;
};

} // namespace vell::pictures
