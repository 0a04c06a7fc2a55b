// The windows of the host, as far as dropping needs them: the seam below DragAndDrop.
#pragma once

#include "src/dragdrop/drop_handlers.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace vell::dragdrop {

// Who takes what is dropped at a point, and what shows that.
struct Taker {
    std::uint32_t handler_id = 0;
    Effect effect = Effect::Link;
    std::optional<Rectangle> outline; // to be drawn around the zone; none for a whole window
};

// Told by the drop targets of windows what happens on them.
class DropReceiver {
  public:
    virtual ~DropReceiver() = default;
    // Whether contents without a file are worth asking for.
    virtual bool wants_mail(Window window) const = 0;
    virtual std::optional<Taker> taker(Window window, Point point, const Offer& offer) const = 0;
    virtual void dropped(const Taker& taker, std::span<const std::u16string> paths) = 0;
    virtual void note(std::string_view line) = 0; // for the debug log
};

// What becomes of a drop target that somebody else has put on a window.
enum class EarlierTarget : std::uint8_t {
    Revoke,
    Keep, // it gets the drags that no handler takes, and the window when we leave it
};

class DropWindows {
  public:
    virtual ~DropWindows() = default;

    // The window of the document in front, otherwise that in `main_window`; null where there is
    // none. Hosts below version 16 keep documents in a multiple-document frame and give their
    // windows titles.
    virtual Window titled_document(Window main_window, const std::u16string& title) = 0;
    virtual Window document(Window main_window) = 0;

    virtual std::int32_t outer_width(Window window) = 0;
    // Of the vertical scroll bar that is a child of the window; 0 without one.
    virtual std::int32_t scroll_position(Window window) = 0;
    virtual void bring_to_front(Window window) = 0;

    // Puts a drop target on the window, once more where ours is not that of the window any more.
    // The receiver outlives it.
    virtual Result<void> serve(Window window, DropReceiver& receiver, EarlierTarget earlier) = 0;
    // Whether the window that serve() got is still there; another may have its handle by now.
    virtual bool is_served(Window window) = 0;
    // Takes our drop target from the window, whether or not that still exists.
    virtual void leave(Window window) = 0;
    // Releases what was taken for all windows together, and removes what drops have written.
    virtual void shut_down() = 0;
};

} // namespace vell::dragdrop
