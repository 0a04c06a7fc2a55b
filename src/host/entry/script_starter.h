// Scripts that drops start in the host.
#pragma once

#include "src/dragdrop/drag_and_drop.h"
#include "src/host/bridge/call_record.h"

namespace vell::host {

class ScriptStarter : public dragdrop::DropHost {
  public:
    // A message that this thread serves. What its record says, which itself is gone when the
    // message ends, holds for the thread alone: until then, and behind a message that no other one
    // surrounds until the next, for drops come between messages.
    class ServedMessage {
      public:
        explicit ServedMessage(const CallRecord& record);
        ServedMessage(const ServedMessage&) = delete;
        ServedMessage& operator=(const ServedMessage&) = delete;
        ~ServedMessage();

      private:
        struct Learned {
            StartScript start_script = nullptr;
            bool unsafe_call = false; // the host is not to be called back
            int depth = 0;            // of messages in messages
        };
        friend ScriptStarter;
        static thread_local Learned learned_;
        Learned outer_;
    };

    std::int32_t version() const override;
    bool is_callable() const override;
    Result<void> start(const dragdrop::Script& script, const std::u16string& parameter) override;
    void note(std::string_view line) override;
};

} // namespace vell::host
