#include "src/base/utf8.h"

#include "src/base/utf8_sequence.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace vell {
namespace {

constexpr bool is_continuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

// Length of the run of ASCII that begins at `position`, read a word at a time. Words are
// little-endian: the first byte is the lowest.
std::size_t ascii_run(const unsigned char* data, std::size_t size, std::size_t position) {
    const std::size_t start = position;
    for (; position + sizeof(std::uint64_t) <= size; position += sizeof(std::uint64_t)) {
        std::uint64_t word;
        std::memcpy(&word, data + position, sizeof word);
        if (const std::uint64_t high_bits = word & 0x8080808080808080u; high_bits != 0)
            return position - start + static_cast<std::size_t>(std::countr_zero(high_bits)) / 8;
    }
    while (position < size && data[position] < 0x80)
        ++position;
    return position - start;
}

// Length of a well-formed sequence of two or three bytes that needs no further check than the shape
// of its bytes; 0 when the long way has to decide.
std::size_t plain_sequence(const unsigned char* bytes) {
    if (bytes[0] >= 0xC2 && bytes[0] < 0xE0)
        return is_continuation(bytes[1]) ? 2 : 0;
    const bool three = bytes[0] > 0xE0 && bytes[0] < 0xF0 && bytes[0] != 0xED;
    return three && is_continuation(bytes[1]) && is_continuation(bytes[2]) ? 3 : 0;
}

} // namespace

bool is_valid_utf8(std::string_view bytes) {
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t size = bytes.size();
    std::size_t position = 0;
    for (;;) {
        position += ascii_run(data, size, position);
        if (position == size)
            return true;
        do {
            std::size_t length = position + 3 <= size ? plain_sequence(data + position) : 0;
            if (length == 0) {
                const Utf8Sequence sequence = read_utf8(data + position, data + size);
                if (!sequence.valid)
                    return false;
                length = sequence.length;
            }
            position += length;
        } while (position < size && data[position] >= 0x80);
    }
}

std::size_t cut_sequence_at_start(std::string_view bytes) {
    std::size_t length = 0;
    while (length < bytes.size() && is_continuation(static_cast<unsigned char>(bytes[length])))
        ++length;
    return length <= 3 ? length : 0; // more continue nothing
}

std::size_t cut_sequence_at_end(std::string_view bytes) {
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    for (std::size_t length = 1; length <= 3 && length <= bytes.size(); ++length) {
        const std::size_t position = bytes.size() - length;
        if (is_continuation(data[position]))
            continue;
        const Utf8Sequence sequence = read_utf8(data + position, data + bytes.size());
        const bool goes_on = utf8_length(data[position]) > length && sequence.length == length;
        return goes_on ? length : 0;
    }
    return 0;
}

} // namespace vell
