// Compresses an entry's data (RFC 1951), part by part.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

struct libdeflate_compressor;

namespace vell::archive {

// One stream after the other. A part is compressed on its own, without what came before, and ends
// at a byte, where the next one is joined: parts of this size lose some thousandths of the
// archive's size, and memory is that of two parts however long the data are.
class DeflateEncoder {
  public:
    static constexpr std::size_t part_size = 1 << 20;

    // From 1, which is fast, to 10, which is as small as it gets.
    explicit DeflateEncoder(int level);
    DeflateEncoder(const DeflateEncoder&) = delete;
    DeflateEncoder& operator=(const DeflateEncoder&) = delete;

    int level() const { return level_; }

    // Where a part is put before it is encoded.
    std::span<char> room_for(std::size_t size);
    // The compressed bytes of the first `size` bytes there, which stay until the next call. All
    // parts but the last have the full size.
    std::string_view encode(std::size_t size, bool is_last);

  private:
    struct Free {
        void operator()(libdeflate_compressor* compressor) const;
    };

    int level_;
    std::unique_ptr<libdeflate_compressor, Free> compressor_;
    std::vector<char> part_;
    std::vector<char> compressed_;
};

} // namespace vell::archive
