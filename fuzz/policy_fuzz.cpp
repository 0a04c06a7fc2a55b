// The text of a policy: a policy whose values are within their bounds, or a reason that stands in
// one line of the log.
#include "fuzz/input.h"
#include "src/policy/audit_line.h"
#include "src/policy/policy.h"

#include <algorithm>
#include <string>
#include <vector>

namespace vell::policy_fuzz {
namespace {

using namespace vell::policy;

void check_roots(const std::optional<Roots>& roots) {
    for (const std::u16string& root : roots.value_or(Roots{})) {
        const bool is_on_disk = root.size() >= 2 && root[1] == u':';
        FUZZ_CHECK(is_on_disk || root.starts_with(u"\\\\"));
        FUZZ_CHECK(root.find(u'/') == root.npos);
    }
}

void check_policy(const Policy& policy) {
    FUZZ_CHECK(!policy.allows_nothing && policy.problem.empty());
    check_roots(policy.read_roots);
    check_roots(policy.write_roots);
    FUZZ_CHECK(policy.denied.size() <= 3);
    FUZZ_CHECK(policy.audit.file_bytes >= 65'536 && policy.audit.file_bytes <= 0xFFFF'FFFF);
    FUZZ_CHECK(policy.audit.old_files <= 100);
}

} // namespace

FUZZ_TARGET(policy) {
    constexpr std::string_view functions[] = {"VlFile_Launch", "VlFile_Exists"};
    const std::vector<char> text(data, data + size);
    const auto policy = read_policy({text.data(), text.size()}, functions);
    if (policy) {
        check_policy(*policy);
        return 0;
    }
    FUZZ_CHECK(!policy.error().empty() && policy.error().size() <= size + 500);
    const std::string line = event_line({}, "start", policy.error());
    const auto is_control = [](char c) {
        return static_cast<unsigned char>(c) < ' ';
    };
    FUZZ_CHECK(std::ranges::count_if(line, is_control) == 1 && line.ends_with('\n'));
    return 0;
}

} // namespace vell::policy_fuzz
