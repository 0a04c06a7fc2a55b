#include "src/dragdrop/win32_drop_target.h"

#include "src/dragdrop/win32_focus_frame.h"

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

HRESULT CDropTarget::QueryInterface(REFIID wanted, void** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (!IsEqualIID(wanted, IID_IUnknown) && !IsEqualIID(wanted, IID_IDropTarget))
        return E_NOINTERFACE;
    *object = static_cast<IDropTarget*>(this);
    AddRef();
    return S_OK;
}

ULONG CDropTarget::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG CDropTarget::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0)
        delete this;
    return static_cast<ULONG>(left);
}

// What a callback does may stop the last handler of the window, and this target goes with it: each
// callback holds a reference until it ends.

HRESULT CDropTarget::DragEnter(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) {
    const ComPointer<CDropTarget> alive = share(this);
    return guarded(effect, [&](DWORD& chosen) {
        enter(data);
        move(keys, point, chosen);
    });
}

HRESULT CDropTarget::DragOver(DWORD keys, POINTL point, DWORD* effect) {
    const ComPointer<CDropTarget> alive = share(this);
    return guarded(effect, [&](DWORD& chosen) { move(keys, point, chosen); });
}

HRESULT CDropTarget::DragLeave() {
    const ComPointer<CDropTarget> alive = share(this);
    return guarded([this] { leave(); });
}

HRESULT CDropTarget::Drop(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) {
    const ComPointer<CDropTarget> alive = share(this);
    const HRESULT result = guarded(effect, [&](DWORD& chosen) {
        // Some sources hand over another object than the one that entered.
        if (data != data_.get())
            enter(data);
        drop(keys, point, chosen);
    });
    guarded([this] { leave(); });
    return result;
}

void CDropTarget::disconnect() {
    receiver_ = nullptr;
    show_outline(std::nullopt);
}

void CDropTarget::enter(IDataObject* data) {
    leave();
    data_ = share(data);
    offer_ = data && receiver_ ? offer_of(*data, receiver_->wants_mail(window_)) : Offer{};
}

void CDropTarget::leave() {
    show_outline(std::nullopt);
    leave_earlier();
    data_.reset();
    offer_ = {};
}

std::optional<Taker> CDropTarget::taker_at(POINTL point, std::uint32_t allowed) const {
    POINT position{point.x, point.y};
    if (!receiver_ || !ScreenToClient(window_, &position))
        return std::nullopt;
    std::optional<Taker> taker = receiver_->taker(
        window_, {static_cast<std::int32_t>(position.x), static_cast<std::int32_t>(position.y)},
        offer_);
    if (!taker)
        return std::nullopt;
    taker->effect = allowed_effect(taker->effect, allowed);
    return taker->effect == Effect::None ? std::nullopt : taker;
}

void CDropTarget::move(DWORD keys, POINTL point, DWORD& effect) {
    const std::optional<Taker> taker = taker_at(point, effect);
    show_outline(taker ? taker->outline : std::nullopt);
    if (!taker)
        return move_in_earlier(keys, point, effect);
    leave_earlier();
    effect = static_cast<DWORD>(taker->effect);
}

void CDropTarget::drop(DWORD keys, POINTL point, DWORD& effect) {
    const std::optional<Taker> taker = taker_at(point, effect);
    show_outline(std::nullopt);
    if (taker) {
        leave_earlier();
        const std::vector<std::u16string> paths = dropped_things();
        effect = paths.empty() ? no_effect : static_cast<DWORD>(taker->effect);
        // Reading may have let messages through that have stopped the handler.
        if (receiver_)
            receiver_->dropped(*taker, paths);
        return;
    }
    const DWORD allowed = effect;
    if (!in_earlier_)
        move_in_earlier(keys, point, effect);
    if (!earlier_) {
        effect = no_effect;
        return;
    }
    in_earlier_ = false; // a drop ends its drag
    effect = allowed;
    if (FAILED(earlier_->Drop(data_.get(), keys, point, &effect)))
        effect = no_effect;
}

std::vector<std::u16string> CDropTarget::dropped_things() {
    if (offer_.files)
        return paths_in(*data_.get());
    std::vector<std::u16string> paths = written_.write(*data_.get());
    if (paths.empty() && receiver_)
        receiver_->note("Drag and drop: nothing could be read from what was dropped.");
    return paths;
}

void CDropTarget::move_in_earlier(DWORD keys, POINTL point, DWORD& effect) {
    if (!earlier_) {
        effect = no_effect;
        return;
    }
    const bool entering = !in_earlier_;
    in_earlier_ = true;
    const HRESULT result = entering ? earlier_->DragEnter(data_.get(), keys, point, &effect)
                                    : earlier_->DragOver(keys, point, &effect);
    if (FAILED(result))
        effect = no_effect;
}

void CDropTarget::leave_earlier() {
    if (earlier_ && std::exchange(in_earlier_, false))
        earlier_->DragLeave();
}

void CDropTarget::show_outline(const std::optional<Rectangle>& outline) {
    if (outline == outline_)
        return;
    if (outline_)
        erase_focus_frame(window_, *outline_);
    outline_ = outline;
    if (outline_)
        draw_focus_frame(window_, *outline_);
}

} // namespace vell::dragdrop
