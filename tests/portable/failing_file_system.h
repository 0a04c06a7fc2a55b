// What fails at the operation that a test chooses.
#pragma once

#include "src/files/file_access.h"

namespace vell::testing {

class FailingFileSystem : public files::FileSystem {
  public:
    // Operations are counted from 1; whatever is done to the file system or to a file is one.
    void fail(int operation, ErrorCode code) {
        failing_operation_ = operation;
        failure_ = code;
        operations_ = 0;
    }
    int operations() const { return operations_; }

  protected:
    Result<void> count_operation() {
        if (++operations_ == failing_operation_)
            return Failure{failure_};
        return {};
    }

  private:
    int failing_operation_ = 0;
    ErrorCode failure_ = ErrorCode::Ok;
    int operations_ = 0;
};

} // namespace vell::testing
