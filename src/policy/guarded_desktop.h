// What the user sees, where things are, disks and shell links, as far as a policy allows.
#pragma once

#include "src/policy/path_guard.h"

namespace vell::policy {

class GuardedDesktop : public files::Desktop {
  public:
    using NativePath = files::NativePath;

    GuardedDesktop(PathGuard& guard, System& system) : guard_(guard), system_(system) {}

    bool is_visible() override { return inner().is_visible(); }
    void* main_window(std::u16string_view class_name) override {
        return inner().main_window(class_name);
    }
    Result<void> launch(const files::LaunchRequest& request) override;
    Result<void> reveal(const std::u16string& path) override;
    Result<void> bring_to_front(void* window) override { return inner().bring_to_front(window); }
    Result<std::vector<std::u16string>> show(const files::FileDialog& dialog) override;
    bool confirm(void* owner, const std::u16string& question) override {
        return inner().confirm(owner, question);
    }
    void inform(void* owner, const std::u16string& title, const std::u16string& text) override {
        inner().inform(owner, title, text);
    }
    Result<std::vector<std::u16string>> preferred_languages() override {
        return inner().preferred_languages();
    }
    bool has_shell_operations() override { return inner().has_shell_operations(); }
    files::ShellOutcome shell_copy(const NativePath& folder, const NativePath& target,
                                   files::ShellMessages messages) override;
    files::ShellOutcome shell_delete(const NativePath& folder, void* owner,
                                     files::ShellMessages messages) override;

  private:
    files::Desktop& inner() { return system_.desktop(); }
    Result<void> check_links_below(const NativePath& folder);
    Result<void> make_folder(const NativePath& folder);
    Result<Place> place_of_copy(const NativePath& target);

    PathGuard& guard_;
    System& system_;
};

class GuardedPlaces : public files::Places, public files::ShellLinks {
  public:
    GuardedPlaces(PathGuard& guard, System& system) : guard_(guard), system_(system) {}

    Result<std::u16string> program_path() override { return system_.places().program_path(); }
    Result<std::u16string> special_folder(files::SpecialFolder folder,
                                          files::MakeFolder make) override;

    Result<std::string> make(const files::ShellLink& link) override;
    Result<files::ShellLink> read(std::string_view bytes) override {
        return system_.links().read(bytes);
    }
    std::u16string track(std::string_view bytes) override;

  private:
    PathGuard& guard_;
    System& system_;
};

// Disks without a root on them are not there.
class GuardedDisks : public files::DiskSystem {
  public:
    GuardedDisks(PathGuard& guard, System& system) : guard_(guard), system_(system) {}

    std::uint32_t letters() override;
    files::DiskType type_of(const std::u16string& root) override;
    Result<files::VolumeInformation> information(const std::u16string& root) override;
    Result<files::DiskSpace> space(const std::u16string& root) override;
    std::u16string share_of(char16_t letter) override;
    char16_t system_letter() override { return inner().system_letter(); }
    Result<void> connect(const files::ShareConnection& connection) override;
    Result<void> disconnect(const std::u16string& name, files::OpenFiles open_files) override;
    Result<void> eject(char16_t letter, files::OpenFiles open_files) override;

  private:
    files::DiskSystem& inner() { return system_.disks(); }
    bool allows(const std::u16string& root);

    PathGuard& guard_;
    System& system_;
};

} // namespace vell::policy
