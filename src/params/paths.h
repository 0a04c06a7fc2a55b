// The host's forms of a path and their conversion to native paths.
#pragma once

#include "src/base/result.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vell::params {

// The form of a path, told by the prefix at its very start.
enum class PathKind : std::int16_t {
    Plain = 0,
    FileMac = 1,
    FileWin = 2,
    File = 3,
    ImageMac = 4,
    ImageWin = 5,
    Image = 6,
    MovieMac = 7,
    MovieWin = 8,
    Movie = 9,
    Size = 10,
    Smb = 30,
};

PathKind classify(std::u16string_view path);

// What strip_prefix may remove; a set of bits.
enum class Accept : std::uint32_t {
    Nothing = 0,
    FileMac = 0x1, // recognised but never removed, as ImageMac and MovieMac
    FileWin = 0x2, // "filewin:/"
    File = 0x4,    // "file:"
    ImageMac = 0x10,
    ImageWin = 0x20, // "imagewin:/"
    MovieMac = 0x100,
    MovieWin = 0x200,               // "moviewin:/"
    WithoutSlash = 0x100000,        // "filewin:", "imagewin:", "moviewin:" too
    SeveralLines = 0x1000000,       // one path a line
    OnePath = 0x333,                // every form with its slash
    Paths = OnePath | SeveralLines, // what nearly every function accepts
    HostForms = OnePath | File,     // every form that host_form gives
};

constexpr Accept operator|(Accept a, Accept b) {
    return static_cast<Accept>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}
constexpr bool accepts(Accept flags, Accept bit) {
    return (static_cast<std::uint32_t>(flags) & static_cast<std::uint32_t>(bit)) != 0;
}

// Removes the accepted prefix, or a single leading "/", from the path (from each line where several
// are accepted). SeveralLines when the path has a carriage return and may not; it is then
// unchanged.
Result<void> strip_prefix(Accept flags, std::u16string& path);

// A path as the file system takes it. Separators stay as they were given.
struct NativePath {
    std::u16string wide;
    std::optional<std::string> narrow; // native encoding; present when it was asked for
};

struct PathUse {
    bool as_folder = false; // the path ends with "\" then
    // Converts to the native 8-bit encoding; the narrow path is made when this is set.
    std::function<Result<std::string>(std::u16string_view)> narrow = nullptr;
};

// The longest path that Windows opens, in UTF-16 units.
inline constexpr std::size_t longest_path = 32'767;

// BadParameter for an empty path, SeveralLines, ErrorAsPath for a path that begins with "$$" (the
// result of a failed call), PathTooLong for one that no call of Windows takes, BadName for one with
// a zero character, where Windows would cut it off. A drive alone ("C:") is its root.
Result<NativePath> resolve(Accept flags, std::u16string path, const PathUse& use = {});

// The same for a path where nothing may exist yet: AlreadyExists when `exists` says otherwise.
Result<NativePath> resolve_new(Accept flags, std::u16string path, const PathUse& use,
                               const std::function<bool(const NativePath&)>& exists);

} // namespace vell::params
