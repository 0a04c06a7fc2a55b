// What every COM object of ours has: its interfaces by their names, and references that are
// counted. Windows only.
#pragma once

#include <windows.h>

#include <unknwn.h>

namespace vell {

// An object of one interface, and of those that it extends. Begins with one reference, which
// belongs to its maker; the last one that is released deletes it.
template <typename Interface, typename... Extended>
class ComObject : public Interface {
  public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) final {
        if (!object)
            return E_POINTER;
        *object = nullptr;
        const bool is_known = IsEqualIID(wanted, __uuidof(IUnknown)) ||
                              IsEqualIID(wanted, __uuidof(Interface)) ||
                              (IsEqualIID(wanted, __uuidof(Extended)) || ...);
        if (!is_known)
            return E_NOINTERFACE;
        *object = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() final {
        return static_cast<ULONG>(InterlockedIncrement(&references_));
    }
    ULONG STDMETHODCALLTYPE Release() final {
        const LONG left = InterlockedDecrement(&references_);
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }

  protected:
    ComObject() = default;
    virtual ~ComObject() = default; // by Release

  private:
    LONG references_ = 1;
};

} // namespace vell
