#include "src/windows/dragdrop/drop_windows.h"

#include "src/windows/desktop/com.h"
#include "src/windows/dragdrop/drop_target.h"
#include "src/windows/text.h"

#include <ole2.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace vell::dragdrop {
namespace {

// Ours, by which a window is told from a later one with the same handle: properties end with their
// window.
constexpr const wchar_t* own_property = L"VellFileDropTarget";

std::wstring class_of(HWND window) {
    std::array<wchar_t, 257> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return {name.data(), static_cast<std::size_t>(length)};
}

std::u16string title_of(HWND window) {
    std::wstring title(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    const int length = GetWindowTextW(window, title.data(), static_cast<int>(title.size()));
    title.resize(static_cast<std::size_t>(length));
    return to_utf16(title);
}

// The first window below `parent`, at any depth, that `wanted` accepts; null when there is none.
template <typename Wanted>
HWND find_below(HWND parent, Wanted wanted) {
    struct Search {
        Wanted& wanted;
        HWND found;
    } search{wanted, nullptr};
    EnumChildWindows(
        parent,
        [](HWND window, LPARAM argument) -> BOOL {
            auto& current = *reinterpret_cast<Search*>(argument);
            if (!current.wanted(window))
                return TRUE;
            current.found = window;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

// OLE calls targets on the thread of their window, so that has to be this one: a window in front
// may be another program's.
bool is_own(HWND window) {
    return window && GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId();
}

template <typename FindBelow>
Window in_front(Window main_window, FindBelow find) {
    for (const HWND frame : {GetForegroundWindow(), static_cast<HWND>(main_window)}) {
        if (HWND found = is_own(frame) ? find(frame) : nullptr)
            return found;
    }
    return nullptr;
}

// OLE for the calling thread, for as long as targets may be registered.
class OleSession {
  public:
    Result<void> begin() {
        if (active_)
            return {};
        VELL_TRY(check_hresult(OleInitialize(nullptr)));
        active_ = true;
        return {};
    }
    void end() {
        if (std::exchange(active_, false))
            OleUninitialize();
    }

  private:
    bool active_ = false;
};

// Keeps the plug-in in memory: somebody may call into it after the host has unloaded it.
void stay_loaded() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&stay_loaded), &module);
}

struct ServedWindow {
    HWND window;
    ComPtr<CDropTarget> target;

    bool exists() const {
        return IsWindow(window) && GetPropW(window, own_property) == target.Get();
    }
};

class SystemWindows : public DropWindows {
  public:
    Window titled_document(Window main_window, const std::u16string& title) override {
        return in_front(main_window, [&title](HWND frame) {
            const HWND client = find_below(frame, [](HWND window) {
                return CompareStringOrdinal(class_of(window).c_str(), -1, L"MDIClient", -1, TRUE) ==
                       CSTR_EQUAL;
            });
            return client ? find_below(client,
                                       [&title](HWND window) { return title_of(window) == title; })
                          : nullptr;
        });
    }

    Window document(Window main_window) override {
        return in_front(main_window, [](HWND frame) {
            return find_below(frame,
                              [](HWND window) { return class_of(window).starts_with(L"Afx:"); });
        });
    }

    std::int32_t outer_width(Window window) override {
        RECT rect{};
        GetWindowRect(static_cast<HWND>(window), &rect);
        return static_cast<std::int32_t>(rect.right - rect.left);
    }

    std::int32_t scroll_position(Window window) override {
        const HWND bar = find_below(static_cast<HWND>(window), [](HWND child) {
            return CompareStringOrdinal(class_of(child).c_str(), -1, L"ScrollBar", -1, TRUE) ==
                       CSTR_EQUAL &&
                   (GetWindowLongW(child, GWL_STYLE) & SBS_VERT) != 0;
        });
        SCROLLINFO info{};
        info.cbSize = sizeof info;
        info.fMask = SIF_POS;
        return bar && GetScrollInfo(bar, SB_CTL, &info) ? info.nPos : 0;
    }

    void bring_to_front(Window window) override {
        const HWND document = static_cast<HWND>(window);
        if ((GetWindowLongW(document, GWL_EXSTYLE) & WS_EX_MDICHILD) != 0)
            SendMessageW(GetParent(document), WM_MDIACTIVATE, reinterpret_cast<WPARAM>(document),
                         0);
        SetForegroundWindow(GetAncestor(document, GA_ROOT));
    }

    Result<void> serve(Window window, DropReceiver& receiver, EarlierTarget earlier) override;
    bool is_served(Window window) override {
        const auto found = find(window);
        return found != served_.end() && found->exists();
    }
    void leave(Window window) override;
    void shut_down() override {
        written_.remove_all();
        ole_.end();
    }

  private:
    std::vector<ServedWindow>::iterator find(Window window) {
        return std::find_if(served_.begin(), served_.end(), [window](const ServedWindow& served) {
            return served.window == window;
        });
    }

    OleSession ole_;
    WrittenFiles written_;
    std::vector<ServedWindow> served_;
};

Result<void> put_on(HWND window, IDropTarget* target) {
    HRESULT result = RegisterDragDrop(window, target);
    if (result == DRAGDROP_E_ALREADYREGISTERED) {
        RevokeDragDrop(window);
        result = RegisterDragDrop(window, target);
    }
    if (result == E_OUTOFMEMORY)
        return Failure{ErrorCode::OutOfMemory};
    if (FAILED(result))
        return Failure{ErrorCode::NoFrontWindow}; // none that files can be dropped on
    return {};
}

Result<void> SystemWindows::serve(Window handle, DropReceiver& receiver, EarlierTarget earlier) {
    const HWND window = static_cast<HWND>(handle);
    if (is_served(handle)) {
        if (target_on(window) == find(handle)->target.Get())
            return {};
        // Somebody has taken our target off, or put another one over it, which may know ours: a new
        // one goes over that.
        leave(handle);
    }
    VELL_TRY(ole_.begin());
    ServedWindow served{window, {}};
    // Its first reference is taken over.
    *served.target.ReleaseAndGetAddressOf() = new CDropTarget(window, receiver, written_);
    if (earlier == EarlierTarget::Keep)
        served.target->set_earlier(target_on(window));
    RevokeDragDrop(window);

    CoLockObjectExternal(served.target.Get(), TRUE, FALSE);
    const Result<void> registered = put_on(window, served.target.Get());
    if (!registered) {
        CoLockObjectExternal(served.target.Get(), FALSE, TRUE);
        if (IDropTarget* before = served.target->earlier())
            RegisterDragDrop(window, before);
        return registered;
    }
    SetPropW(window, own_property, served.target.Get());
    served_.push_back(std::move(served));
    return {};
}

void SystemWindows::leave(Window handle) {
    const auto found = find(handle);
    if (found == served_.end())
        return;
    const ServedWindow served = std::move(*found);
    served_.erase(found);
    CDropTarget& target = *served.target.Get();
    target.disconnect();
    if (!served.exists()) {
        CoDisconnectObject(&target, 0); // what stood for it in other programs
    } else {
        RemovePropW(served.window, own_property);
        if (target_on(served.window) == &target) {
            RevokeDragDrop(served.window);
            if (target.earlier())
                RegisterDragDrop(served.window, target.earlier());
        } else if (target_on(served.window)) {
            // Another target has been put over ours since, and may pass on to it what it does not
            // take itself.
            stay_loaded();
        }
    }
    CoLockObjectExternal(&target, FALSE, TRUE);
}

} // namespace

} // namespace vell::dragdrop

namespace vell::windows {

dragdrop::DropWindows& drop_windows() {
    // Never destroyed: where the host ends without a shutdown, OLE may be gone before the plug-in.
    static dragdrop::DropWindows& instance = *new dragdrop::SystemWindows;
    return instance;
}

} // namespace vell::windows
