// A picture inside a file, as a file of its own.
#pragma once

#include "src/base/byte_source.h"

namespace vell::pictures {

class PartOfBytes final : public ByteSource {
  public:
    // The part lies in `whole`, which outlives it.
    PartOfBytes(ByteSource& whole, std::uint64_t start, std::uint64_t size)
        : whole_(whole), start_(start), size_(size) {}

    std::uint64_t size() const override { return size_; }
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        if (position >= size_)
            return std::size_t{0};
        const std::uint64_t left = size_ - position;
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, bytes.size()));
        return whole_.read_at(start_ + position, bytes.first(count));
    }

  private:
    ByteSource& whole_;
    std::uint64_t start_;
    std::uint64_t size_;
};

} // namespace vell::pictures
