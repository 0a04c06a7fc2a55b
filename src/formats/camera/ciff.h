// The heaps of Canon's older raw photographs (CIFF, Specification on Image Data File 1.0 Revision
// 4): records, some of which are heaps again, with a directory at the end of each.
#pragma once

#include "src/formats/window.h"

#include <cstdint>
#include <vector>

namespace vell::formats::ciff {

// Without the two bits of the place where the data are kept.
enum class RecordType : std::uint16_t {
    ImageInformation = 0x1810,
    FullPicture = 0x2007,  // JPEG
    SmallPicture = 0x2008, // JPEG
};

struct Record {
    RecordType type{};
    Window data;
};

// Behind the picture's size and the shape of its pixels.
struct ImageInformation {
    static constexpr std::size_t size = 16;

    std::int32_t rotation = 0; // degrees, clockwise

    static constexpr auto fields() { return std::tuple{Field{12, &ImageInformation::rotation}}; }
};

inline constexpr std::size_t most_records = 4096;

struct File {
    ByteOrder order = ByteOrder::Little;
    std::vector<Record> records; // of all heaps

    // What is damaged is left out. Absent for anything but such a file.
    static Read<File> read(const Window& file);
};

} // namespace vell::formats::ciff
