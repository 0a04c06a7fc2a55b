// Which paths a policy allows, judged by where they really lead.
#pragma once

#include "src/policy/call_scope.h"
#include "src/policy/policy.h"
#include "src/system/system.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace vell::policy {

// Whether what is done to an item is done to what a link leads to, or to the link itself.
enum class LastLink : std::uint8_t { Followed, Itself };

// An item to work on. As long as it lives, the folder that holds the item stays where it is.
struct Place {
    files::NativePath path; // by final names
    std::unique_ptr<files::Hold> hold = nullptr;
};

// A failure is RefusedByPolicy, noted in the scope of the call, or what the system says of a folder
// that is not there.
class PathGuard {
  public:
    PathGuard(const Policy& policy, System& system);

    // Checks a path as it is spelled, without a look at the disk, then where it leads.
    Result<Place> place(const files::NativePath& path, Access access,
                        LastLink last = LastLink::Followed);
    // Of a path that nothing is done to yet.
    Result<void> check(const files::NativePath& path, Access access,
                       LastLink last = LastLink::Followed);
    // Of the final path of what is open.
    Result<void> check_final(std::u16string_view path, Access access);
    // Of a file that has been opened by a place's path.
    Result<void> check_open(files::File& file, const Place& place, Access access);

    // Whether something on a disk, such as "C:\", may be read; without a refusal.
    bool allows_disk(std::u16string_view root);
    // The same of a share, "\\server\share".
    bool allows_share(std::u16string_view share);
    // Whether a folder is a root or one above: that it is there is no secret.
    bool leads_to_root(const files::NativePath& path) const;
    bool restricts_reading() const { return read_roots_.has_value(); }

    // Files of the plug-in's own in the temporary folder are nobody's business.
    void add_own(const files::NativePath& path);

    // RefusedByPolicy, noted.
    static Failure<ErrorCode> refuse(std::string_view reason, std::u16string_view path = {});

  private:
    struct Root {
        std::u16string spelled;
        std::u16string final;
    };
    using GuardedRoots = std::optional<std::vector<Root>>;

    GuardedRoots with_final_paths(const std::optional<Roots>& roots) const;
    const GuardedRoots& roots_for(Access access) const;
    bool is_within(std::u16string_view path, std::u16string_view folder) const;
    bool allows(std::u16string_view path, Access access, std::u16string Root::*as) const;
    bool allows_spelled(std::u16string_view path, Access access) const;
    bool is_own(const files::NativePath& path);
    // From its root on, with one kind of separator.
    Result<std::u16string> absolute(const files::NativePath& path) const;
    Result<std::u16string> spelled(const files::NativePath& path, Access access);
    Result<Place> pin(std::u16string_view path, Access access);
    Result<Place> pin_root(std::u16string_view path, Access access);
    Result<void> check_above(std::u16string_view folder, Access access);
    bool any_root(const std::function<bool(const Root&)>& holds) const;
    bool is_root(std::u16string_view path) const;

    System& system_;
    GuardedRoots read_roots_;
    GuardedRoots write_roots_;
    std::mutex mutex_;
    std::deque<std::u16string> own_; // guarded by mutex_
};

} // namespace vell::policy
