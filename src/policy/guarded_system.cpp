#include "src/policy/guarded_system.h"

#include "src/policy/limited.h"

namespace vell::policy {

GuardedSystem::GuardedSystem(const Policy& policy, System& system)
    : policy_(policy), system_(system), guard_(policy, system), files_(guard_, system),
      tree_(guard_, system), properties_(guard_, system), places_(guard_, system),
      disks_(guard_, system), desktop_(guard_, system), commands_(policy, system),
      pictures_(guard_, system) {}

// Whoever takes the text holds all of it.
Result<void> GuardedSystem::read_pdf_text(ByteSource& file, const params::ByteSink& sink,
                                          std::vector<std::string>& notes) {
    VELL_TRY(check_time());
    const params::ByteSink limited = [&](std::string_view text) -> Result<void> {
        VELL_TRY(check_time());
        VELL_TRY(check_memory(text.size()));
        return sink(text);
    };
    return system_.read_pdf_text(file, limited, notes);
}

} // namespace vell::policy
