// The OLE drop target of one window of the host. Windows only.
#pragma once

#include "src/dragdrop/drop_windows.h"
#include "src/windows/com_object.h"
#include "src/windows/desktop/com.h"
#include "src/windows/dragdrop/drop_data.h"

#include <oleidl.h>

#include <memory>
#include <optional>

namespace vell::dragdrop {

class CDropTarget final : public ComObject<IDropTarget> {
  public:
    CDropTarget(HWND window, DropReceiver& receiver, WrittenFiles& written)
        : window_(window), receiver_(&receiver), written_(written) {}

    // The target that had the window before. It gets what no handler takes.
    //
    // Not every owner counts references: some destroy their target with its window, or after having
    // taken it from the window. So it is called only while the window has a target, and released
    // only where it is that of the window again; otherwise its reference is left to it.
    void set_earlier(ComPtr<IDropTarget> earlier) { earlier_ = std::move(earlier); }
    IDropTarget* earlier() const { return earlier_.Get(); }
    // Serves no handler from now on. Everything goes to the earlier target, for as long as somebody
    // holds a reference.
    void disconnect();

    HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* data, DWORD keys, POINTL point,
                                        DWORD* effect) override;
    HRESULT STDMETHODCALLTYPE DragOver(DWORD keys, POINTL point, DWORD* effect) override;
    HRESULT STDMETHODCALLTYPE DragLeave() override;
    HRESULT STDMETHODCALLTYPE Drop(IDataObject* data, DWORD keys, POINTL point,
                                   DWORD* effect) override;

  private:
    // A drag over the window. Every call to a source, another target or a window may let messages
    // through that end it, or begin another one: who works for a drag keeps it.
    struct Drag {
        ComPtr<IDataObject> data;
        Offer offer;
        bool in_earlier = false; // the earlier target was told that the drag has entered
    };

    ~CDropTarget() override;

    std::shared_ptr<Drag> enter(IDataObject* data);
    void leave();
    std::optional<Taker> taker_at(const Drag& drag, POINTL point, std::uint32_t allowed) const;
    void move(Drag& drag, DWORD keys, POINTL point, DWORD& effect);
    void drop(Drag& drag, DWORD keys, POINTL point, DWORD& effect);
    std::vector<std::u16string> dropped_things(const Drag& drag);
    ComPtr<IDropTarget> callable_earlier() const; // null where there is none to be called
    void move_in_earlier(Drag& drag, DWORD keys, POINTL point, DWORD& effect);
    void leave_earlier(Drag& drag);
    void show_outline(const std::optional<Rectangle>& outline);

    HWND window_;
    DropReceiver* receiver_; // null once disconnected
    WrittenFiles& written_;
    ComPtr<IDropTarget> earlier_;
    std::shared_ptr<Drag> drag_;       // the one that is under way; null when there is none
    std::optional<Rectangle> outline_; // as it is drawn
};

// The drop target that OLE keeps for a window; null when it has none, or is no more.
IDropTarget* target_on(HWND window);

} // namespace vell::dragdrop
