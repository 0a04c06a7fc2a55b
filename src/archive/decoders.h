// What undoes the compression of an entry's data, by its method.
#pragma once

#include "src/base/error_code.h"
#include "src/base/result.h"
#include "src/formats/zip_records.h"

#include <functional>
#include <memory>
#include <string_view>

namespace vell::archive {

// A compressed stream is damaged or cut off.
inline constexpr Failure damaged{ErrorCode::ExtractionFailed};

using formats::zip::Method;

// The next piece of the compressed data, empty at its end. It stays until the next call.
using PieceSource = std::function<Result<std::string_view>()>;
// Takes a stretch of the decoded data; its failure ends the decoding.
using PieceSink = std::function<Result<void>(std::string_view)>;

// Decodes one stream after the other. Needs memory for its window only, however long they are.
// Source and sink must not throw: there may be C functions between them and the caller.
class Decoder {
  public:
    Decoder() = default;
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    virtual ~Decoder() = default;

    // Succeeds when the stream has come to its own end. ExtractionFailed when it is damaged or cut
    // off, otherwise what the source or the sink reported.
    virtual Result<void> decode(const PieceSource& source, const PieceSink& sink) = 0;
};

// Null for a method that is not supported.
std::unique_ptr<Decoder> make_decoder(Method method);

} // namespace vell::archive
