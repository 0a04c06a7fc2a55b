// The index of a file that holds several pictures (CIPA DC-007, section 5.2): a block of tags in an
// APP2 segment of the first one, whose first directory lists them all.
#pragma once

#include "src/formats/record.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::formats::jpeg {

// A picture in the list (5.2.3.3).
struct Picture {
    static constexpr std::size_t size = 16;

    std::uint32_t attributes = 0;
    std::uint32_t picture_size = 0;
    std::uint32_t offset = 0; // from the index's header; 0 for the picture that the index stands in
    std::array<std::uint16_t, 2> dependents{};

    static constexpr auto fields() {
        return std::tuple{Field{0, &Picture::attributes}, Field{4, &Picture::picture_size},
                          Field{8, &Picture::offset}, Field{12, &Picture::dependents}};
    }
};

struct PictureList {
    static constexpr std::uint16_t tag = 0xB002;

    ByteOrder order = ByteOrder::Little;
    std::size_t start = 0; // in the index
    std::vector<Picture> pictures;

    // Of an index from its TIFF header on, the pictures that lie in it; nullopt where no list can
    // be read.
    static std::optional<PictureList> read(std::string_view index);
    // Puts the pictures where those of the index stood.
    void write(std::string& index) const;
};

} // namespace vell::formats::jpeg
