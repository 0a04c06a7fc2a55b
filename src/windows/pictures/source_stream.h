// Bytes as a stream of COM. Windows only.
#pragma once

#include "src/base/byte_source.h"
#include "src/windows/desktop/com.h"

#include <memory>
#include <mutex>

namespace vell::windows {

// Gives COM a stream over bytes for as long as it lives; whoever keeps the stream longer, finds it
// empty. Any thread may read.
class SourceStream {
  public:
    explicit SourceStream(ByteSource& bytes);
    SourceStream(const SourceStream&) = delete;
    SourceStream& operator=(const SourceStream&) = delete;
    ~SourceStream();

    IStream* get() const { return stream_.Get(); }

    struct Shared;

  private:
    std::shared_ptr<Shared> shared_;
    ComPtr<IStream> stream_;
};

} // namespace vell::windows
