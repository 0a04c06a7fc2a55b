// The handlers of dropped files, in the order of their registration.
#pragma once

#include "src/dragdrop/drop_zone.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vell::dragdrop {

using Window = void*; // a native window handle

// What a drop does with the dragged things, by OLE's numbers; the cursor shows it.
enum class Effect : std::uint32_t { None = 0, Copy = 1, Link = 4 };

// The effect for a source that allows only some (a set of OLE's bits): the wanted one, otherwise
// the other one that leaves the source as it is, otherwise None.
Effect allowed_effect(Effect wanted, std::uint32_t allowed);

// The kinds of things that a drag carries.
struct Offer {
    bool files = false;
    bool mail = false; // contents without a file of their own
};

// A host script to be started with what is dropped.
struct Script {
    std::u16string file_name;
    std::u16string name;
};

struct Handler {
    std::uint32_t id = 0; // given by HandlerList
    Script script;
    Window window = nullptr;
    Effect effect = Effect::Link;
    Zone zone;
    bool allows_mail = false;
    bool brings_to_front = false;
    std::int32_t host_version = 0; // at registration

    bool takes(const Offer& offer) const { return offer.files || (offer.mail && allows_mail); }
};

class HandlerList {
  public:
    static constexpr std::size_t most = 6;

    bool is_full() const { return handlers_.size() >= most; }
    void add(Handler handler);
    std::span<const Handler> all() const { return handlers_; }
    bool serves(Window window) const;
    // Null when there is none of that identifier any more.
    const Handler* find(std::uint32_t id) const;
    // Whether a zone of the window moves with its vertical scroll position.
    bool any_scrolls(Window window) const;
    // The first handler of the window that takes what is offered at a point in client coordinates;
    // null when there is none.
    const Handler* at(Window window, Point point, const Offer& offer,
                      std::int32_t scroll_position) const;

    // Those of a file and a script, letters A to Z compared without case. An empty script name
    // stands for every script, an empty file name for everything.
    void remove(std::u16string_view file_name, std::u16string_view script_name);
    void remove(Window window);

  private:
    std::vector<Handler> handlers_;
    std::uint32_t last_id_ = 0; // only grows
};

// Whether `script` is among those that HandlerList::remove is asked to remove.
bool matches(const Script& script, std::u16string_view file_name, std::u16string_view script_name);

} // namespace vell::dragdrop
