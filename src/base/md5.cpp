#include "src/base/md5.h"

#include "src/base/bytes.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace vell {
namespace {

constexpr std::size_t block_size = 64;

// By how much each step of the four rounds turns (3.4), four numbers for each round.
constexpr std::array<std::array<int, 4>, 4> turns{
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

// The table T: the integer parts of 2^32 times the sine of 1, 2, 3 ... radians.
std::array<std::uint32_t, block_size> make_sines() {
    std::array<std::uint32_t, block_size> sines{};
    for (std::size_t i = 0; i < sines.size(); ++i)
        sines[i] = static_cast<std::uint32_t>(
            std::floor(std::fabs(std::sin(static_cast<double>(i + 1))) * 4294967296.0));
    return sines;
}

using State = std::array<std::uint32_t, 4>;

// What a step mixes the other three words to, and which word of the block it takes.
std::uint32_t mixed(std::size_t round, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    switch (round) {
    case 0:
        return (b & c) | (~b & d);
    case 1:
        return (b & d) | (c & ~d);
    case 2:
        return b ^ c ^ d;
    default:
        return c ^ (b | ~d);
    }
}
std::size_t word_of(std::size_t round, std::size_t step) {
    constexpr std::array<std::size_t, 4> factors{1, 5, 3, 7};
    constexpr std::array<std::size_t, 4> starts{0, 1, 5, 0};
    return (starts[round] + factors[round] * step) % 16;
}

void take_block(std::string_view block, State& state) {
    static const std::array<std::uint32_t, block_size> sines = make_sines();
    auto [a, b, c, d] = state;
    for (std::size_t i = 0; i < sines.size(); ++i) {
        const std::size_t round = i / 16;
        const auto word = *load<std::uint32_t>(block, 4 * word_of(round, i), ByteOrder::Little);
        const std::uint32_t sum = a + mixed(round, b, c, d) + word + sines[i];
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, turns[round][i % 4]);
    }
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
}

} // namespace

std::string md5(std::string_view message) {
    State state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
    const std::uint64_t bits = std::uint64_t{message.size()} * 8;
    for (; message.size() >= block_size; message.remove_prefix(block_size))
        take_block(message.substr(0, block_size), state);

    // A one bit, zeros, and the length in the last eight bytes of a block (3.1, 3.2).
    std::string last(message);
    last += '\x80';
    while (last.size() % block_size != block_size - sizeof bits)
        last += '\0';
    append_integer<std::uint64_t>(last, bits, ByteOrder::Little);
    for (std::string_view rest = last; !rest.empty(); rest.remove_prefix(block_size))
        take_block(rest.substr(0, block_size), state);

    std::string digest;
    for (const std::uint32_t word : state)
        append_integer<std::uint32_t>(digest, word, ByteOrder::Little);
    return digest;
}

} // namespace vell
