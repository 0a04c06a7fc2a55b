#include "src/policy/call_scope.h"

#include <algorithm>

namespace vell::policy {
namespace {

thread_local CallScope* current_scope = nullptr;

} // namespace

CallScope::CallScope(files::Clock& clock, const Limits& limits)
    : clock_(clock), limits_(limits), outer_(current_scope), start_(clock.milliseconds()) {
    current_scope = this;
}

CallScope::~CallScope() {
    current_scope = outer_;
}

CallScope* CallScope::current() {
    return current_scope;
}

void CallScope::note_path(Access access, std::u16string_view path) {
    Paths& noted = paths_[static_cast<std::size_t>(access)];
    if (std::ranges::find(noted.paths, path) != noted.paths.end() || noted.latest_left_out == path)
        return;
    if (noted.paths.size() < most_paths) {
        noted.paths.emplace_back(path);
        return;
    }
    ++noted.left_out;
    noted.latest_left_out = path;
}

void CallScope::refuse(std::string_view reason, std::u16string_view path) {
    if (!is_refused())
        refusal_ = {std::string(reason), std::u16string(path)};
}

bool CallScope::has_time() {
    constexpr std::uint64_t thousand = 1000;
    if (limits_.seconds == Limits::none || milliseconds() / thousand < limits_.seconds)
        return true;
    refuse("seconds");
    return false;
}

bool CallScope::take_memory(std::uint64_t bytes) {
    if (limits_.memory_bytes == Limits::none)
        return true;
    memory_ += std::min(bytes, Limits::none - memory_);
    if (memory_ <= limits_.memory_bytes)
        return true;
    refuse("memoryBytes");
    return false;
}

} // namespace vell::policy
