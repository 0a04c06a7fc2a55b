#include "src/archive/deflate_decoder.h"
#include "src/archive/deflate_encoder.h"
#include "tests/portable/by_zlib.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <string>

namespace vell::archive {
namespace {

using test::by_zlib;
using test::Expanded;

// Lines with numbers in them: matches near and far, and some noise.
std::string lines(std::size_t size, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::string text;
    while (text.size() < size)
        text += "Invoice " + std::to_string(random() % 100'000) + " for the goods of the month\n";
    text.resize(size);
    return text;
}

std::string noise(std::size_t size) {
    std::mt19937 random(7);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

std::string deflated(const std::string& bytes, int level, int strategy = Z_DEFAULT_STRATEGY) {
    z_stream state{};
    deflateInit2(&state, level, Z_DEFLATED, -MAX_WBITS, 9, strategy);
    std::string out(deflateBound(&state, static_cast<uLong>(bytes.size())) + 16, '\0');
    state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    state.avail_in = static_cast<uInt>(bytes.size());
    state.next_out = reinterpret_cast<Bytef*>(out.data());
    state.avail_out = static_cast<uInt>(out.size());
    deflate(&state, Z_FINISH);
    out.resize(state.total_out);
    deflateEnd(&state);
    return out;
}

Expanded by_decoder(DeflateDecoder& decoder, std::string_view compressed, std::size_t piece_size) {
    Expanded stream;
    const auto next = [&]() -> Result<std::string_view> {
        const std::string_view piece = compressed.substr(0, piece_size);
        compressed.remove_prefix(piece.size());
        return piece;
    };
    stream.is_whole = static_cast<bool>(decoder.decode(next, [&](std::string_view bytes) {
        stream.bytes += bytes;
        return Result<void>();
    }));
    return stream;
}

TEST(DeflateEncoder, GivesOneStreamOfItsParts) {
    constexpr std::size_t part = DeflateEncoder::part_size;
    for (const int level : {1, 9, 10}) {
        DeflateEncoder encoder(level);
        for (const std::size_t size : {std::size_t{4}, part, part + 1, std::size_t{2} * part}) {
            if (level != 9 && size != part + 1)
                continue;
            for (const std::string& bytes : {lines(size), noise(size)}) {
                std::string compressed;
                for (std::size_t at = 0; at < size; at += part) {
                    const std::size_t count = std::min(part, size - at);
                    bytes.copy(encoder.room_for(count).data(), count, at);
                    compressed += encoder.encode(count, at + count == size);
                }
                const Expanded stream = by_zlib(compressed);
                EXPECT_TRUE(stream.is_whole && stream.bytes == bytes) << level << ' ' << size;
                EXPECT_LE(compressed.size(), size + size / 8'000 + 32);
            }
        }
    }
}

TEST(DeflateDecoder, TakesWhatEncodersMake) {
    DeflateDecoder decoder;
    const std::string text = lines(600'000);
    for (const std::string& bytes :
         {std::string(), std::string("a"), noise(1'200'000), std::string(8'000'000, 'z'),
          text + std::string(3'000'000, '.') + noise(200'000) + text}) {
        for (const auto& [level, strategy] : {std::pair(9, Z_DEFAULT_STRATEGY),
                                              {1, Z_DEFAULT_STRATEGY},
                                              {0, Z_DEFAULT_STRATEGY},
                                              {6, Z_FIXED},
                                              {6, Z_HUFFMAN_ONLY},
                                              {6, Z_RLE}}) {
            const std::string compressed = deflated(bytes, level, strategy);
            for (const std::size_t piece : {std::size_t{65'536}, std::size_t{999'983}}) {
                const Expanded stream = by_decoder(decoder, compressed + "behind it", piece);
                EXPECT_TRUE(stream.is_whole && stream.bytes == bytes)
                    << bytes.size() << ' ' << level << ' ' << strategy;
            }
        }
    }
    const std::string small = deflated(text.substr(0, 5'000), 9);
    EXPECT_EQ(by_decoder(decoder, small, 1).bytes, text.substr(0, 5'000));
}

// Damage is found where zlib finds it, and what stands before it is given.
TEST(DeflateDecoder, JudgesDamageAsZlibDoes) {
    DeflateDecoder decoder;
    std::mt19937 random(3);
    const std::string whole = deflated(lines(40'000) + noise(3'000) + lines(40'000, 2), 6);
    for (int round = 0; round < 600; ++round) {
        std::string changed = whole;
        if (round % 3 == 0)
            changed.resize(random() % whole.size());
        else
            changed[random() % whole.size()] ^= static_cast<char>(1u << random() % 8);
        const Expanded wanted = by_zlib(changed);
        const Expanded stream = by_decoder(decoder, changed, 4'096);
        ASSERT_EQ(stream.is_whole, wanted.is_whole) << round;
        ASSERT_TRUE(stream.bytes == wanted.bytes) << round;
    }
}

TEST(DeflateDecoder, AFailingSourceCountsWhenMoreIsNeeded) {
    DeflateDecoder decoder;
    const std::string compressed = deflated(lines(1'000), 9);
    const auto decode = [&](std::string_view known) {
        return decoder.decode(
            [&]() -> Result<std::string_view> {
                if (known.empty())
                    return Failure{ErrorCode::Busy};
                return std::exchange(known, {});
            },
            [](std::string_view) { return Result<void>(); });
    };
    EXPECT_TRUE(decode(compressed));
    EXPECT_EQ(decode(std::string_view(compressed).substr(0, 100)).error(), ErrorCode::Busy);
}

} // namespace
} // namespace vell::archive
