// A part of a source of bytes that its readers cannot leave.
//
// Formats nest: a segment holds a block of tags, which holds directories. Each gets a window of its
// own, so that no reader has to think of where the one around it ends. Windows are cheap to copy,
// and each copy has its own position.
#pragma once

#include "src/base/byte_source.h"
#include "src/base/bytes.h"
#include "src/formats/damage.h"
#include "src/formats/record.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace vell::formats {

// The most bytes of a file that are held as one block, such as tags, a packet, a profile or a text.
// A longer one is none that anybody wrote on purpose, and nothing of it is read.
inline constexpr std::uint64_t longest_block = 64U << 20U;

class Window {
  public:
    // All of the source, which outlives the window.
    explicit Window(ByteSource& source)
        : source_(&source), size_(source.size()), announced_(size_) {}

    // The part from `offset` on, of so many bytes as far as they are there.
    Window part(std::uint64_t offset, std::uint64_t count) const;
    Window from(std::uint64_t offset) const {
        return part(offset, size_ - std::min(offset, size_));
    }

    std::uint64_t start() const { return start_; } // in the source
    // Bytes that are there, which may be fewer than were announced.
    std::uint64_t size() const { return size_; }
    std::uint64_t announced() const { return announced_; }
    bool is_whole() const { return size_ == announced_; }

    std::uint64_t position() const { return position_; }
    std::uint64_t remaining() const { return size_ - std::min(position_, size_); }
    // Positions beyond the end are allowed; reads there find nothing.
    void seek(std::uint64_t position) { position_ = position; }
    void skip(std::uint64_t count);

    // Bytes read: fewer than asked for only at the end.
    Read<std::size_t> read(std::span<char> bytes);
    // CutOff when there are fewer.
    Read<void> read_exactly(std::span<char> bytes);
    // At most `count` bytes: no more is allocated than there are. TooLarge for more than
    // `longest_block`.
    Read<std::string> read_bytes(std::uint64_t count);
    // What is left of the announced bytes; CutOff when not all of them are there, and TooLarge as
    // above: nothing is read then.
    Read<std::string> read_rest();

    // CutOff when the window ends before.
    template <typename Integer>
    Read<Integer> read_integer(ByteOrder order) {
        std::array<char, sizeof(Integer)> bytes{};
        VELL_TRY(read_exactly(bytes));
        return *load<Integer>({bytes.data(), bytes.size()}, 0, order);
    }
    // CutOff when the window ends before, Absent for another signature.
    template <IsRecord Record>
    Read<Record> read_record(ByteOrder order = Record::order) {
        std::array<char, Record::size> bytes{};
        VELL_TRY(read_exactly(bytes));
        const auto record = formats::read_record<Record>({bytes.data(), bytes.size()}, order);
        if (!record)
            return fault(Damage::Absent);
        return *record;
    }

  private:
    ByteSource* source_;
    std::uint64_t start_ = 0;
    std::uint64_t size_;
    std::uint64_t announced_;
    std::uint64_t position_ = 0;
};

} // namespace vell::formats
