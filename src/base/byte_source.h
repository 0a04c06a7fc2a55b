// Bytes that can be read at any place: those of a file, or of a text in memory.
#pragma once

#include "src/base/result.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

namespace vell {

class ByteSource {
  public:
    virtual ~ByteSource() = default;

    virtual std::uint64_t size() const = 0;
    // Bytes read from that position on: fewer than asked for only where the source ends, none
    // beyond its end.
    virtual Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) = 0;
};

// Bytes that stay the caller's.
class BytesInMemory final : public ByteSource {
  public:
    explicit BytesInMemory(std::string_view bytes) : bytes_(bytes) {}

    std::uint64_t size() const override { return bytes_.size(); }
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        if (position >= bytes_.size())
            return std::size_t{0};
        return bytes_.copy(bytes.data(), bytes.size(), static_cast<std::size_t>(position));
    }

  private:
    std::string_view bytes_;
};

} // namespace vell
