#include "src/archive/deflate_encoder.h"

#include <libdeflate.h>

#include <algorithm>
#include <new>

namespace vell::archive {
namespace {

constexpr int library_level(int level) {
    constexpr int most_thorough = 12;
    return level < 10 ? level : most_thorough;
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
