#include "src/archive/disk_room.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

namespace vell::archive {
namespace {

// Calls `visit` with the size and the place of each file that the expansion may come to.
template <typename Visit>
void for_each_file(ZipReader& reader, const EntryPlace& place_of, Visit visit) {
    for (std::uint32_t i = 0; i < reader.entry_count(); ++i) {
        const EntryInfo entry = *reader.entry(i);
        if (!reader.may_be_whole(i))
            return;
        const auto place = place_of(entry);
        if (!place)
            return;
        if (!entry.is_folder)
            visit(std::uint64_t{entry.uncompressed_size}, *place);
    }
}

std::uint64_t size_of_all(ZipReader& reader, const EntryPlace& place_of) {
    std::uint64_t all = 0;
    for_each_file(reader, place_of, [&](std::uint64_t size, const NativePath&) { all += size; });
    return all;
}

// How much more is in use than before when it is most, as each file takes the place of what has
// its name: on the disk, or from the archive itself.
std::int64_t largest_growth(System& system, ZipReader& reader, const EntryPlace& place_of) {
    std::unordered_map<std::u16string, std::uint64_t> sizes;
    std::int64_t growth = 0;
    std::int64_t most = 0;
    for_each_file(reader, place_of, [&](std::uint64_t size, const NativePath& place) {
        std::u16string name = place.wide;
        system.tree().fold_case(name);
        const auto [known, is_new] = sizes.try_emplace(std::move(name), 0);
        if (is_new) {
            const auto there = system.properties().size(place);
            known->second = there ? *there : 0;
        }
        growth += static_cast<std::int64_t>(size) - static_cast<std::int64_t>(known->second);
        known->second = size;
        most = std::max(most, growth);
    });
    return most;
}

bool is_compressed(System& system, const NativePath& folder) {
    const auto attributes = system.properties().attributes(folder);
    return attributes && (*attributes & bit(files::Attribute::Compressed)) != 0;
}

} // namespace

Result<void> check_room(System& system, ZipReader& reader, const NativePath& folder,
                        const EntryPlace& place_of) {
    const auto space = system.disks().space(folder.wide);
    // What is there already is asked for only when it matters.
    if (!space || size_of_all(reader, place_of) <= space->free || is_compressed(system, folder))
        return {};
    const std::int64_t growth = largest_growth(system, reader, place_of);
    if (static_cast<std::uint64_t>(growth) > space->free)
        return Failure{ErrorCode::DiskFull};
    return {};
}

} // namespace vell::archive
