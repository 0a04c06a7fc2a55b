// The tree of folders and the properties of items, as far as a policy allows.
#pragma once

#include "src/policy/path_guard.h"

namespace vell::policy {

class GuardedTree : public files::TreeSystem, public files::FinalPaths {
  public:
    using NativePath = files::NativePath;

    GuardedTree(PathGuard& guard, System& system) : guard_(guard), system_(system) {}

    Result<std::u16string> absolute_path(const std::u16string& path) override;
    bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) override;
    void fold_case(std::u16string& name) override;
    bool on_same_volume(const NativePath& a, const NativePath& b) override;
    Result<void> create_folder(const NativePath& path) override;
    Result<void> remove_folder(const NativePath& path) override;
    Result<void> move(const NativePath& source, const NativePath& target) override;
    bool is_link(const NativePath& path) override;
    Result<std::unique_ptr<files::HeldItem>> hold(const NativePath& path,
                                                  files::FollowLink follow) override;
    Result<void> for_each_below(const NativePath& folder, const files::VisitItem& visit) override;

    Result<std::u16string> of(const NativePath& path) override;
    Result<files::HeldFolder> hold(const NativePath& folder) override;

  private:
    files::TreeSystem& inner() { return system_.tree(); }

    PathGuard& guard_;
    System& system_;
};

class GuardedProperties : public files::ItemProperties {
  public:
    using NativePath = files::NativePath;

    GuardedProperties(PathGuard& guard, System& system) : guard_(guard), system_(system) {}

    Result<std::uint32_t> attributes(const NativePath& path) override;
    Result<void> set_attributes(const NativePath& path, std::uint32_t attributes) override;
    Result<std::uint64_t> size(const NativePath& path) override;
    Result<bool> is_unused(const NativePath& path, files::Permission permission) override;
    Result<params::CalendarTime> time(const NativePath& path, files::ItemTime which) override;
    Result<params::CalendarTime> local_time_of(files::FileTime time) override;
    Result<void> set_times(const NativePath& path, const files::NewTimes& times) override;
    Result<std::u16string> type_name(const std::u16string& path, std::uint32_t attributes,
                                     files::TypeBy by) override;
    Result<files::CodeSignature> code_signature(const NativePath& path) override;

  private:
    files::ItemProperties& inner() { return system_.properties(); }

    PathGuard& guard_;
    System& system_;
};

} // namespace vell::policy
