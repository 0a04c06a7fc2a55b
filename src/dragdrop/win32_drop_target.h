// The OLE drop target of one window of the host. Windows only.
#pragma once

#include "src/base/win32_com.h"
#include "src/dragdrop/drop_windows.h"
#include "src/dragdrop/win32_drop_data.h"

#include <oleidl.h>

#include <optional>

namespace vell::dragdrop {

// Begins with one reference, which belongs to its maker.
class CDropTarget final : public IDropTarget {
  public:
    CDropTarget(HWND window, DropReceiver& receiver, WrittenFiles& written)
        : window_(window), receiver_(&receiver), written_(written) {}
    CDropTarget(const CDropTarget&) = delete;
    CDropTarget& operator=(const CDropTarget&) = delete;

    // The target that had the window before. It gets what no handler takes.
    void set_earlier(ComPointer<IDropTarget> earlier) { earlier_ = std::move(earlier); }
    IDropTarget* earlier() const { return earlier_.get(); }
    // Serves no handler from now on. Everything goes to the earlier target, for as long as somebody
    // holds a reference.
    void disconnect();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* data, DWORD keys, POINTL point,
                                        DWORD* effect) override;
    HRESULT STDMETHODCALLTYPE DragOver(DWORD keys, POINTL point, DWORD* effect) override;
    HRESULT STDMETHODCALLTYPE DragLeave() override;
    HRESULT STDMETHODCALLTYPE Drop(IDataObject* data, DWORD keys, POINTL point,
                                   DWORD* effect) override;

  private:
    ~CDropTarget() = default; // by Release

    void enter(IDataObject* data);
    void leave();
    std::optional<Taker> taker_at(POINTL point, std::uint32_t allowed) const;
    void move(DWORD keys, POINTL point, DWORD& effect);
    void drop(DWORD keys, POINTL point, DWORD& effect);
    std::vector<std::u16string> dropped_things();
    void move_in_earlier(DWORD keys, POINTL point, DWORD& effect);
    void leave_earlier();
    void show_outline(const std::optional<Rectangle>& outline);

    LONG references_ = 1;
    HWND window_;
    DropReceiver* receiver_; // null once disconnected
    WrittenFiles& written_;
    ComPointer<IDropTarget> earlier_;
    // Of the drag that is under way.
    ComPointer<IDataObject> data_;
    Offer offer_;
    bool in_earlier_ = false;          // the earlier target was told that the drag has entered
    std::optional<Rectangle> outline_; // as it is drawn
};

} // namespace vell::dragdrop
