// A host that nothing can be dropped on.
#pragma once

#include "src/dragdrop/drag_and_drop.h"

namespace vell::test {

class NoDrops : public dragdrop::DropHost, public dragdrop::DropWindows {
  public:
    using Window = dragdrop::Window;
    std::int32_t version() const override { return 0; }
    bool is_callable() const override { return false; }
    Result<void> start(const dragdrop::Script&, const std::u16string&) override { return {}; }
    void note(std::string_view) override {}
    Window titled_document(Window, const std::u16string&) override { return nullptr; }
    Window document(Window) override { return nullptr; }
    std::int32_t outer_width(Window) override { return 0; }
    std::int32_t scroll_position(Window) override { return 0; }
    void bring_to_front(Window) override {}
    Result<void> serve(Window, dragdrop::DropReceiver&, dragdrop::EarlierTarget) override {
        return {};
    }
    bool is_served(Window) override { return false; }
    void leave(Window) override {}
    void shut_down() override {}
};

} // namespace vell::test
