// From the name of an archive's entry to the path that it is expanded to.
//
// A path that comes out stays inside the target folder and names the item that it seems to name:
// nothing climbs out by "..", reaches a device, or becomes the folder that it stands in.
#pragma once

#include "src/archive/zip_reader.h"
#include "src/base/result.h"
#include "src/params/encodings.h"

#include <string>
#include <string_view>

namespace vell::archive {

// Decodes bytes of text in one of the host's encodings.
using NameDecoder =
    std::function<std::u16string(std::string_view bytes, params::TextEncoding encoding)>;

// The name as it is listed. Names that say they are UTF-8 and are not come in `encoding` too: bytes
// that differ stay different then.
std::u16string decoded_name(const EntryInfo& entry, params::TextEncoding encoding,
                            const NameDecoder& decode);

// The name itself, or for a device's such as "aux.c" one with "_" behind its stem: "aux_.c".
std::u16string without_device_name(std::u16string_view name);

// The path of an entry below the target folder, names separated by "\", without one at its end.
// Characters that no file name can hold become "_", as do blanks before a separator and at the end;
// empty names and "." are left out, and devices' names are changed. Empty for a folder's entry of
// nothing else ("./"), which stands for the target folder itself. BadName when the name as stored
// in the archive, or what became of it, has a ".." between separators of either kind, a name of
// dots and blanks only, or a zero character, and for a file that has no name of its own.
Result<std::u16string> entry_path(const EntryInfo& entry, std::u16string name);

} // namespace vell::archive
