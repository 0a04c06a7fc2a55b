#include "src/files/contents/temporary_copy.h"

#include "src/base/utf8.h"
#include "src/files/contents/blocks.h"
#include "src/files/contents/write_turn.h"

#include <exception>

namespace vell::files {
namespace {

Result<void> fill(FileSystem& files, const NativePath& path,
                  const std::function<Result<void>(File&)>& write) {
    const std::unique_ptr<File> file = VELL_TRY(files.open(path, Permission::Write));
    VELL_TRY(write(*file));
    return file->close();
}

} // namespace

UnfinishedFile::~UnfinishedFile() {
    if (kept_)
        return;
    try {
        static_cast<void>(files_.remove(path_));
    } catch (const std::exception&) {
        // What made the work end is the failure to report, not this one.
    }
}

Result<NativePath> make_temporary_copy(FileSystem& files, const NativePath& source,
                                       std::u16string_view extension) {
    NativePath path = VELL_TRY(files.temporary_name(extension));
    const std::unique_ptr<File> from = VELL_TRY(files.open(source, Permission::Read));
    const std::unique_ptr<File> to = VELL_TRY(files.open_private(path, source));
    UnfinishedFile unfinished(files, path);
    VELL_TRY(Copier().copy_rest(*from, *to));
    VELL_TRY(to->close());
    unfinished.keep();
    return path;
}

Result<NativePath> name_beside(FileSystem& files, const NativePath& target) {
    constexpr std::u16string_view ends_of_folders = u"\\/:";
    const std::u16string temporary = VELL_TRY(files.temporary_name({})).wide;
    // npos + 1 is 0: a bare name stands in no folder that the path names.
    const std::size_t folder_length = target.wide.find_last_of(ends_of_folders) + 1;
    return NativePath{target.wide.substr(0, folder_length) +
                          temporary.substr(temporary.find_last_of(ends_of_folders) + 1),
                      std::nullopt};
}

Result<void> check_writable(FileSystem& files, const NativePath& path) {
    const std::unique_ptr<File> file = VELL_TRY(files.open(path, Permission::Write));
    return file->close();
}

Result<void> write_whole_file(params::Call& call, FileSystem& files, const NativePath& target,
                              Replace replace, const std::function<Result<void>(File&)>& write) {
    const WriteTurn turn = VELL_TRY(WriteTurn::take(target));
    const bool replaces = replace == Replace::Yes && files.kind_of(target) != ItemKind::None;
    if (replaces)
        VELL_TRY(check_writable(files, target));
    const NativePath beside = VELL_TRY(name_beside(files, target));
    VELL_TRY(files.create_new(beside));
    UnfinishedFile unfinished(files, beside);
    VELL_TRY(fill(files, beside, write));
    const Result<void> done =
        replaces ? files.replace(beside, target) : files.rename(beside, target, replace);
    if (done) {
        unfinished.keep();
    } else if (replaces && files.kind_of(target) == ItemKind::None) {
        unfinished.keep(); // nothing else is left of the file
        call.debug_note("The new contents are left at " + utf8_from_utf16(beside.wide));
    }
    return done;
}

} // namespace vell::files
