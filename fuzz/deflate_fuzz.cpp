// Expanding a raw deflate stream, in pieces whose size the first byte tells: what comes out, and
// whether the stream is whole, is what zlib says.
#include "fuzz/input.h"
#include "src/archive/deflate_decoder.h"
#include "tests/portable/by_zlib.h"

#include <string>

namespace vell::deflate_fuzz {
namespace {

constexpr std::size_t most = 4 << 20; // bytes of a stream that are looked at

test::Expanded by_decoder(std::string_view compressed, std::size_t piece_size) {
    static archive::DeflateDecoder decoder;
    test::Expanded outcome;
    const auto next = [&]() -> Result<std::string_view> {
        const std::string_view piece = compressed.substr(0, piece_size);
        compressed.remove_prefix(piece.size());
        return piece;
    };
    outcome.is_whole = decoder
                           .decode(next,
                                   [&](std::string_view bytes) -> Result<void> {
                                       outcome.bytes += bytes;
                                       if (outcome.bytes.size() > most)
                                           return Failure{ErrorCode::OutOfMemory};
                                       return {};
                                   })
                           .has_value();
    return outcome;
}

} // namespace

FUZZ_TARGET(deflate) {
    if (size == 0)
        return 0;
    const std::string_view compressed = fuzz::as_text(data, size).substr(1);
    const test::Expanded wanted = test::by_zlib(compressed, most);
    if (wanted.bytes.size() > most)
        return 0;
    const test::Expanded outcome =
        by_decoder(compressed, std::size_t{1} + data[0] * std::size_t{16});
    FUZZ_CHECK(outcome.is_whole == wanted.is_whole);
    FUZZ_CHECK(outcome.bytes == wanted.bytes);
    return 0;
}

} // namespace vell::deflate_fuzz
