#include "src/base/inflate.h"

#include <zlib.h>

#include <algorithm>
#include <limits>

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

} // namespace

Result<std::string> inflate_within(std::string_view compressed, std::size_t limit) {
    Inflater inflater;
    if (!inflater.ready())
        return Failure{ErrorCode::OutOfMemory};
    if (compressed.size() > std::numeric_limits<uInt>::max())
        return Failure{ErrorCode::ResourceTooLarge};
    z_stream& stream = inflater.stream();
    // The interface is older than const; the input is not written to.
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.data()));
    stream.avail_in = static_cast<uInt>(compressed.size());

    std::string expanded;
    char piece[16'384];
    int state = Z_OK;
    while (state == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(piece);
        stream.avail_out = sizeof piece;
        state = inflate(&stream, Z_NO_FLUSH);
        if (state != Z_OK && state != Z_STREAM_END)
            return Failure{ErrorCode::CompressedDataDamaged};
        expanded.append(piece, sizeof piece - stream.avail_out);
        if (expanded.size() > limit)
            return Failure{ErrorCode::ResourceTooLarge};
    }
    return expanded;
}

} // namespace vell
