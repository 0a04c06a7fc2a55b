// Scripts that drops start in the host.
#pragma once

#include "src/dragdrop/drag_and_drop.h"
#include "src/host/bridge/call_record.h"

#include <atomic>

namespace vell::host {

class ScriptStarter : public dragdrop::DropHost {
  public:
    // What the latest call record says, which itself is gone when its call ends.
    void learn(const CallRecord& record);

    std::int32_t version() const override;
    bool is_callable() const override;
    Result<void> start(const dragdrop::Script& script, const std::u16string& parameter) override;
    void note(std::string_view line) override;

  private:
    std::atomic<StartScript> start_script_ = nullptr;
    std::atomic<bool> unsafe_call_ = false; // the host is not to be called back
};

} // namespace vell::host
