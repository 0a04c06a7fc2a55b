#include "src/windows/pictures/icon_resource.h"

#include "src/base/bytes.h"
#include "src/windows/handle.h"

#include <algorithm>
#include <string_view>

namespace vell::windows {
namespace {

constexpr std::size_t most_pictures = 100;
constexpr std::size_t most_bytes = 32 << 20;

std::string_view resource(HMODULE module, const wchar_t* name, const wchar_t* type) {
    const HRSRC found = FindResourceW(module, name, type);
    const HGLOBAL loaded = found ? LoadResource(module, found) : nullptr;
    const void* const bytes = loaded ? LockResource(loaded) : nullptr;
    if (!bytes)
        return {};
    return {static_cast<const char*>(bytes), SizeofResource(module, found)};
}

struct NthName {
    int left;
    std::string_view found = {};
};

BOOL CALLBACK take_nth(HMODULE module, const wchar_t* type, wchar_t* name, LONG_PTR argument) {
    auto& search = *reinterpret_cast<NthName*>(argument);
    if (search.left-- > 0)
        return TRUE;
    search.found = resource(module, name, type);
    return FALSE;
}

std::string_view group(HMODULE module, int index) {
    if (index < 0)
        return resource(module, MAKEINTRESOURCEW(-index), RT_GROUP_ICON);
    NthName search{index};
    EnumResourceNamesW(module, RT_GROUP_ICON, take_nth, reinterpret_cast<LONG_PTR>(&search));
    return search.found;
}

// The directory of a group is that of a file, but for the picture's number in the place of its
// offset.
std::string as_file(HMODULE module, std::string_view group) {
    constexpr std::size_t header_size = 6;
    constexpr std::size_t entry_size = 14;
    constexpr std::size_t number_place = 12;
    constexpr std::size_t file_entry_size = 16;
    constexpr std::size_t copied_size = 8; // size in pixels, colours, depth
    const std::size_t announced = load<std::uint16_t>(group, 4, ByteOrder::Little).value_or(0);
    const std::size_t there =
        group.size() < header_size ? 0 : (group.size() - header_size) / entry_size;
    const std::size_t count = std::min({announced, there, most_pictures});

    std::string file;
    append_integer<std::uint16_t>(file, 0, ByteOrder::Little);
    append_integer<std::uint16_t>(file, 1, ByteOrder::Little);
    append_integer<std::uint16_t>(file, static_cast<std::uint16_t>(count), ByteOrder::Little);
    std::string pictures;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string_view entry = group.substr(header_size + i * entry_size, entry_size);
        const auto number = load<std::uint16_t>(entry, number_place, ByteOrder::Little);
        std::string_view picture = resource(module, MAKEINTRESOURCEW(*number), RT_ICON);
        if (picture.size() > most_bytes - pictures.size())
            picture = {}; // which the reader of the file passes over
        const std::size_t offset = header_size + count * file_entry_size + pictures.size();
        file += entry.substr(0, copied_size);
        append_integer<std::uint32_t>(file, static_cast<std::uint32_t>(picture.size()),
                                      ByteOrder::Little);
        append_integer<std::uint32_t>(file, static_cast<std::uint32_t>(offset), ByteOrder::Little);
        pictures += picture;
    }
    return file + pictures;
}

} // namespace

Result<std::string> icon_resource(const std::wstring& path, int index) {
    // A bare name, as the registry has them, means a file of Windows.
    const bool is_bare = path.find_first_of(L"\\/:") == path.npos;
    const DWORD flags = LOAD_LIBRARY_AS_DATAFILE | (is_bare ? LOAD_LIBRARY_SEARCH_SYSTEM32 : 0u);
    const UniqueModule module(LoadLibraryExW(path.c_str(), nullptr, flags));
    if (!module)
        return Failure{ErrorCode::NothingFound};
    const std::string_view found = group(module.get(), index);
    if (found.empty())
        return Failure{ErrorCode::NothingFound};
    return as_file(module.get(), found);
}

} // namespace vell::windows
