// How the JPEG library reports errors: by a jump out of its functions, so each call of them stands
// alone in a function without anything to destroy.
#pragma once

#include <cstddef>
#include <cstdio> // of which the library's header needs FILE

#include <jerror.h>
#include <jpeglib.h>

#include <csetjmp>

namespace vell::pictures {

class JpegErrors {
  public:
    JpegErrors() {
        jpeg_std_error(&manager_);
        manager_.error_exit = [](j_common_ptr jpeg) {
            auto* errors = reinterpret_cast<JpegErrors*>(jpeg->err);
            std::longjmp(errors->jump_, 1); // NOLINT(cert-err52-cpp)
        };
        manager_.output_message = [](j_common_ptr) {
        };
        manager_.emit_message = [](j_common_ptr, int) {
        };
    }
    JpegErrors(const JpegErrors&) = delete;
    JpegErrors& operator=(const JpegErrors&) = delete;

    jpeg_error_mgr* manager() { return &manager_; }
    int last() const { return manager_.msg_code; }

    // False when the call ended with an error.
    template <typename Call>
    bool guarded(Call call) {
        if (setjmp(jump_) != 0) // NOLINT(cert-err52-cpp): the library knows no other way
            return false;
        call();
        return true;
    }

  private:
    jpeg_error_mgr manager_{}; // the first member: the library hands back its address
    std::jmp_buf jump_{};
};

} // namespace vell::pictures
