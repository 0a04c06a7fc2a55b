#include "src/archive/deflate_encoder.h"

#include <libdeflate.h>

#include <algorithm>
#include <new>

namespace vell::archive {
namespace {

// The library's level for one of 1 to 10. Its level 5 is the first that looks one byte ahead; 6 and
// 7 take up to a half longer for at most a hundredth of the size, 8 and 9 up to four times as long,
// and those from 10 on look for the best way to write each block.
constexpr int library_level(int level) {
    constexpr int levels[] = {1, 2, 2, 3, 3, 4, 4, 4, 5, 12};
    return levels[level - 1];
}

} // namespace

void DeflateEncoder::Free::operator()(libdeflate_compressor* compressor) const {
    libdeflate_free_compressor(compressor);
}

DeflateEncoder::DeflateEncoder(int level)
    : level_(level), compressor_(libdeflate_alloc_compressor(library_level(level))) {
    if (!compressor_)
        throw std::bad_alloc();
}

std::span<char> DeflateEncoder::room_for(std::size_t size) {
    if (part_.size() < size)
        part_.resize(size);
    return std::span(part_).first(size);
}

std::string_view DeflateEncoder::encode(std::size_t size, bool is_last) {
    constexpr std::size_t joint = 6; // bytes, at most
    const std::size_t bound = libdeflate_deflate_compress_bound(compressor_.get(), size) + joint;
    if (compressed_.size() < bound)
        compressed_.resize(bound);
    const auto compress = is_last ? libdeflate_deflate_compress : libdeflate_deflate_compress_part;
    return {compressed_.data(), compress(compressor_.get(), part_.data(), size, compressed_.data(),
                                         compressed_.size())};
}

} // namespace vell::archive
