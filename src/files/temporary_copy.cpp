#include "src/files/temporary_copy.h"

namespace vell::files {

Result<NativePath> make_temporary_copy(FileSystem& files, const NativePath& source,
                                       std::u16string_view extension) {
    NativePath copy = VELL_TRY(files.temporary_name(extension));
    VELL_TRY(files.copy(source, copy, Replace::Yes));
    return copy;
}

} // namespace vell::files
