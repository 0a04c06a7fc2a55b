// What an administrator allows the plug-in: the contents of "VellFile.policy.json".
#pragma once

#include "src/base/result.h"
#include "src/system/limits.h"

#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vell::policy {

struct AuditSettings {
    bool is_on = true;
    std::u16string folder = {}; // the host's folder of logs when empty
    std::uint64_t file_bytes = 16 * 1024 * 1024;
    std::uint32_t old_files = 4;
};

using Roots = std::vector<std::u16string>;

struct Policy {
    // Nothing but the functions about the plug-in itself is served, for the reason that follows.
    bool allows_nothing = false;
    std::string problem = {};

    // Full paths of folders, names separated by "\". Absent: every folder of this machine to read;
    // to write, whatever may be read.
    std::optional<Roots> read_roots = {};
    std::optional<Roots> write_roots = {};
    std::set<std::string, std::less<>> denied = {}; // functions, and disable_all_action
    Limits limits = {};
    bool ends_command_children = false;
    AuditSettings audit = {};
};

// The action of VlFile_Control that can be denied like a function.
inline constexpr std::string_view disable_all_action = "DisableAllFunctions";

// A file beyond this size is none that an administrator has written.
inline constexpr std::size_t longest_policy = 1024 * 1024;

// The policy that a text says, or what is wrong with it, in English.
Result<Policy, std::string> read_policy(std::string_view json,
                                        std::span<const std::string_view> functions);

Policy policy_that_allows_nothing(std::string problem);

} // namespace vell::policy
