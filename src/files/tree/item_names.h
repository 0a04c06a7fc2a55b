// What Windows makes of names: which of them it changes, and which name no file or folder.
//
// Everything that makes, moves or deletes an item asks here for the path at which Windows will do
// it, and makes its own checks of that path.
#pragma once

#include "src/system/file_access.h"

#include <string>
#include <string_view>

namespace vell::files {

// Whether Windows takes a name for a device, such as "NUL" or "com1.txt": it is the part before the
// first dot that counts.
bool is_device_name(std::u16string_view name);

// BadName when a name has a character that Windows forbids in names: a control character or one of
// < > : " / \ | ? *
Result<void> check_name_characters(std::u16string_view name);

// Whether a name is nothing but dots and blanks, or empty.
bool is_dots_and_blanks(std::u16string_view name);

// A name without the dots and blanks at its end, which Windows cuts off.
std::u16string_view without_cut_ending(std::u16string_view name);

// The path that Windows makes of one: without the dots and blanks at the end of its last name.
// Separators behind that stay. In "\\?\" paths nothing is cut, and "." and ".." are whole names.
std::u16string path_as_cut(std::u16string_view path);

// Where Windows deletes or moves an item that it is told to delete or move at a path. BadName for a
// last name of nothing but dots and blanks, "." and ".." apart, which would be the folder above.
// The failure of a path that could not be resolved stays.
Result<NativePath> path_to_change(const Result<NativePath>& given);

// Where Windows makes an item that it is told to make at a path. BadName as above, and for a
// device's name or path, and for a colon behind the drive, which would be a stream of another file.
Result<NativePath> path_to_make(const Result<NativePath>& given);

// The same for an item that is made of another one: BadName, too, when it would be the source,
// which the path as given hides.
Result<NativePath> path_to_make(FileSystem& files, const NativePath& source,
                                const Result<NativePath>& given);

// For a missing folder on the way to an item that can be made. There Windows cuts no more than one
// dot off a name: BadName where what would be made is not what would be looked into.
Result<void> check_folder_on_the_way(std::u16string_view folder);

} // namespace vell::files
