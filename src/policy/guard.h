// An administrator's policy in force: the system that functions see under it, the functions that it
// denies, and the log of what they do.
#pragma once

#include "src/policy/audit_log.h"
#include "src/policy/guarded_system.h"
#include "src/policy/policy.h"

#include <functional>
#include <memory>
#include <span>
#include <string_view>

namespace vell::policy {

// Where lines of the log go unless the policy says otherwise; asked for where that is so alone.
using LogFolder = std::function<std::u16string()>;

inline constexpr std::u16string_view policy_file_name = u"VellFile.policy.json";

class Guard {
  public:
    // The system outlives it.
    Guard(Policy policy, System& system, const LogFolder& log_folder);

    System& system() { return guarded_; }
    const Policy& policy() const { return policy_; }

    // Whether a function of that name, or the disabling of all, is not to be served.
    bool denies(std::string_view function) const;
    // The same for a function that is served whatever the state of the plug-in.
    bool denies_always(std::string_view function) const {
        return policy_.denied.contains(function);
    }

    bool is_audited() const { return log_ != nullptr; }
    void write(const CallOrigin& origin, std::string_view function, ErrorCode result,
               const CallScope& scope);

    void start(AuditLog::Report report);
    // False where lines are still being written; see AuditLog::stop.
    bool stop();

  private:
    const Policy policy_;
    System& system_;
    GuardedSystem guarded_;
    std::unique_ptr<AuditLog> log_;
};

// Where a policy may stand, and what it needs to be read.
struct PolicyPlace {
    std::u16string folder; // of the plug-in; ends with a separator
    LogFolder log_folder;
};

// The guard over the policy beside the plug-in; null without one. A policy that cannot be read
// allows nothing.
std::unique_ptr<Guard> guard_of(const PolicyPlace& place, System& system,
                                std::span<const std::string_view> functions);

// The time now, by the system's clock.
Moment now_of(files::Clock& clock);

} // namespace vell::policy
