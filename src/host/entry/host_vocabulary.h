// Functions and steps registered through the host's interface.
#pragma once

#include "src/plugin/host.h"

namespace vell::host {

class HostVocabulary : public plugin::Host {
  public:
    void meet(std::int16_t api_version) override;
    bool has_steps() const override;
    ErrorCode add(const plugin::FunctionRow& row) override;
    ErrorCode add(const plugin::StepRow& row) override;
    ErrorCode remove_function(std::int16_t registered_id) override;
    ErrorCode remove_step(std::int16_t id) override;
};

} // namespace vell::host
