#include "src/windows/dragdrop/drop_target.h"

#include "src/windows/dragdrop/focus_frame.h"

#include <utility>

namespace vell::dragdrop {
namespace {

constexpr DWORD no_effect = DROPEFFECT_NONE;

// Runs what a callback does; no exception reaches OLE.
template <typename Work>
HRESULT guarded(Work work) {
    try {
        work();
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

template <typename Work>
HRESULT guarded(DWORD* effect, Work work) {
    if (!effect)
        return E_INVALIDARG;
    DWORD chosen = *effect; // those that the source allows
    const HRESULT result = guarded([&] { work(chosen); });
    *effect = SUCCEEDED(result) ? chosen : no_effect;
    return result;
}

} // namespace

// What a callback does may stop the last handler of the window, and this target goes with it: each
// callback holds a reference until it ends.

HRESULT CDropTarget::DragEnter(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) {
    if (!data)
        return E_INVALIDARG;
    const ComPtr<CDropTarget> alive = this;
    return guarded(effect, [&](DWORD& chosen) {
        const std::shared_ptr<Drag> drag = enter(data);
        move(*drag, keys, point, chosen);
    });
}

HRESULT CDropTarget::DragOver(DWORD keys, POINTL point, DWORD* effect) {
    const ComPtr<CDropTarget> alive = this;
    return guarded(effect, [&](DWORD& chosen) {
        if (const std::shared_ptr<Drag> drag = drag_)
            move(*drag, keys, point, chosen);
        else
            chosen = no_effect;
    });
}

HRESULT CDropTarget::DragLeave() {
    const ComPtr<CDropTarget> alive = this;
    return guarded([this] { leave(); });
}

HRESULT CDropTarget::Drop(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) {
    if (!data)
        return E_INVALIDARG;
    const ComPtr<CDropTarget> alive = this;
    std::shared_ptr<Drag> drag = drag_;
    const HRESULT result = guarded(effect, [&](DWORD& chosen) {
        // Some sources hand over another object than the one that entered.
        if (!drag || data != drag->data.Get())
            drag = enter(data);
        drop(*drag, keys, point, chosen);
    });
    if (drag_ == drag)
        guarded([this] { leave(); });
    return result;
}

void CDropTarget::disconnect() {
    receiver_ = nullptr;
    show_outline(std::nullopt);
}

CDropTarget::~CDropTarget() {
    if (target_on(window_) != earlier_.Get())
        static_cast<void>(earlier_.Detach());
}

std::shared_ptr<CDropTarget::Drag> CDropTarget::enter(IDataObject* data) {
    leave();
    const auto drag = std::make_shared<Drag>();
    drag->data = data;
    drag_ = drag;
    if (receiver_)
        drag->offer = offer_of(*data, receiver_->wants_mail(window_));
    return drag;
}

void CDropTarget::leave() {
    const std::shared_ptr<Drag> drag = std::exchange(drag_, nullptr);
    show_outline(std::nullopt);
    if (drag)
        leave_earlier(*drag);
}

std::optional<Taker> CDropTarget::taker_at(const Drag& drag, POINTL point,
                                           std::uint32_t allowed) const {
    POINT position{point.x, point.y};
    if (!receiver_ || !ScreenToClient(window_, &position))
        return std::nullopt;
    std::optional<Taker> taker = receiver_->taker(
        window_, {static_cast<std::int32_t>(position.x), static_cast<std::int32_t>(position.y)},
        drag.offer);
    if (!taker)
        return std::nullopt;
    taker->effect = allowed_effect(taker->effect, allowed);
    return taker->effect == Effect::None ? std::nullopt : taker;
}

void CDropTarget::move(Drag& drag, DWORD keys, POINTL point, DWORD& effect) {
    const std::optional<Taker> taker = taker_at(drag, point, effect);
    if (drag_.get() == &drag)
        show_outline(taker ? taker->outline : std::nullopt);
    if (drag_.get() != &drag) { // it has left meanwhile
        effect = no_effect;
        return;
    }
    if (!taker)
        return move_in_earlier(drag, keys, point, effect);
    leave_earlier(drag);
    effect = static_cast<DWORD>(taker->effect);
}

// A drop counts, whatever has come in between: it is not said a second time.
void CDropTarget::drop(Drag& drag, DWORD keys, POINTL point, DWORD& effect) {
    const std::optional<Taker> taker = taker_at(drag, point, effect);
    show_outline(std::nullopt);
    if (taker) {
        leave_earlier(drag);
        const std::vector<std::u16string> paths = dropped_things(drag);
        // Reading may have let messages through that have stopped the handler.
        effect = paths.empty() || !receiver_ ? no_effect : static_cast<DWORD>(taker->effect);
        if (receiver_)
            receiver_->dropped(*taker, paths);
        return;
    }
    const DWORD allowed = effect;
    if (!drag.in_earlier)
        move_in_earlier(drag, keys, point, effect);
    const ComPtr<IDropTarget> earlier = callable_earlier();
    // A drop ends its drag, unless that has left meanwhile.
    if (!std::exchange(drag.in_earlier, false) || !earlier) {
        effect = no_effect;
        return;
    }
    effect = allowed;
    if (FAILED(earlier->Drop(drag.data.Get(), keys, point, &effect)))
        effect = no_effect;
}

std::vector<std::u16string> CDropTarget::dropped_things(const Drag& drag) {
    if (drag.offer.files)
        return paths_in(*drag.data.Get());
    std::vector<std::u16string> paths = written_.write(*drag.data.Get());
    if (paths.empty() && receiver_)
        receiver_->note("Drag and drop: nothing could be read from what was dropped.");
    return paths;
}

ComPtr<IDropTarget> CDropTarget::callable_earlier() const {
    return target_on(window_) ? earlier_ : ComPtr<IDropTarget>();
}

void CDropTarget::move_in_earlier(Drag& drag, DWORD keys, POINTL point, DWORD& effect) {
    const ComPtr<IDropTarget> earlier = callable_earlier();
    if (!earlier) {
        effect = no_effect;
        return;
    }
    const bool entering = !std::exchange(drag.in_earlier, true);
    const HRESULT result = entering ? earlier->DragEnter(drag.data.Get(), keys, point, &effect)
                                    : earlier->DragOver(keys, point, &effect);
    if (FAILED(result))
        effect = no_effect;
}

void CDropTarget::leave_earlier(Drag& drag) {
    if (!std::exchange(drag.in_earlier, false))
        return;
    if (const ComPtr<IDropTarget> earlier = callable_earlier())
        earlier->DragLeave();
}

void CDropTarget::show_outline(const std::optional<Rectangle>& outline) {
    if (outline == outline_)
        return;
    // Erasing lets the window paint itself, which may lead back here.
    if (const auto shown = std::exchange(outline_, std::nullopt))
        erase_focus_frame(window_, *shown);
    if (!outline || outline_)
        return;
    outline_ = outline;
    draw_focus_frame(window_, *outline_);
}

IDropTarget* target_on(HWND window) {
    return static_cast<IDropTarget*>(GetPropW(window, L"OleDropTargetInterface"));
}

} // namespace vell::dragdrop
