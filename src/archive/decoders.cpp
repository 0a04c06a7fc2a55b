#include "src/archive/decoders.h"

#include "src/base/error_code.h"

#include <zlib.h>

#include <infback9.h>

#include <new>
#include <optional>
#include <vector>

namespace vell::archive {
namespace {

constexpr Failure damaged{ErrorCode::ExtractionFailed};

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

// RFC 1951
struct Deflate {
    static constexpr std::size_t window_size = 32 * 1024;
    static int init(z_stream* stream, unsigned char* window) {
        return inflateBackInit(stream, MAX_WBITS, window);
    }
    static constexpr auto run = inflateBack;
    static constexpr auto end = inflateBackEnd;
};

// The same with a larger window and longer matches.
struct Deflate64 {
    static constexpr std::size_t window_size = 64 * 1024;
    static int init(z_stream* stream, unsigned char* window) {
        return inflateBack9Init(stream, window);
    }
    static constexpr auto run = inflateBack9;
    static constexpr auto end = inflateBack9End;
};

// What comes out stands in the window, which is filled over and over and given on when it is full.
template <typename Format>
class WindowDecoder : public Decoder {
  public:
    WindowDecoder() : window_(Format::window_size) {
        if (Format::init(&stream_, window_.data()) != Z_OK)
            throw std::bad_alloc();
    }
    ~WindowDecoder() override { Format::end(&stream_); }

    Result<void> decode(const PieceSource& source, const PieceSink& sink) override {
        Ends ends{source, sink, std::nullopt};
        stream_.next_in = nullptr; // the first piece is asked for, too
        stream_.avail_in = 0;
        const int code = Format::run(&stream_, next_piece, &ends, take_piece, &ends);
        if (ends.failure)
            return Failure{*ends.failure};
        if (code != Z_STREAM_END)
            return damaged;
        return {};
    }

  private:
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
        return std::make_unique<WindowDecoder<Deflate>>();
    case Method::Deflate64:
        return std::make_unique<WindowDecoder<Deflate64>>();
    }
    return nullptr;
}

} // namespace vell::archive
