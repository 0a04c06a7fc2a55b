// What fails at the operation that a test chooses.
#pragma once

#include "tests/portable/fake_system.h"

#include <limits>

namespace vell::testing {

// The files of a system, and the system that has them.
class FailingFileSystem : public FakeSystem, public files::FileSystem {
  public:
    files::FileSystem& files() override { return *this; }

    // Nobody else has a file open here.
    Result<std::unique_ptr<files::File>> open_shared(const NativePath& path) override {
        return open(path, files::Permission::Read);
    }
    Result<std::unique_ptr<files::File>> open_new(const NativePath& path) override {
        VELL_TRY(create_new(path));
        auto file = open(path, files::Permission::Write);
        if (!file) // all in one step: nothing is there then
            static_cast<void>(remove(path));
        return file;
    }
    Result<std::unique_ptr<files::File>> open_emptied(const NativePath& path) override {
        if (kind_of(path) == files::ItemKind::None)
            VELL_TRY(create_new(path));
        auto file = VELL_TRY(open(path, files::Permission::Write));
        VELL_TRY(file->set_end_of_file());
        return file;
    }

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
