// What is known of the call that runs on this thread: the paths that it used, what was refused, and
// what it has used up of its limits.
#pragma once

#include "src/system/clock.h"
#include "src/system/limits.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vell::policy {

enum class Access : std::uint8_t { Read, Write, Delete };

// Why a call was refused, and at which path, if at one. The first reason counts.
struct Refusal {
    std::string reason;
    std::u16string path;
};

// Begins and ends with a call. The host may begin another one on the same thread while the first
// evaluates a calculation; each has its own scope.
class CallScope {
  public:
    // A call that touches a million files is no reason for a line of a million paths.
    static constexpr std::size_t most_paths = 20;

    CallScope(files::Clock& clock, const Limits& limits);
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;
    ~CallScope();

    // Null outside of calls, such as while something is dropped.
    static CallScope* current();

    void note_path(Access access, std::u16string_view path);
    void refuse(std::string_view reason, std::u16string_view path = {});
    // False, with the refusal noted, when the call has used up its time, or its memory with what is
    // about to be taken.
    bool has_time();
    bool take_memory(std::uint64_t bytes);

    bool is_refused() const { return !refusal_.reason.empty(); }
    const Refusal& refusal() const { return refusal_; }
    const std::vector<std::u16string>& paths(Access access) const { return of(access).paths; }
    std::uint64_t paths_left_out(Access access) const { return of(access).left_out; }
    std::uint64_t milliseconds() const { return clock_.milliseconds() - start_; }

  private:
    struct Paths {
        std::vector<std::u16string> paths;
        std::uint64_t left_out = 0;
        std::u16string latest_left_out;
    };

    const Paths& of(Access access) const { return paths_[static_cast<std::size_t>(access)]; }

    files::Clock& clock_;
    const Limits& limits_;
    CallScope* const outer_;
    const std::uint64_t start_;
    std::uint64_t memory_ = 0;
    Paths paths_[3];
    Refusal refusal_;
};

} // namespace vell::policy
