#include "src/policy/audit_file.h"

#include "src/base/number_text.h"

namespace vell::policy {

using files::File;
using files::NativePath;

AuditFile::AuditFile(files::FileSystem& files, const AuditSettings& settings)
    : files_(files), folder_(settings.folder), file_bytes_(settings.file_bytes),
      old_files_(settings.old_files) {}

// "VellFile.audit.jsonl", "VellFile.audit.1.jsonl" and so on.
NativePath AuditFile::path_of(std::uint32_t number) const {
    std::u16string path = folder_;
    if (!path.ends_with(u'\\'))
        path += u'\\';
    path += audit_file_name;
    if (number > 0) {
        const std::string text = to_text(std::uint64_t{number}) + ".";
        path.insert(path.rfind(u'.') + 1, std::u16string(text.begin(), text.end()));
    }
    return {std::move(path), std::nullopt};
}

// Nobody else writes meanwhile: another process of the host has a plug-in and lines of its own.
Result<std::unique_ptr<File>> AuditFile::open_at_end(std::uint64_t& size) {
    const NativePath path = path_of(0);
    auto file = files_.open(path, files::Permission::Write);
    if (!file && file.error() == ErrorCode::NotFound) {
        VELL_TRY(files_.create_new(path));
        file = files_.open(path, files::Permission::Write);
    }
    if (!file)
        return Failure{file.error()};
    size = VELL_TRY((*file)->size());
    VELL_TRY((*file)->seek(files::SeekFrom::End, 0));
    return file;
}

Result<void> AuditFile::rotate() {
    if (old_files_ == 0)
        return files_.remove(path_of(0));
    for (std::uint32_t number = old_files_; number > 0; --number) {
        const NativePath older = path_of(number - 1);
        if (files_.kind_of(older) == files::ItemKind::File)
            VELL_TRY(files_.rename(older, path_of(number), files::Replace::Yes));
    }
    return {};
}

Result<void> AuditFile::append(std::string_view lines) {
    std::uint64_t size = 0;
    std::unique_ptr<File> file = VELL_TRY(open_at_end(size));
    if (size > 0 && size + lines.size() > file_bytes_) {
        VELL_TRY(file->close());
        file.reset();
        VELL_TRY(rotate());
        file = VELL_TRY(open_at_end(size));
    }
    if (const Result<void> written = file->write(lines); !written) {
        // Half a line would be taken for one, and the whole is written again.
        if (file->seek(files::SeekFrom::Start, static_cast<std::int64_t>(size)))
            static_cast<void>(file->set_end_of_file());
        return written;
    }
    return file->close();
}

} // namespace vell::policy
