// The parts of a Windows path: its root, its names, the folder that holds it. Both "\" and "/"
// separate names.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace vell::files {

// Characters of what cannot be cut off: "C:\", "\\server\share\", "\\?\C:\", "\" or nothing.
std::size_t root_length(std::u16string_view path);

// Whether the root is that of a drive, separated by "\": "C:\".
bool begins_with_drive(std::u16string_view path);

// The path without separators at its end; a root keeps its own.
std::u16string_view without_trailing_separator(std::u16string_view path);

// The last name of a path, whether or not separators follow; empty for a root.
std::u16string_view last_name(std::u16string_view path);

// The path of the folder that holds the item; empty where that is a root or is not named.
std::u16string_view parent_path(std::u16string_view path);

// The paths of the folders that hold the item, the nearest first; the root is not among them.
std::vector<std::u16string_view> folders_above(std::u16string_view path);

// What stands before the last name, with the separator between them: the folder that holds the
// item. Empty where the path does not name it.
std::u16string_view folder_part(std::u16string_view path);

// What follows the last dot of a path's last name. Empty without one, and for a path that ends with
// a separator.
std::u16string_view extension_of(std::u16string_view path);

// Whether that is `extension`, which is given in small letters; A to Z compared without case.
bool has_extension(std::u16string_view path, std::u16string_view extension);

// Whether a file of this path is a shell link (an alias): its name ends with ".lnk".
bool is_shell_link(std::u16string_view path);

// Whether Windows takes the path as it stands: one that begins with "\\?\".
bool is_verbatim(std::u16string_view path);

// False for the path of a device such as "\\.\COM1" or "\\.\pipe\name"; "\\?\" and "\\.\" may also
// stand before a drive, a share ("UNC\server\share") or a volume ("Volume{...}").
bool is_on_disk(std::u16string_view path);

} // namespace vell::files
