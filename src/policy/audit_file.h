// The files of the audit log: one that lines are added to, and older ones beside it.
#pragma once

#include "src/policy/policy.h"
#include "src/system/file_access.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vell::policy {

inline constexpr std::u16string_view audit_file_name = u"VellFile.audit.jsonl";

class AuditFile {
  public:
    AuditFile(files::FileSystem& files, const AuditSettings& settings);

    // Adds whole lines; when the file would grow beyond its size, it becomes the first of the older
    // ones, and the last of those goes. A failure has written nothing, as far as the disk tells.
    Result<void> append(std::string_view lines);

  private:
    files::NativePath path_of(std::uint32_t number) const; // 0: the one that is written
    Result<std::unique_ptr<files::File>> open_at_end(std::uint64_t& size);
    Result<void> rotate();

    files::FileSystem& files_;
    const std::u16string folder_;
    const std::uint64_t file_bytes_;
    const std::uint32_t old_files_;
};

} // namespace vell::policy
