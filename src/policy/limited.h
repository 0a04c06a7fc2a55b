// The limits of the call that runs on this thread.
#pragma once

#include "src/base/result.h"
#include "src/policy/call_scope.h"
#include "src/system/file_access.h"

#include <memory>

namespace vell::policy {

// RefusedByPolicy when the call has no time left.
inline Result<void> check_time() {
    CallScope* const scope = CallScope::current();
    if (scope && !scope->has_time())
        return Failure{ErrorCode::RefusedByPolicy};
    return {};
}

// The same for memory that is about to be taken.
inline Result<void> check_memory(std::uint64_t bytes) {
    CallScope* const scope = CallScope::current();
    if (scope && !scope->take_memory(bytes))
        return Failure{ErrorCode::RefusedByPolicy};
    return {};
}

// An open file whose bytes can be had as long as the call has time. Closing it is always possible.
template <typename Kind> // files::File or an extension of it
class LimitedFile : public Kind {
  public:
    explicit LimitedFile(std::unique_ptr<Kind> file) : file_(std::move(file)) {}

    Result<std::uint64_t> size() override { return file_->size(); }
    Result<void> seek(files::SeekFrom from, std::int64_t offset) override {
        return file_->seek(from, offset);
    }
    Result<std::size_t> read(std::span<char> buffer) override {
        VELL_TRY(check_time());
        return file_->read(buffer);
    }
    Result<void> write(std::string_view bytes) override {
        VELL_TRY(check_time());
        return file_->write(bytes);
    }
    Result<void> set_end_of_file() override { return file_->set_end_of_file(); }
    Result<void> close() override { return file_->close(); }
    Result<files::FileTime> modified() override { return file_->modified(); }
    Result<std::u16string> final_path() override { return file_->final_path(); }

  protected:
    Kind& file() { return *file_; }

  private:
    std::unique_ptr<Kind> file_;
};

} // namespace vell::policy
