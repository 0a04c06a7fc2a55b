// What the decoders of pictures are given.
#pragma once

#include "src/base/byte_source.h"
#include "src/pictures/geometry.h"
#include "src/system/pictures.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace vell::pictures {

// Room for what a decoder cannot keep in memory. It goes with its owner.
class SpillFile {
  public:
    SpillFile() = default;
    SpillFile(const SpillFile&) = delete;
    SpillFile& operator=(const SpillFile&) = delete;
    virtual ~SpillFile() = default;

    // False where that fails. Only what was written is read.
    virtual bool write(std::uint64_t position, std::span<const char> bytes) = 0;
    virtual bool read(std::uint64_t position, std::span<char> bytes) = 0;
};

struct DecodingRequest {
    // What is to be made of the picture: a decoder that can give it smaller at less cost does, as
    // long as it is large enough.
    ThumbnailShape shape;
    // Null where it cannot be had.
    std::function<std::unique_ptr<SpillFile>()> new_spill_file = {};
};

// Memory of one decoder beside its rows, in bytes.
inline constexpr std::size_t decoder_memory = 16 << 20;

// The picture in a JPEG file (ITU-T T.81): baseline and progressive, 8 bits, of 1, 3 or 4
// components. PictureDamaged where no frame can be read, PictureTooLarge for one that would take
// too long for what its file holds. What a file that is cut off lacks is grey.
Result<std::unique_ptr<PictureRows>> open_jpeg(ByteSource& bytes, const DecodingRequest& request);

// The picture in a PNG file (PNG, third edition), of all kinds. PictureDamaged where there is none,
// PictureTooLarge for an interlaced one that does not fit into memory at the size asked for.
Result<std::unique_ptr<PictureRows>> open_png(ByteSource& bytes, const DecodingRequest& request);

} // namespace vell::pictures
