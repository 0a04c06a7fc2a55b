#include "src/policy/path_guard.h"

#include "src/files/paths/path_parts.h"
#include "src/files/tree/item_names.h"

#include <algorithm>

namespace vell::policy {
namespace {

using files::NativePath;

constexpr std::u16string_view share_start = u"\\\\";

// A short name may stand for any, so its path says nothing until the system resolves it.
bool may_have_short_names(std::u16string_view path) {
    for (std::size_t at = path.find(u'~'); at != path.npos; at = path.find(u'~', at + 1))
        if (at + 1 < path.size() && path[at + 1] >= u'0' && path[at + 1] <= u'9')
            return true;
    return false;
}

// Whether a path has a name that leads to something other than an item of that name.
bool has_special_name(std::u16string_view path) {
    path.remove_prefix(files::root_length(path));
    while (!path.empty()) {
        const std::u16string_view name = path.substr(0, path.find(u'\\'));
        const bool leads_up = name == u"." || name == u".."; // the system has left it there
        if (leads_up || files::is_device_name(name) || name.find(u':') != name.npos)
            return true;
        path.remove_prefix(std::min(name.size() + 1, path.size()));
    }
    return false;
}

} // namespace

PathGuard::PathGuard(const Policy& policy, System& system)
    : system_(system), read_roots_(with_final_paths(policy.read_roots)),
      write_roots_(with_final_paths(policy.write_roots)) {}

// A root may itself be spelled by a link or a drive's other letter. One that is not there yet
// counts as it is spelled.
PathGuard::GuardedRoots PathGuard::with_final_paths(const std::optional<Roots>& roots) const {
    if (!roots)
        return std::nullopt;
    std::vector<Root> guarded;
    for (const std::u16string& root : *roots) {
        const auto final = system_.final_paths().of({root, std::nullopt});
        guarded.push_back({root, final && !final->empty() ? *final : root});
    }
    return guarded;
}

// What may be read may be written where there are no roots for writing.
const PathGuard::GuardedRoots& PathGuard::roots_for(Access access) const {
    return access == Access::Read || !write_roots_ ? read_roots_ : write_roots_;
}

bool PathGuard::is_within(std::u16string_view path, std::u16string_view folder) const {
    if (!system_.tree().equal_ignoring_case(path.substr(0, folder.size()), folder))
        return false;
    return path.size() == folder.size() || folder.ends_with(u'\\') || path[folder.size()] == u'\\';
}

// What may be written may also be looked at.
bool PathGuard::allows(std::u16string_view path, Access access, std::u16string Root::*as) const {
    const auto hold = [&](const GuardedRoots& roots) {
        return roots && std::ranges::any_of(
                            *roots, [&](const Root& root) { return is_within(path, root.*as); });
    };
    const GuardedRoots& roots = roots_for(access);
    if (!roots && files::begins_with_drive(path))
        return true;
    return hold(roots) || (access == Access::Read && hold(write_roots_));
}

bool PathGuard::allows_spelled(std::u16string_view path, Access access) const {
    return allows(path, access, &Root::spelled) || allows(path, access, &Root::final);
}

Failure<ErrorCode> PathGuard::refuse(std::string_view reason, std::u16string_view path) {
    if (CallScope* scope = CallScope::current())
        scope->refuse(reason, path);
    return {ErrorCode::RefusedByPolicy};
}

Result<std::u16string> PathGuard::absolute(const NativePath& path) const {
    std::u16string full = VELL_TRY(system_.tree().absolute_path(path.wide));
    std::ranges::replace(full, u'/', u'\\');
    return full;
}

// The path from its root on, if it is one of an item and lies in a root.
Result<std::u16string> PathGuard::spelled(const NativePath& path, Access access) {
    std::u16string given = path.wide;
    std::ranges::replace(given, u'/', u'\\');
    for (const std::u16string_view prefix : {u"\\\\?\\", u"\\\\.\\", u"\\??\\"})
        if (given.starts_with(prefix))
            return refuse("device", path.wide);
    const std::u16string full = VELL_TRY(absolute(path));
    const bool is_share = full.starts_with(share_start);
    if (!files::begins_with_drive(full) && (!is_share || full.starts_with(u"\\\\.\\")))
        return refuse("device", path.wide);
    if (has_special_name(full))
        return refuse("device", full);
    std::u16string by_share = is_share ? u"" : system_.disks().share_of(full[0]);
    if (!by_share.empty())
        by_share += full.substr(2);
    if (!may_have_short_names(full) && !allows_spelled(full, access) &&
        (by_share.empty() || !allows_spelled(by_share, access)))
        return refuse("path", full);
    return full;
}

Result<void> PathGuard::check_final(std::u16string_view path, Access access) {
    if (!allows(path, access, &Root::final))
        return refuse("path", path);
    return {};
}

Result<void> PathGuard::check_open(files::File& file, const Place& place, Access access) {
    if (is_own(place.path))
        return {};
    const auto final = file.final_path();
    return final ? check_final(*final, access) : Result<void>(refuse("path", place.path.wide));
}

bool PathGuard::any_root(const std::function<bool(const Root&)>& holds) const {
    return (read_roots_ && std::ranges::any_of(*read_roots_, holds)) ||
           (write_roots_ && std::ranges::any_of(*write_roots_, holds));
}

bool PathGuard::is_root(std::u16string_view path) const {
    return files::root_length(path) >= path.size() || any_root([&](const Root& root) {
               return system_.tree().equal_ignoring_case(path, root.spelled) ||
                      system_.tree().equal_ignoring_case(path, root.final);
           });
}

bool PathGuard::leads_to_root(const NativePath& path) const {
    if (!read_roots_ && !write_roots_)
        return false;
    const auto full = absolute(path);
    if (!full)
        return false;
    const std::u16string_view folder = files::without_trailing_separator(*full);
    return any_root([&](const Root& root) {
        return is_within(root.spelled, folder) || is_within(root.final, folder);
    });
}

// The folder that holds a root is none of ours to look at.
Result<Place> PathGuard::pin_root(std::u16string_view path, Access access) {
    std::u16string final = VELL_TRY(system_.final_paths().of({std::u16string(path), std::nullopt}));
    VELL_TRY(check_final(final, access));
    return Place{{std::move(final), std::nullopt}};
}

// The path over the final one of the folder that holds the item, which stays there.
Result<Place> PathGuard::pin(std::u16string_view path, Access access) {
    if (is_root(path))
        return pin_root(path, access);
    const std::u16string_view folder = files::folder_part(path);
    auto held = system_.final_paths().hold({std::u16string(folder), std::nullopt});
    if (!held) {
        VELL_TRY(check_above(folder, access));
        // It is the folder of what was asked for that is missing.
        return Failure{held.error() == ErrorCode::NotFound ? ErrorCode::FolderNotFound
                                                           : held.error()};
    }
    std::u16string final = std::move(held->path);
    if (!final.ends_with(u'\\'))
        final += u'\\';
    final += files::last_name(path);
    VELL_TRY(check_final(final, access));
    return Place{{std::move(final), std::nullopt}, std::move(held->hold)};
}

// A missing folder tells nothing, unless the way to it leads out of the roots.
Result<void> PathGuard::check_above(std::u16string_view folder, Access access) {
    for (; !folder.empty() && allows_spelled(folder, access); folder = files::parent_path(folder)) {
        folder = files::without_trailing_separator(folder);
        if (const auto final = system_.final_paths().of({std::u16string(folder), std::nullopt}))
            return check_final(*final, access);
    }
    return {};
}

Result<Place> PathGuard::place(const NativePath& given, Access access, LastLink last) {
    if (is_own(given))
        return Place{given};
    const std::u16string full = VELL_TRY(spelled(given, access));
    if (CallScope* scope = CallScope::current())
        scope->note_path(access, full);
    std::u16string path(files::without_trailing_separator(full));
    const std::u16string ending = full.substr(path.size());
    if (last == LastLink::Itself && access != Access::Read && is_root(path))
        return refuse("root", full);
    constexpr int most_links = 40;
    for (int links = 0; links < most_links; ++links) {
        Place found = VELL_TRY(pin(path, access));
        const auto final = last == LastLink::Followed ? system_.final_paths().of(found.path)
                                                      : Result<std::u16string>(found.path.wide);
        if (!final && system_.tree().is_link(found.path))
            return refuse("path", full); // where it will lead is not known
        if (final)
            VELL_TRY(check_final(*final, access));
        if (!final || system_.tree().equal_ignoring_case(*final, found.path.wide)) {
            found.path.wide += ending;
            return found;
        }
        path = *final;
    }
    return refuse("path", full);
}

Result<void> PathGuard::check(const NativePath& path, Access access, LastLink last) {
    const Result<Place> found = place(path, access, last);
    if (!found)
        return Failure{found.error()};
    return {};
}

bool PathGuard::allows_disk(std::u16string_view root) {
    if (!read_roots_ && files::begins_with_drive(root))
        return true;
    return any_root([&](const Root& of_policy) {
        return is_within(of_policy.spelled, root) || is_within(of_policy.final, root) ||
               is_within(root, of_policy.final);
    });
}

bool PathGuard::allows_share(std::u16string_view share) {
    return share.starts_with(share_start) && allows_disk(files::without_trailing_separator(share));
}

bool PathGuard::is_own(const NativePath& path) {
    const std::lock_guard lock(mutex_);
    return std::ranges::find(own_, path.wide) != own_.end();
}

void PathGuard::add_own(const NativePath& path) {
    constexpr std::size_t most_own = 1000; // at a time; each lives as long as a call at most
    const std::lock_guard lock(mutex_);
    own_.push_back(path.wide);
    if (own_.size() > most_own)
        own_.pop_front();
}

} // namespace vell::policy
