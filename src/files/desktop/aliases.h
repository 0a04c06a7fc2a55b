// Aliases: files that lead to other files or folders, which Windows calls shortcuts and shell
// links. A file is one when its name ends with ".lnk".
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_CreateAlias( switches ; sourceFilePath ; destAliasFilePath ): makes an alias of a file or
// folder that exists; ".lnk" is appended to a name without it. "-OverwriteExisting" replaces a
// file, otherwise AlreadyExists. With "-Relative" the alias also knows the way from its folder to
// the source; DifferentVolumes when there is none. "-Arguments=", "-Description=", "-Icon=",
// "-WorkingFolder=", "-Minimize" and "-Maximize" are kept in it. What fails leaves nothing behind.
Result<void> create_alias(params::Call& call, System& system);

// VlFile_ResolveAlias( switches ; aliasPath ): the full path of the item that an alias, and every
// alias that it leads to, leads to; a folder's ends with "\". The path of what is no alias is the
// item's own. NotFound when the target is nowhere, or with "-ReturnStoredTarget" the path that the
// alias has. "-GetArguments", "-GetDescription", "-GetIcon" and "-GetWorkingFolder" give what the
// alias itself keeps. NotSupported when it leads to no file, CorruptStructure when it is damaged or
// leads back to itself.
Result<void> resolve_alias(params::Call& call, System& system);

} // namespace vell::files
