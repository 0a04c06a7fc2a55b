// Expands an entry's data (RFC 1951), many blocks at a time.
#pragma once

#include "src/archive/decoders.h"

#include <cstddef>
#include <optional>
#include <vector>

struct libdeflate_decompressor;
struct z_stream_s;

namespace vell::archive {

// The fast library takes whole blocks, and needs what they expand to in memory. Where a block is
// larger than that, or damaged, zlib goes on from its beginning to the stream's end, bit by bit: it
// has the last word about what is damaged, and gives what stands before the damage.
class DeflateDecoder : public Decoder {
  public:
    DeflateDecoder();
    ~DeflateDecoder() override;

    Result<void> decode(const PieceSource& source, const PieceSink& sink) override;

  private:
    struct FreeBlocks {
        void operator()(libdeflate_decompressor* decompressor) const;
    };
    struct FreeRest {
        void operator()(z_stream_s* stream) const;
    };

    void begin();
    void fill(const PieceSource& source);
    void drop_what_is_done();
    Result<void> decode_rest(const PieceSource& source, const PieceSink& sink);
    void prepare_rest();

    std::unique_ptr<libdeflate_decompressor, FreeBlocks> blocks_;
    std::unique_ptr<z_stream_s, FreeRest> rest_; // made when first needed
    std::vector<char> compressed_;               // what has been read and is not done
    std::vector<char> window_;                   // the last bytes that are done, and room
    std::size_t bits_done_ = 0;                  // of `compressed_`
    std::size_t bytes_done_ = 0;                 // of `window_`
    bool has_ended_ = false;                     // the source
    std::optional<ErrorCode> source_failure_;    // which counts only when more is needed
};

} // namespace vell::archive
