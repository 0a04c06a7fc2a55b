#include "src/dragdrop/drag_and_drop.h"

#include "src/dragdrop/dropped_data.h"

#include <algorithm>
#include <utility>

namespace vell::dragdrop {
namespace {

using params::Call;
using params::SwitchSet;

constexpr std::size_t file_position = 1;
constexpr std::size_t script_position = 2;
constexpr std::size_t bounds_position = 3;
// Of the step only.
constexpr std::size_t cursor_position = 4;
constexpr std::size_t mail_position = 5;
constexpr std::size_t scrolling_position = 6;

constexpr std::int32_t copy_cursor = 1;

// Host versions.
constexpr std::int32_t first_with_own_targets = 12'000; // its windows take drops themselves
constexpr std::int32_t first_scaled = 15'000;
constexpr std::int32_t first_without_frame = 16'000;

// The status area of versions 10 and 11 is part of the window but not of its content.
constexpr std::int32_t status_area_offset = -80;

Effect effect_of(Call& call, const SwitchSet& switches) {
    const bool copy = call.option_is(cursor_position, copy_cursor, switches, "-CopyCursor");
    return copy ? Effect::Copy : Effect::Link;
}

std::int32_t vertical_offset(Call& call, std::int32_t host_version) {
    if (host_version < 10'000 || host_version >= 12'000)
        return 0;
    const Result<std::u16string> answer = call.evaluate(u"Get(StatusAreaState)");
    if (!answer)
        return status_area_offset;
    const std::int32_t state = leading_number(*answer).value_or(0);
    return state == 1 || state == 2 ? status_area_offset : 0;
}

Rectangle bounds_in_window(Call& call, const Rectangle& bounds, std::int32_t outer_width) {
    const Result<std::u16string> width = call.evaluate(u"Get(WindowContentWidth)");
    const std::int32_t content_width = width ? leading_number(*width).value_or(0) : 0;
    return scaled(bounds, scale_in_quarters(outer_width, content_width));
}

} // namespace

Result<void> DragAndDrop::drag_and_drop(Call& call) {
    const SwitchSet switches = call.switches();
    if (call.is_step() || switches.has("-AddDragAndDropHandler"))
        VELL_TRY(add(call));
    else if (switches.has("-StopDragAndDrop"))
        stop(call.text(file_position), call.text(script_position));
    call.set_done();
    return {};
}

Result<void> DragAndDrop::stop_all(Call& call) {
    stop({}, {});
    call.set_done();
    return {};
}

Result<void> DragAndDrop::add(Call& call) {
    Handler handler;
    handler.script = {call.text(file_position), call.text(script_position)};
    if (handler.script.file_name.empty() || handler.script.name.empty())
        return Failure{ErrorCode::BadParameter};
    forget_closed_windows();
    if (handlers_.is_full())
        return Failure{ErrorCode::TooManyHandlers};

    const SwitchSet switches = call.switches();
    handler.host_version = host_.version();
    handler.effect = effect_of(call, switches);
    handler.allows_mail = call.option(mail_position, switches, "-AllowMailDrops");
    handler.zone.scrolls = call.option(scrolling_position, switches, "-ScrollDropZone");
    handler.brings_to_front = switches.has("-BringToFront");
    if (const std::u16string bounds = call.text(bounds_position); !bounds.empty())
        handler.zone.bounds = VELL_TRY(parse_bounds(bounds));

    handler.window = VELL_TRY(find_window(call));
    handler.zone.vertical_offset = vertical_offset(call, handler.host_version);
    if (handler.zone.bounds && handler.host_version >= first_scaled)
        handler.zone.bounds =
            bounds_in_window(call, *handler.zone.bounds, windows_.outer_width(handler.window));
    VELL_TRY(windows_.serve(handler.window, *this,
                            handler.host_version < first_with_own_targets ? EarlierTarget::Revoke
                                                                          : EarlierTarget::Keep));
    if (handlers_.is_full()) { // by what came in while the host was asked
        leave_unserved({handler.window});
        return Failure{ErrorCode::TooManyHandlers};
    }
    handlers_.add(std::move(handler));
    return {};
}

Result<Window> DragAndDrop::find_window(Call& call) {
    if (!call.can_ask_user())
        return Failure{ErrorCode::NoFrontWindow};
    Window window = nullptr;
    if (host_.version() >= first_without_frame) {
        window = windows_.document(call.main_window());
    } else {
        const Result<std::u16string> name = call.evaluate(u"Get(WindowName)");
        const Result<std::u16string> host_name = call.evaluate(u"Get(HostName)");
        if (name && host_name)
            window =
                windows_.titled_document(call.main_window(), *name + u" (" + *host_name + u")");
    }
    if (!window)
        return Failure{ErrorCode::NoFrontWindow};
    return window;
}

void DragAndDrop::stop(std::u16string_view file_name, std::u16string_view script_name) {
    const std::vector<Window> served = windows();
    handlers_.remove(file_name, script_name);
    std::erase_if(pending_, [&](const PendingDrop& drop) {
        return matches(drop.script, file_name, script_name);
    });
    leave_unserved(served);
}

std::vector<Window> DragAndDrop::windows() const {
    std::vector<Window> windows;
    for (const Handler& handler : handlers_.all()) {
        if (std::find(windows.begin(), windows.end(), handler.window) == windows.end())
            windows.push_back(handler.window);
    }
    return windows;
}

void DragAndDrop::leave_unserved(const std::vector<Window>& windows) {
    for (const Window window : windows) {
        if (!handlers_.serves(window))
            windows_.leave(window);
    }
}

void DragAndDrop::forget_closed_windows() {
    for (const Window window : windows()) {
        if (windows_.is_served(window))
            continue;
        handlers_.remove(window);
        windows_.leave(window);
    }
}

bool DragAndDrop::wants_mail(Window window) const {
    return std::any_of(handlers_.all().begin(), handlers_.all().end(),
                       [window](const Handler& handler) {
                           return handler.window == window && handler.allows_mail;
                       });
}

std::optional<Taker> DragAndDrop::taker(Window window, Point point, const Offer& offer) const {
    // Asked for before the handlers are looked at: the scroll bar's answer is the host's code,
    // which may stop or add some.
    const std::int32_t scrolled =
        handlers_.any_scrolls(window) ? windows_.scroll_position(window) : 0;
    const Handler* handler = handlers_.at(window, point, offer, scrolled);
    if (!handler)
        return std::nullopt;
    return Taker{handler->id, handler->effect,
                 handler->zone.outline(handler->zone.scrolls ? scrolled : 0)};
}

void DragAndDrop::dropped(const Taker& taker, std::span<const std::u16string> paths) {
    const Handler* found = handlers_.find(taker.handler_id);
    if (!found || paths.empty())
        return;
    // The host may do anything when its window comes to the front, also stop this handler.
    const Handler handler = *found;
    // Drops keep their order: one that finds others waiting waits behind them.
    const bool is_next = pending_.empty();
    pending_.push_back({handler.script, path_list(paths, files_)});
    if (handler.brings_to_front)
        windows_.bring_to_front(handler.window);
    if (is_next && !pending_.empty() && !starting_ && host_.is_callable())
        start_oldest();
}

void DragAndDrop::start_oldest() {
    const PendingDrop drop = std::move(pending_.front());
    pending_.pop_front();
    starting_ = true;
    const Result<void> outcome = host_.start(drop.script, drop.paths);
    starting_ = false;
    if (!outcome)
        host_.note("Drag and drop: the host did not start the script.");
}

void DragAndDrop::idle() {
    if (!pending_.empty() && !starting_ && host_.is_callable())
        start_oldest();
    forget_closed_windows();
}

void DragAndDrop::shut_down() {
    stop({}, {});
    windows_.shut_down();
}

} // namespace vell::dragdrop
