#include "src/files/contents/rewriting.h"

#include "src/base/utf8.h"
#include "src/files/contents/temporary_copy.h"
#include "src/files/contents/write_turn.h"
#include "src/files/tree/item_names.h"

#include <exception>

namespace vell::files {
namespace {

using params::Call;

// A copy that stays, and is named in the debug log, unless it is removed.
class KeptCopy {
  public:
    KeptCopy(Call& call, FileSystem& files, NativePath path)
        : call_(call), files_(files), path_(std::move(path)) {}
    KeptCopy(const KeptCopy&) = delete;
    KeptCopy& operator=(const KeptCopy&) = delete;
    ~KeptCopy() {
        if (removed_)
            return;
        try {
            call_.debug_note("The temporary copy is left at " + utf8_from_utf16(path_.wide));
        } catch (const std::exception&) {
            // The copy itself is what counts.
        }
    }

    const NativePath& path() const { return path_; }
    Result<void> remove() {
        VELL_TRY(files_.remove(path_));
        removed_ = true;
        return {};
    }

  private:
    Call& call_;
    FileSystem& files_;
    NativePath path_;
    bool removed_ = false;
};

Result<void> rewrite_in_place(Call& call, FileSystem& files, const NativePath& path,
                              const RewritingWork& work) {
    const WriteTurn turn = VELL_TRY(WriteTurn::take(path));
    // A file that may not be written is not worth a copy.
    VELL_TRY(check_writable(files, path));
    KeptCopy copy(call, files, VELL_TRY(make_temporary_copy(files, path)));
    {
        const std::unique_ptr<File> from = VELL_TRY(files.open(copy.path(), Permission::Read));
        const std::unique_ptr<File> to = VELL_TRY(files.open(path, Permission::Write));
        const std::uint64_t length = VELL_TRY(to->size());
        if (VELL_TRY(from->size()) != length)
            return Failure{ErrorCode::Busy}; // somebody else has changed it in between
        // Written over, a file takes half of the time that one takes which was emptied before. What
        // is left of the old bytes goes whether the work is done or not.
        const Result<void> done = work(*from, *to);
        const Result<void> cut = to->set_end_of_file();
        VELL_TRY(done);
        VELL_TRY(cut);
        VELL_TRY(to->close());
    }
    return copy.remove();
}

Result<void> write_new(FileSystem& files, File& from, const NativePath& path,
                       const RewritingWork& work) {
    const std::unique_ptr<File> to = VELL_TRY(files.open(path, Permission::Write));
    VELL_TRY(work(from, *to));
    return to->close();
}

Result<void> rewrite_to_new(FileSystem& files, const RewrittenFile& file,
                            const RewritingWork& work) {
    const NativePath& destination = *file.destination;
    const WriteTurn turn = VELL_TRY(WriteTurn::take(destination));
    const std::unique_ptr<File> from = VELL_TRY(files.open(file.source, Permission::Read));
    VELL_TRY(files.create_new(destination));
    UnfinishedFile unfinished(files, destination);
    VELL_TRY(write_new(files, *from, destination, work));
    unfinished.keep();
    return {};
}

} // namespace

Result<RewrittenFile> rewritten_file(Call& call, FileSystem& files, std::size_t source_index,
                                     std::size_t destination_index) {
    RewrittenFile file;
    file.source = VELL_TRY(call.path(source_index));
    const std::u16string destination = call.text(destination_index);
    if (!destination.empty() && destination != call.text(source_index))
        file.destination = VELL_TRY(path_to_make(files, file.source, call.path(destination_index)));
    return file;
}

Result<void> rewrite(Call& call, FileSystem& files, const RewrittenFile& file,
                     const RewritingWork& work) {
    return file.destination ? rewrite_to_new(files, file, work)
                            : rewrite_in_place(call, files, file.source, work);
}

} // namespace vell::files
