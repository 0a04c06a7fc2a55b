// The pictures that are found in a file: looked at before they count.
#pragma once

#include "src/formats/window.h"
#include "src/pictures/previews.h"

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vell::pictures {

class FoundPictures {
  public:
    using Kind = EmbeddedPicture::Kind;

    explicit FoundPictures(const formats::Window& file) : file_(file) {}

    const formats::Window& file() const { return file_; }

    // A part of the file, when it is a whole picture that can be decoded; whether it was taken. The
    // file's orientation is for a picture that has none.
    formats::Read<bool> add(const formats::Window& part, Kind kind,
                            std::optional<Orientation> of_file = {});
    // One that the file does not have in one piece.
    formats::Read<bool> add_copy(std::string bytes, Kind kind,
                                 std::optional<Orientation> of_file = {});

    std::vector<EmbeddedPicture> take() { return std::move(pictures_); }

  private:
    formats::Window file_;
    std::set<std::uint64_t> seen_; // where parts began
    std::vector<EmbeddedPicture> pictures_;
    std::uint64_t copied_ = 0; // bytes of all copies
};

} // namespace vell::pictures
