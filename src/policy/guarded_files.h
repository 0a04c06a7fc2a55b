// Files and what folders hold, as far as a policy allows.
#pragma once

#include "src/policy/path_guard.h"

namespace vell::policy {

class GuardedFiles : public files::FileSystem, public files::FolderSource {
  public:
    using NativePath = files::NativePath;
    using FilePointer = std::unique_ptr<files::File>;

    GuardedFiles(PathGuard& guard, System& system) : guard_(guard), system_(system) {}

    Result<FilePointer> open(const NativePath& path, files::Permission permission) override;
    Result<FilePointer> open_shared(const NativePath& path) override;
    Result<FilePointer> open_new(const NativePath& path) override;
    Result<FilePointer> open_to_write(const NativePath& path) override;
    Result<FilePointer> open_emptied(const NativePath& path) override;
    Result<void> create_new(const NativePath& path) override;
    files::ItemKind kind_of(const NativePath& path) override;
    bool is_same_file(const NativePath& a, const NativePath& b) override;
    Result<void> copy(const NativePath& source, const NativePath& target,
                      files::Replace replace) override;
    Result<void> rename(const NativePath& source, const NativePath& target,
                        files::Replace replace) override;
    Result<void> replace(const NativePath& source, const NativePath& target) override;
    Result<void> remove(const NativePath& path) override;
    Result<NativePath> temporary_name(std::u16string_view extension) override;
    Result<FilePointer> open_private(const NativePath& path, const NativePath& like) override;
    Result<FilePointer> open_temporary() override;

    Result<std::unique_ptr<files::FolderReader>, files::SystemError>
    open_folder(const std::u16string& path) override;

  private:
    files::FileSystem& inner() { return system_.files(); }
    Result<FilePointer> checked(Result<FilePointer> opened, const Place& place, Access access);
    Result<Place> place_to_compare(const NativePath& path);

    PathGuard& guard_;
    System& system_;
};

} // namespace vell::policy
