// COM objects of Windows and their owners. Windows only.
#pragma once

#include "src/base/result.h"
#include "src/windows/handle.h"

#include <objbase.h>
#include <wrl/client.h>

namespace vell {

using Microsoft::WRL::ComPtr;

// COM for the calling thread, in the apartment that dialogs and the shell need, unless the thread
// has one already.
class ComApartment {
  public:
    ComApartment() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() {
        if (SUCCEEDED(result_))
            CoUninitialize();
    }

  private:
    HRESULT result_;
};

// Memory that COM calls hand over, such as the text of a path.
template <typename Pointer>
struct TaskMemoryKind {
    using Type = Pointer;
    static Pointer empty() { return nullptr; }
    static void close(Pointer memory) { CoTaskMemFree(memory); }
};
using UniqueTaskText = UniqueResource<TaskMemoryKind<wchar_t*>>;

// The code of a failed HRESULT: that of the Windows error inside it, ComFailure where there is
// none. The low 16 bits of other facilities only look like Windows errors.
constexpr ErrorCode error_from_hresult(HRESULT result) {
    constexpr auto out_of_memory = static_cast<HRESULT>(0x8007000E); // E_OUTOFMEMORY
    const std::int32_t win32_error = HRESULT_CODE(result);
    if (HRESULT_FACILITY(result) != FACILITY_WIN32 || win32_error == ERROR_SUCCESS)
        return ErrorCode::ComFailure;
    if (win32_error == ERROR_CANCELLED)
        return ErrorCode::Cancelled;
    return result == out_of_memory ? ErrorCode::OutOfMemory : error_from_win32(win32_error);
}

inline Result<void> check_hresult(HRESULT result) {
    if (FAILED(result))
        return Failure{error_from_hresult(result)};
    return {};
}

} // namespace vell
