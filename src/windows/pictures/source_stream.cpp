#include "src/windows/pictures/source_stream.h"

#include "src/windows/com_object.h"

#include <algorithm>
#include <limits>
#include <new>

namespace vell::windows {

// What a stream and its clones read; null after the end of their owner.
struct SourceStream::Shared {
    std::mutex mutex;
    ByteSource* bytes = nullptr;

    HRESULT read(std::uint64_t position, std::span<char> target, std::size_t& done) {
        const std::scoped_lock lock(mutex);
        done = 0;
        if (!bytes)
            return STG_E_REVERTED;
        while (done < target.size()) {
            const auto part = bytes->read_at(position + done, target.subspan(done));
            if (!part)
                return STG_E_READFAULT;
            if (*part == 0)
                break;
            done += *part;
        }
        return S_OK;
    }
    std::uint64_t size() {
        const std::scoped_lock lock(mutex);
        return bytes ? bytes->size() : 0;
    }
};

namespace {

using Shared = SourceStream::Shared;

class Stream final : public ComObject<IStream, ISequentialStream> {
  public:
    Stream(std::shared_ptr<Shared> shared, std::uint64_t position)
        : shared_(std::move(shared)), position_(position) {}

    HRESULT STDMETHODCALLTYPE Read(void* target, ULONG count, ULONG* read) override {
        if (read)
            *read = 0;
        if (!target)
            return STG_E_INVALIDPOINTER;
        const std::scoped_lock lock(mutex_);
        std::size_t done = 0;
        const HRESULT result = read_on({static_cast<char*>(target), count}, done);
        if (read)
            *read = static_cast<ULONG>(done);
        return FAILED(result) ? result : done < count ? S_FALSE : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG, ULONG* written) override {
        if (written)
            *written = 0;
        return STG_E_ACCESSDENIED;
    }

    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                   ULARGE_INTEGER* position) override {
        const std::scoped_lock lock(mutex_);
        std::int64_t base = 0;
        if (origin == STREAM_SEEK_CUR)
            base = static_cast<std::int64_t>(position_);
        else if (origin == STREAM_SEEK_END)
            base = static_cast<std::int64_t>(shared_->size());
        else if (origin != STREAM_SEEK_SET)
            return STG_E_INVALIDFUNCTION;
        std::int64_t wanted = 0;
        if (__builtin_add_overflow(base, move.QuadPart, &wanted) || wanted < 0)
            return STG_E_INVALIDFUNCTION;
        position_ = static_cast<std::uint64_t>(wanted);
        if (position)
            position->QuadPart = position_;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                     ULARGE_INTEGER* written) override {
        if (!target)
            return STG_E_INVALIDPOINTER;
        ULARGE_INTEGER done{};
        const HRESULT result = copy_to(*target, count.QuadPart, done);
        if (read)
            *read = done;
        if (written)
            *written = done;
        return result;
    }

    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return STG_E_ACCESSDENIED; }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Revert() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* status, DWORD) override {
        if (!status)
            return STG_E_INVALIDPOINTER;
        *status = {};
        status->type = STGTY_STREAM;
        status->cbSize.QuadPart = shared_->size();
        status->grfMode = STGM_READ;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream** clone) override {
        if (!clone)
            return STG_E_INVALIDPOINTER;
        const std::scoped_lock lock(mutex_);
        *clone = new (std::nothrow) Stream(shared_, position_);
        return *clone ? S_OK : E_OUTOFMEMORY;
    }

  private:
    ~Stream() override = default;

    // With the mutex held.
    HRESULT read_on(std::span<char> target, std::size_t& done) {
        try {
            const HRESULT result = shared_->read(position_, target, done);
            position_ += done;
            return result;
        } catch (...) {
            return STG_E_READFAULT; // nothing may be thrown into COM
        }
    }

    HRESULT copy_to(IStream& target, std::uint64_t count, ULARGE_INTEGER& copied) {
        std::array<char, 4096> part;
        while (count > 0) {
            const auto wanted = std::min<std::uint64_t>(count, part.size());
            ULONG done = 0;
            const HRESULT read = Read(part.data(), static_cast<ULONG>(wanted), &done);
            if (FAILED(read) || done == 0)
                return FAILED(read) ? read : S_OK;
            ULONG written = 0;
            const HRESULT result = target.Write(part.data(), done, &written);
            copied.QuadPart += written;
            if (FAILED(result) || written < done)
                return FAILED(result) ? result : STG_E_MEDIUMFULL;
            count -= done;
        }
        return S_OK;
    }

    std::mutex mutex_; // of the position
    std::shared_ptr<Shared> shared_;
    std::uint64_t position_;
};

} // namespace

SourceStream::SourceStream(ByteSource& bytes) : shared_(std::make_shared<Shared>()) {
    shared_->bytes = &bytes;
    stream_.Attach(new Stream(shared_, 0));
}

SourceStream::~SourceStream() {
    const std::scoped_lock lock(shared_->mutex);
    shared_->bytes = nullptr;
}

} // namespace vell::windows
