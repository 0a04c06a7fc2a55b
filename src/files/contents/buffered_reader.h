// Small reads and seeks over a file at the price of large ones.
//
// The formats read here (tags, segments, chunks, archive records) want a few bytes at a time; the
// reader fetches them in pieces and keeps one. What is asked for beyond the buffer's size goes
// straight to the file.
#pragma once

#include "src/base/byte_source.h"
#include "src/base/bytes.h"
#include "src/base/result.h"
#include "src/system/file_access.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vell::files {

class BufferedReader final : public ByteSource {
  public:
    static constexpr std::size_t default_buffer = 4096;

    // Reads `file` from its start; nothing else may move the file's position meanwhile.
    // The length is asked for once, here.
    static Result<BufferedReader> over(File& file, std::size_t buffer_size = default_buffer);

    std::uint64_t size() const override { return size_; }
    std::uint64_t position() const { return position_; }
    // Bytes between the position and the end; 0 beyond it.
    std::uint64_t remaining() const { return position_ < size_ ? size_ - position_ : 0; }

    // Positions beyond the end are allowed; reads there find nothing. Nothing is read yet.
    void seek(std::uint64_t position) { position_ = position; }
    void skip(std::uint64_t count);

    // Bytes read: fewer than asked for only at the end of the file.
    Result<std::size_t> read(std::span<char> bytes);
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        seek(position);
        return read(bytes);
    }
    // EndOfFile when there are fewer, the position then being the end.
    Result<void> read_exactly(std::span<char> bytes);
    // At most `count` bytes: never allocates more than the file still holds.
    Result<std::string> read_bytes(std::uint64_t count);
    Result<std::uint8_t> read_byte();
    template <typename T>
    Result<T> read_integer(ByteOrder order) {
        char bytes[sizeof(T)];
        VELL_TRY(read_exactly(bytes));
        return *load<T>(std::string_view(bytes, sizeof(T)), 0, order);
    }

  private:
    BufferedReader(File& file, std::uint64_t size, std::size_t buffer_size);
    Result<std::size_t> read_from_file(std::uint64_t position, std::span<char> bytes);

    File* file_;
    std::uint64_t size_;
    std::uint64_t position_ = 0;
    std::uint64_t file_position_ = 0; // where the file itself stands
    std::vector<char> buffer_;
    std::uint64_t buffer_start_ = 0;
    std::size_t buffered_ = 0;
};

} // namespace vell::files
