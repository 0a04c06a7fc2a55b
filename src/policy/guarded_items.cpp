#include "src/policy/guarded_items.h"

#include "src/policy/guarded_held.h"
#include "src/policy/limited.h"

namespace vell::policy {

Result<std::u16string> GuardedTree::absolute_path(const std::u16string& path) {
    return inner().absolute_path(path);
}

bool GuardedTree::equal_ignoring_case(std::u16string_view a, std::u16string_view b) {
    return inner().equal_ignoring_case(a, b);
}

void GuardedTree::fold_case(std::u16string& name) {
    inner().fold_case(name);
}

bool GuardedTree::on_same_volume(const NativePath& a, const NativePath& b) {
    return guard_.check(a, Access::Read, LastLink::Itself) &&
           guard_.check(b, Access::Read, LastLink::Itself) && inner().on_same_volume(a, b);
}

// Whoever makes a folder with those above it asks for the ones that are there, too.
Result<void> GuardedTree::create_folder(const NativePath& path) {
    VELL_TRY(check_time());
    if (guard_.leads_to_root(path) && system_.files().kind_of(path) == files::ItemKind::Folder)
        return Failure{ErrorCode::AlreadyExists};
    const Place place = VELL_TRY(guard_.place(path, Access::Write, LastLink::Itself));
    return inner().create_folder(place.path);
}

Result<void> GuardedTree::remove_folder(const NativePath& path) {
    const Place place = VELL_TRY(guard_.place(path, Access::Delete, LastLink::Itself));
    return inner().remove_folder(place.path);
}

Result<void> GuardedTree::move(const NativePath& source, const NativePath& target) {
    VELL_TRY(check_time());
    const Place from = VELL_TRY(guard_.place(source, Access::Delete, LastLink::Itself));
    const Place to = VELL_TRY(guard_.place(target, Access::Write, LastLink::Itself));
    return inner().move(from.path, to.path);
}

bool GuardedTree::is_link(const NativePath& path) {
    const auto place = guard_.place(path, Access::Read, LastLink::Itself);
    return place && inner().is_link(place->path);
}

Result<std::unique_ptr<files::HeldItem>> GuardedTree::hold(const NativePath& path,
                                                           files::FollowLink follow) {
    VELL_TRY(check_time());
    const LastLink last = follow == files::FollowLink::Yes ? LastLink::Followed : LastLink::Itself;
    const Place place = VELL_TRY(guard_.place(path, Access::Read, last));
    return guarded(VELL_TRY(inner().hold(place.path, follow)), place.path.wide, guard_);
}

// The items are told by the path that the caller knows, which is the beginning of theirs. No link
// below is followed, so all of them stand in the folder.
Result<void> GuardedTree::for_each_below(const NativePath& folder, const files::VisitItem& visit) {
    const Place place = VELL_TRY(guard_.place(folder, Access::Read));
    return inner().for_each_below(folder, [&](const files::ItemBelow& item) -> Result<void> {
        VELL_TRY(check_time());
        return visit(item);
    });
}

Result<std::u16string> GuardedTree::of(const NativePath& path) {
    const Place place = VELL_TRY(guard_.place(path, Access::Read));
    return system_.final_paths().of(place.path);
}

Result<files::HeldFolder> GuardedTree::hold(const NativePath& folder) {
    const Place place = VELL_TRY(guard_.place(folder, Access::Read));
    return system_.final_paths().hold(place.path);
}

Result<std::uint32_t> GuardedProperties::attributes(const NativePath& path) {
    const Place place = VELL_TRY(guard_.place(path, Access::Read));
    return inner().attributes(place.path);
}

Result<void> GuardedProperties::set_attributes(const NativePath& path, std::uint32_t attributes) {
    const Place place = VELL_TRY(guard_.place(path, Access::Write));
    return inner().set_attributes(place.path, attributes);
}

Result<std::uint64_t> GuardedProperties::size(const NativePath& path) {
    const Place place = VELL_TRY(guard_.place(path, Access::Read));
    return inner().size(place.path);
}

Result<bool> GuardedProperties::is_unused(const NativePath& path, files::Permission permission) {
    const Place place = VELL_TRY(guard_.place(path, Access::Read));
    return inner().is_unused(place.path, permission);
}

Result<params::CalendarTime> GuardedProperties::time(const NativePath& path,
                                                     files::ItemTime which) {
    const Place place = VELL_TRY(guard_.place(path, Access::Read));
    return inner().time(place.path, which);
}

Result<params::CalendarTime> GuardedProperties::local_time_of(files::FileTime time) {
    return inner().local_time_of(time);
}

Result<void> GuardedProperties::set_times(const NativePath& path, const files::NewTimes& times) {
    const Place place = VELL_TRY(guard_.place(path, Access::Write));
    return inner().set_times(place.path, times);
}

Result<std::u16string> GuardedProperties::type_name(const std::u16string& path,
                                                    std::uint32_t attributes, files::TypeBy by) {
    if (by == files::TypeBy::Name)
        return inner().type_name(path, attributes, by);
    const Place place = VELL_TRY(guard_.place({path, std::nullopt}, Access::Read));
    return inner().type_name(place.path.wide, attributes, by);
}

Result<files::CodeSignature> GuardedProperties::code_signature(const NativePath& path) {
    const Place place = VELL_TRY(guard_.place(path, Access::Read));
    return inner().code_signature(place.path);
}

} // namespace vell::policy
