// What fails at the operation that a test chooses.
#pragma once

#include "src/system/file_access.h"

#include <limits>

namespace vell::testing {

class FailingFileSystem : public files::FileSystem {
  public:
    // Operations are counted from 1; whatever is done to the file system or to a file is one.
    void fail(int operation, ErrorCode code) { fail(operation, operation, code); }
    // Nothing works any more from this operation on.
    void die(int operation, ErrorCode code) {
        fail(operation, std::numeric_limits<int>::max(), code);
    }
    int operations() const { return operations_; }

  protected:
    Result<void> count_operation() {
        ++operations_;
        if (operations_ >= first_failing_ && operations_ <= last_failing_)
            return Failure{failure_};
        return {};
    }

  private:
    void fail(int first, int last, ErrorCode code) {
        first_failing_ = first;
        last_failing_ = last;
        failure_ = code;
        operations_ = 0;
    }

    int first_failing_ = 0;
    int last_failing_ = 0;
    ErrorCode failure_ = ErrorCode::Ok;
    int operations_ = 0;
};

} // namespace vell::testing
