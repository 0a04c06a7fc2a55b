#include "src/archive/decoders.h"

#include "src/archive/deflate_decoder.h"

#include <zlib.h>

#include <infback9.h>

#include <new>
#include <optional>
#include <vector>

namespace vell::archive {
namespace {

class StoredDecoder : public Decoder {
  public:
    Result<void> decode(const PieceSource& source, const PieceSink& sink) override {
        for (;;) {
            const std::string_view piece = VELL_TRY(source());
            if (piece.empty())
                return {};
            VELL_TRY(sink(piece));
        }
    }
};

// Deflate with a larger window and longer matches. What comes out stands in the window, which is
// filled over and over and given on when it is full.
class Deflate64Decoder : public Decoder {
  public:
    Deflate64Decoder() : window_(window_size) {
        if (inflateBack9Init(&stream_, window_.data()) != Z_OK)
            throw std::bad_alloc();
    }
    ~Deflate64Decoder() override { inflateBack9End(&stream_); }

    Result<void> decode(const PieceSource& source, const PieceSink& sink) override {
        Ends ends{source, sink, std::nullopt};
        stream_.next_in = nullptr; // the first piece is asked for, too
        stream_.avail_in = 0;
        const int code = inflateBack9(&stream_, next_piece, &ends, take_piece, &ends);
        if (ends.failure)
            return Failure{*ends.failure};
        if (code != Z_STREAM_END)
            return damaged;
        return {};
    }

  private:
    static constexpr std::size_t window_size = 64 * 1024;

    struct Ends {
        const PieceSource& source;
        const PieceSink& sink;
        std::optional<ErrorCode> failure;
    };

    static unsigned next_piece(void* opaque, z_const unsigned char** bytes) {
        Ends& ends = *static_cast<Ends*>(opaque);
        const Result<std::string_view> piece = ends.source();
        if (!piece) {
            ends.failure = piece.error();
            return 0;
        }
        *bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(piece->data()));
        return static_cast<unsigned>(piece->size());
    }

    static int take_piece(void* opaque, unsigned char* bytes, unsigned length) {
        Ends& ends = *static_cast<Ends*>(opaque);
        const Result<void> taken = ends.sink({reinterpret_cast<const char*>(bytes), length});
        if (!taken)
            ends.failure = taken.error();
        return taken ? 0 : 1;
    }

    z_stream stream_{};
    std::vector<unsigned char> window_;
};

} // namespace

std::unique_ptr<Decoder> make_decoder(Method method) {
    switch (method) {
    case Method::Stored:
        return std::make_unique<StoredDecoder>();
    case Method::Deflated:
        return std::make_unique<DeflateDecoder>();
    case Method::Deflate64:
        return std::make_unique<Deflate64Decoder>();
    }
    return nullptr;
}

} // namespace vell::archive
