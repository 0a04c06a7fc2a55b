// The parts of a Windows path: its root, its names, the folder that holds it. Both "\" and "/"
// separate names.
#pragma once

#include "src/base/result.h"

#include <cstddef>
#include <string_view>

namespace vell::files {

// Characters of what cannot be cut off: "C:\", "\\server\share\", "\\?\C:\", "\" or nothing.
std::size_t root_length(std::u16string_view path);

// The path without separators at its end; a root keeps its own.
std::u16string_view without_trailing_separator(std::u16string_view path);

// The last name of a path, whether or not separators follow; empty for a root.
std::u16string_view last_name(std::u16string_view path);

// The path of the folder that holds the item; empty where that is a root or is not named.
std::u16string_view parent_path(std::u16string_view path);

// Whether Windows takes a name for a device, such as "NUL" or "com1.txt": it is the part before the
// first dot that counts.
bool is_device_name(std::u16string_view name);

// What stands before the last name, with the separator between them: the folder that holds the
// item. Empty where the path does not name it.
std::u16string_view folder_part(std::u16string_view path);

// For items that are to be made: BadName when the last name ends in dots or spaces that Windows
// would silently cut off, so that an item of another name would be made. "." and ".." are whole
// names, and in a "\\?\" path nothing is cut.
Result<void> check_new_name(std::u16string_view path);

// BadName when a name has a character that Windows forbids in names: a control character or one of
// < > : " / \ | ? *
Result<void> check_name_characters(std::u16string_view name);

} // namespace vell::files
