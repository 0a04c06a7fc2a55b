// What stays between calls: the default file and the default type.
#pragma once

#include "src/params/call.h"
#include "src/system/file_access.h"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace vell::files {

// One for the process; hosts call from several threads. Nothing is open between calls, so the
// default file is a path.
class Defaults {
  public:
    static constexpr std::size_t longest_type = 2000; // characters; what follows is ignored

    std::optional<NativePath> file() const;
    void set_file(NativePath path);
    void release_file();

    std::u16string type() const;
    void set_type(std::u16string_view type);

    void reset(); // neither a file nor a type

  private:
    mutable std::mutex mutex_;
    std::optional<NativePath> file_;
    std::u16string type_;
};

Defaults& defaults();

// What VlFile_SetDefaultType has set, for the file dialogs.
inline std::u16string default_file_types() {
    return defaults().type();
}

// VlFile_SetDefaultFileSpec( switches ; filePath ): the file of VlFile_SetContents and
// VlFile_AppendContents. A path that cannot be resolved leaves no default file at all.
Result<void> set_default_file(params::Call& call, System& system);

// VlFile_SetDefaultType( switches ; fileType ): the filter of the plug-in's file dialogs.
Result<void> set_default_type(params::Call& call, System& system);

// VlFile_SetDefaultCreator( switches ; creator ): nothing, since Windows knows no creators.
Result<void> set_default_creator(params::Call& call, System& system);

} // namespace vell::files
