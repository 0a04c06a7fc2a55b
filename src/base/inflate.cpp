#include "src/base/inflate.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <span>

namespace vell {
namespace {

class Inflater {
  public:
    Inflater() : ready_(inflateInit(&stream_) == Z_OK) {}
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() {
        if (ready_)
            inflateEnd(&stream_);
    }

    bool ready() const { return ready_; }
    z_stream& stream() { return stream_; }

  private:
    z_stream stream_{};
    bool ready_;
};

// What zlib takes and gives; its input is not written to, whose interface is older than const.
void set_input(z_stream& stream, std::string_view bytes) {
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
}
void set_output(z_stream& stream, std::span<char> bytes) {
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
}

// Expands once without keeping anything.
Result<std::size_t> expanded_size(std::string_view compressed, std::size_t limit) {
    Inflater inflater;
    if (!inflater.ready())
        return Failure{ErrorCode::OutOfMemory};
    z_stream& stream = inflater.stream();
    set_input(stream, compressed);
    std::size_t size = 0;
    std::array<char, 16'384> piece;
    int state = Z_OK;
    while (state == Z_OK) {
        set_output(stream, piece);
        state = inflate(&stream, Z_NO_FLUSH);
        if (state != Z_OK && state != Z_STREAM_END)
            return Failure{ErrorCode::CompressedDataDamaged};
        size += piece.size() - stream.avail_out;
        if (size > limit)
            return Failure{ErrorCode::ResourceTooLarge};
    }
    return size;
}

} // namespace

// Twice, since a text that grows takes up to three times its length.
Result<std::string> inflate_within(std::string_view compressed, std::size_t limit) {
    constexpr std::size_t most = std::numeric_limits<uInt>::max();
    if (compressed.size() > most)
        return Failure{ErrorCode::ResourceTooLarge};
    std::string expanded(VELL_TRY(expanded_size(compressed, std::min(limit, most))), '\0');
    Inflater inflater;
    if (!inflater.ready())
        return Failure{ErrorCode::OutOfMemory};
    z_stream& stream = inflater.stream();
    set_input(stream, compressed);
    set_output(stream, expanded);
    if (inflate(&stream, Z_FINISH) != Z_STREAM_END)
        return Failure{ErrorCode::CompressedDataDamaged};
    return expanded;
}

} // namespace vell
