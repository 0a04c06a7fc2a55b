// The judge of raw deflate streams.
#pragma once

#include <zlib.h>

#include <limits>
#include <string>
#include <string_view>

namespace vell::test {

// What came out of a stream, and whether it is whole.
struct Expanded {
    std::string bytes;
    bool is_whole = false;
};

// As zlib expands a raw stream; it stops behind `most` bytes.
inline Expanded by_zlib(std::string_view compressed,
                        std::size_t most = std::numeric_limits<std::size_t>::max()) {
    Expanded expanded;
    z_stream state{};
    int code = inflateInit2(&state, -MAX_WBITS);
    state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.data()));
    state.avail_in = static_cast<uInt>(compressed.size());
    std::string piece(1 << 16, '\0');
    while (code == Z_OK && expanded.bytes.size() <= most) {
        state.next_out = reinterpret_cast<Bytef*>(piece.data());
        state.avail_out = static_cast<uInt>(piece.size());
        code = inflate(&state, Z_NO_FLUSH);
        expanded.bytes.append(piece, 0, piece.size() - state.avail_out);
    }
    inflateEnd(&state);
    expanded.is_whole = code == Z_STREAM_END;
    return expanded;
}

} // namespace vell::test
