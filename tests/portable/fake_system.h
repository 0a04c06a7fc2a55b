// A system that exists only in a test. It knows no item, no disk and no user, and does nothing: a
// test overrides what its functions ask for, or brings files and folders that know something.
#pragma once

#include "src/system/system.h"

namespace vell::testing {

inline constexpr params::CalendarTime noon{2024, 2, 29, 12, 34, 56};

// All parts in one, whose names do not meet.
class FakeSystem : public System,
                   public files::TreeSystem,
                   public files::ItemProperties,
                   public files::Places,
                   public files::DiskSystem,
                   public files::ShellLinks,
                   public files::Desktop,
                   public files::Commands,
                   public files::Logs,
                   public files::Clock {
  public:
    using NativePath = files::NativePath;

    FakeSystem() = default;
    FakeSystem(files::FileSystem& files, files::FolderSource& folders)
        : files_(&files), folders_(&folders) {}

    files::FileSystem& files() override { return files_ ? *files_ : throw NotThere(); }
    files::FolderSource& folders() override { return folders_ ? *folders_ : throw NotThere(); }
    files::TreeSystem& tree() override { return *this; }
    files::ItemProperties& properties() override { return *this; }
    files::Places& places() override { return *this; }
    files::DiskSystem& disks() override { return *this; }
    files::ShellLinks& links() override { return *this; }
    files::Desktop& desktop() override { return *this; }
    files::Commands& commands() override { return *this; }
    files::Clock& clock() override { return *this; }
    files::Logs& logs() override { return *this; }
    Result<std::unique_ptr<files::Digest>> new_digest(files::DigestAlgorithm) override {
        return nothing;
    }
    Result<void> read_pdf_text(const NativePath&, const params::ByteSink&,
                               std::vector<std::string>&) override {
        return nothing;
    }

    // TreeSystem
    Result<std::u16string> absolute_path(const std::u16string& path) override { return path; }
    bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) override {
        return a == b;
    }
    void fold_case(std::u16string&) override {}
    bool on_same_volume(const NativePath&, const NativePath&) override { return true; }
    Result<void> create_folder(const NativePath&) override { return nothing; }
    Result<void> remove_folder(const NativePath&) override { return nothing; }
    Result<void> move(const NativePath&, const NativePath&) override { return nothing; }
    bool is_link(const NativePath&) override { return false; }
    Result<void> for_each_below(const NativePath&, const files::VisitItem&) override {
        return nothing;
    }

    // ItemProperties
    Result<std::uint32_t> attributes(const NativePath&) override { return not_found; }
    Result<void> set_attributes(const NativePath&, std::uint32_t) override { return not_found; }
    Result<std::uint64_t> size(const NativePath&) override { return not_found; }
    Result<bool> is_unused(const NativePath&, files::Permission) override { return not_found; }
    Result<params::CalendarTime> time(const NativePath&, files::ItemTime) override {
        return not_found;
    }
    Result<void> set_times(const NativePath&, const files::NewTimes&) override { return not_found; }
    Result<std::u16string> type_name(const std::u16string&, std::uint32_t, files::TypeBy) override {
        return nothing;
    }
    Result<files::CodeSignature> code_signature(const NativePath&) override { return not_found; }

    // Places
    Result<std::u16string> program_path() override { return nothing; }
    Result<std::u16string> special_folder(files::SpecialFolder, files::MakeFolder) override {
        return nothing;
    }

    // DiskSystem
    std::uint32_t letters() override { return 0; }
    files::DiskType type_of(const std::u16string&) override { return files::DiskType::None; }
    Result<files::VolumeInformation> information(const std::u16string&) override { return nothing; }
    Result<files::DiskSpace> space(const std::u16string&) override { return nothing; }
    std::u16string share_of(char16_t) override { return {}; }
    char16_t system_letter() override { return u'C'; }
    Result<void> connect(const files::ShareConnection&) override { return nothing; }
    Result<void> disconnect(const std::u16string&, files::OpenFiles) override { return nothing; }
    Result<void> eject(char16_t, files::OpenFiles) override { return nothing; }

    // ShellLinks
    Result<std::string> make(const files::ShellLink&) override { return nothing; }
    Result<files::ShellLink> read(std::string_view) override { return nothing; }
    std::u16string track(std::string_view) override { return {}; }

    // Desktop
    bool is_visible() override { return true; }
    void* main_window(std::u16string_view) override { return nullptr; }
    void inform(void*, const std::u16string&, const std::u16string&) override {}
    Result<void> launch(const files::LaunchRequest&) override { return nothing; }
    Result<void> reveal(const std::u16string&) override { return nothing; }
    Result<void> bring_to_front(void*) override { return nothing; }
    Result<std::vector<std::u16string>> show(const files::FileDialog&) override {
        return Failure{ErrorCode::Cancelled};
    }
    bool confirm(void*, const std::u16string&) override { return false; }
    Result<std::vector<std::u16string>> preferred_languages() override { return nothing; }
    bool has_shell_operations() override { return false; }
    files::ShellOutcome shell_copy(const NativePath&, const NativePath&,
                                   files::ShellMessages) override {
        return {ErrorCode::NotAvailable, false};
    }
    files::ShellOutcome shell_delete(const NativePath&, void*, files::ShellMessages) override {
        return {ErrorCode::NotAvailable, false};
    }

    // Commands
    Result<std::unique_ptr<files::RunningCommand>> start(const std::u16string&,
                                                         const files::CommandSettings&) override {
        return nothing;
    }

    // Logs
    void append(files::LogChannel, files::LogFolder, std::string_view, std::string_view) override {}
    std::unique_ptr<files::OverflowFile> new_overflow_file() override { return nullptr; }

    // Clock
    std::uint64_t milliseconds() override { return 4'294'967'295u; }
    params::CalendarTime local_time() override { return noon; }

  private:
    struct NotThere {}; // a test that needs files or folders brings them
    static constexpr Failure<ErrorCode> nothing{ErrorCode::NotAvailable};
    static constexpr Failure<ErrorCode> not_found{ErrorCode::NotFound};

    files::FileSystem* files_ = nullptr;
    files::FolderSource* folders_ = nullptr;
};

} // namespace vell::testing
