// Files dropped on the host's windows start its scripts.
#pragma once

#include "src/dragdrop/drop_windows.h"
#include "src/params/call.h"
#include "src/system/file_access.h"

#include <deque>

namespace vell::dragdrop {

// What dropping asks of the host.
class DropHost {
  public:
    virtual ~DropHost() = default;
    // As one number, such as 19501 for 19.5.1.
    virtual std::int32_t version() const = 0;
    // Whether a script may be started at this moment.
    virtual bool is_callable() const = 0;
    // Starts a script of an open file with a parameter; a running one waits for its end.
    virtual Result<void> start(const Script& script, const std::u16string& parameter) = 0;
    virtual void note(std::string_view line) = 0; // for the debug log
};

// The handlers, their windows, and the drops that wait for the host. Used on the host's main thread
// only, where the callbacks of OLE arrive too.
class DragAndDrop : private DropReceiver {
  public:
    DragAndDrop(DropHost& host, DropWindows& windows, files::FileSystem& files)
        : host_(host), windows_(windows), files_(files) {}

    // VlFile_DragAndDrop( switches ; fileName ; scriptName ; { fieldBounds } ) with
    // "-AddDragAndDropHandler" or "-StopDragAndDrop", and the step that adds a handler.
    // BadParameter, TooManyHandlers, NoFrontWindow.
    Result<void> drag_and_drop(params::Call& call);
    // The step that stops all handlers.
    Result<void> stop_all(params::Call& call);

    // The host has time: starts the script of the drop that has waited longest.
    void idle();
    void shut_down();

    std::span<const Handler> handlers() const { return handlers_.all(); }

  private:
    struct PendingDrop {
        Script script;
        std::u16string paths;
    };

    bool wants_mail(Window window) const override;
    std::optional<Taker> taker(Window window, Point point, const Offer& offer) const override;
    void dropped(const Taker& taker, std::span<const std::u16string> paths) override;
    void note(std::string_view line) override { host_.note(line); }

    Result<void> add(params::Call& call);
    Result<Window> find_window(params::Call& call);
    void stop(std::u16string_view file_name, std::u16string_view script_name);
    void start_oldest();
    // Takes our drop target from windows that no handler serves.
    void leave_unserved(const std::vector<Window>& windows);
    void forget_closed_windows();
    std::vector<Window> windows() const;

    DropHost& host_;
    DropWindows& windows_;
    files::FileSystem& files_;
    HandlerList handlers_;
    std::deque<PendingDrop> pending_;
    bool starting_ = false; // a script, which may bring in further drops meanwhile
};

} // namespace vell::dragdrop
