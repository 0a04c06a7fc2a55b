#include "src/archive/held_folders.h"

#include "src/archive/zip_reader.h"
#include "src/files/paths/path_parts.h"
#include "src/files/tree/item_names.h"

#include <algorithm>

namespace vell::archive {

using files::HeldItem;
using files::ItemKind;

namespace {

// What keeps a folder from being there: an item inside it could not be opened for the same reason.
ErrorCode making_error(ErrorCode making) {
    const bool is_name = making == ErrorCode::BadName || making == ErrorCode::BadParameter;
    return is_name ? ErrorCode::BadArgument : ErrorCode::TargetNotFound;
}

} // namespace

std::u16string_view name_as_made(std::u16string_view folder, std::u16string_view name) {
    return files::is_verbatim(folder) ? name : files::without_cut_ending(name);
}

void HeldFolders::add(std::u16string_view path, Held folder) {
    if (const auto found = places_.find(path); found != places_.end()) {
        found->second->folder = std::move(folder);
        return;
    }
    if (entries_.size() == most) {
        places_.erase(entries_.back().path);
        entries_.pop_back();
    }
    entries_.push_front({std::u16string(path), std::move(folder)});
    places_.emplace(entries_.front().path, entries_.begin());
}

HeldFolders::Held HeldFolders::find(std::u16string_view path) {
    const auto found = places_.find(path);
    if (found == places_.end())
        return nullptr;
    entries_.splice(entries_.begin(), entries_, found->second);
    return found->second->folder;
}

// The held folder that is furthest on the way to `path`.
Result<HeldFolders::Reached> HeldFolders::nearest(std::u16string_view path) {
    for (std::size_t end = path.size(); end != 0 && end != path.npos;
         end = path.rfind(u'\\', end - 1))
        if (Held folder = find(path.substr(0, end)))
            return Reached{end, std::move(folder)};
    if (!top_)
        return Failure{top_.error()};
    return Reached{0, *top_};
}

// The folder of a name in another, which is made when it is the last one of a path.
Result<HeldFolders::Held> HeldFolders::step(HeldItem& above, std::u16string_view name,
                                            bool is_last) {
    auto folder = above.hold(name);
    if (!folder && folder.error() == ErrorCode::NotFound && is_last) {
        folder = above.make_folder(name);
        if (!folder && folder.error() == ErrorCode::AlreadyExists) // made at this moment
            folder = above.hold(name);
        if (!folder)
            return Failure{making_error(folder.error())};
    }
    if (!folder)
        return Failure{target_error(folder.error())};
    if ((*folder)->is_link())
        return Failure{ErrorCode::BadName};
    if ((*folder)->kind() != ItemKind::Folder)
        return Failure{ErrorCode::TargetNotFound};
    return Held(*std::move(folder));
}

Result<HeldFolders::Held> HeldFolders::folder(std::u16string_view path) {
    Reached reached = VELL_TRY(nearest(path));
    while (reached.end < path.size()) {
        const std::size_t start = reached.end == 0 ? 0 : reached.end + 1;
        const std::size_t end = std::min(path.find(u'\\', start), path.size());
        const std::u16string_view name = name_as_made(top_path_, path.substr(start, end - start));
        reached.folder = VELL_TRY(step(*reached.folder, name, end == path.size()));
        reached.end = end;
        add(path.substr(0, end), reached.folder);
    }
    return reached.folder;
}

} // namespace vell::archive
