// The heaps of Canon's older raw photographs (CIFF, Specification on Image Data File 1.0 Revision
// 4): records, some of which are heaps again, with a directory at the end of each.
#pragma once

#include "src/formats/window.h"

#include <cstdint>
#include <vector>

namespace vell::formats::ciff {

// Without the two bits of the place where the data are kept.
enum class RecordType : std::uint16_t {
    MakeAndModel = 0x080A, // texts, each with a zero byte behind it
    Firmware = 0x080B,
    Owner = 0x0810,
    CapturedTime = 0x180E,
    ImageInformation = 0x1810,
    Exposure = 0x1818,
    FullPicture = 0x2007,  // JPEG
    SmallPicture = 0x2008, // JPEG
};

struct Record {
    RecordType type{};
    Window data;
};

struct ImageInformation {
    static constexpr std::size_t size = 16;

    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::int32_t rotation = 0; // degrees, clockwise

    static constexpr auto fields() {
        return std::tuple{Field{0, &ImageInformation::width}, Field{4, &ImageInformation::height},
                          Field{12, &ImageInformation::rotation}};
    }
};

struct CapturedTime {
    static constexpr std::size_t size = 12;

    std::uint32_t seconds = 0; // since 1970, as the camera's clock showed them

    static constexpr auto fields() { return std::tuple{Field{0, &CapturedTime::seconds}}; }
};

// The bits of single-precision numbers in the units of APEX.
struct Exposure {
    static constexpr std::size_t size = 12;

    std::uint32_t compensation = 0;
    std::uint32_t shutter_speed = 0;
    std::uint32_t aperture = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &Exposure::compensation}, Field{4, &Exposure::shutter_speed},
                          Field{8, &Exposure::aperture}};
    }
};

inline constexpr std::size_t most_records = 4096;

struct File {
    ByteOrder order = ByteOrder::Little;
    std::vector<Record> records; // of all heaps

    // What is damaged is left out. Absent for anything but such a file.
    static Read<File> read(const Window& file);
};

} // namespace vell::formats::ciff
