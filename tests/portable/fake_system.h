// A system that exists only in a test: items in memory, and beyond them no disk, no program and no
// user. A test overrides what its functions ask of those.
#pragma once

#include "tests/portable/fake_items.h"

namespace vell::test {

// All parts in one, whose names do not meet.
class FakeSystem : public System,
                   public FakeItems,
                   public files::TreeSystem,
                   public files::ItemProperties,
                   public files::FinalPaths,
                   public files::Places,
                   public files::DiskSystem,
                   public files::ShellLinks,
                   public files::Desktop,
                   public files::Commands,
                   public files::Logs,
                   public pictures::PictureSystem,
                   public files::Clock {
  public:
    using NativePath = files::NativePath;

    int walks = 0; // through what is below a folder

    files::FileSystem& files() override { return *this; }
    files::FolderSource& folders() override { return *this; }
    files::TreeSystem& tree() override { return *this; }
    files::ItemProperties& properties() override { return *this; }
    files::FinalPaths& final_paths() override { return *this; }
    files::Places& places() override { return *this; }
    files::DiskSystem& disks() override { return *this; }
    files::ShellLinks& links() override { return *this; }
    files::Desktop& desktop() override { return *this; }
    files::Commands& commands() override { return *this; }
    files::Clock& clock() override { return *this; }
    pictures::PictureSystem& pictures() override { return *this; }
    files::Logs& logs() override { return *this; }
    Made<files::Digest> new_digest(files::DigestAlgorithm) override { return nothing; }
    Result<void> read_pdf_text(ByteSource&, const params::ByteSink&,
                               std::vector<std::string>&) override {
        return nothing;
    }
    std::vector<LinkedLibrary> linked_libraries() override {
        return {{"Counter", "1.2.3"}, {"Drawer", "4.5"}};
    }

    // TreeSystem
    Result<std::u16string> absolute_path(const std::u16string& path) override {
        std::u16string full = path;
        std::ranges::replace(full, u'/', u'\\');
        return full;
    }
    bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) override {
        return vell::equal_ignoring_case(a, b);
    }
    void fold_case(std::u16string& name) override {
        for (char16_t& unit : name)
            if (fold_ascii(unit) != unit || unit == u'\u00C4')
                unit = static_cast<char16_t>(unit + 32);
    }
    bool on_same_volume(const NativePath& a, const NativePath& b) override {
        return a.wide.substr(0, a.wide.find(u':')) == b.wide.substr(0, b.wide.find(u':'));
    }
    Result<void> create_folder(const NativePath& path) override {
        ++looks;
        return make_folder_at(followed(key_of(path.wide), files::FollowLink::No));
    }
    Result<void> remove_folder(const NativePath& path) override {
        VELL_TRY(count_operation());
        const std::u16string inside = key_of(path.wide) + u'\\';
        const auto next = items_.upper_bound(inside);
        if (!is_link(path) && next != items_.end() && next->first.starts_with(inside))
            return Failure{ErrorCode::Busy};
        erase(path.wide);
        return {};
    }
    Result<void> move(const NativePath& source, const NativePath& target) override {
        VELL_TRY(count_operation());
        VELL_TRY(check_transfer(source, target, files::Replace::No));
        const std::u16string from = key_of(source.wide);
        for (const auto& [path, item] : std::map(items_))
            if (path == from || path.starts_with(from + u'\\')) {
                auto moved = items_.extract(path);
                moved.key() = key_of(target.wide) + path.substr(from.size());
                items_.insert(std::move(moved));
            }
        return {};
    }
    bool is_link(const NativePath& path) override {
        step();
        const FakeItem* item = find(path.wide);
        return item && item->link;
    }
    Made<files::HeldItem> hold(const NativePath& path, files::FollowLink follow) override {
        return hold_at(followed(key_of(path.wide), follow), follow);
    }
    std::size_t most_held = 0; // at a time
    Result<void> for_each_below(const NativePath& path, const files::VisitItem& visit) override {
        ++walks;
        for (const auto& [key, item] : std::map(items_))
            if (key.starts_with(key_of(path.wide) + u'\\'))
                VELL_TRY(visit({native(key), kind_of(native(key)), item.link.has_value()}));
        return {};
    }

    // ItemProperties
    Result<std::uint32_t> attributes(const NativePath& path) override {
        return VELL_TRY(existing(path.wide))->attributes;
    }
    Result<void> set_attributes(const NativePath& path, std::uint32_t attributes) override {
        VELL_TRY(existing(path.wide))->attributes = attributes;
        return {};
    }
    Result<std::uint64_t> size(const NativePath& path) override {
        return VELL_TRY(existing(path.wide))->end();
    }
    Result<bool> is_unused(const NativePath& path, files::Permission) override {
        VELL_TRY(existing(path.wide));
        return !open_.contains(key_of(path.wide));
    }
    Result<params::CalendarTime> time(const NativePath& path, files::ItemTime which) override {
        const FakeItem* item = VELL_TRY(existing(path.wide));
        return which == files::ItemTime::Created    ? item->created
               : which == files::ItemTime::Accessed ? item->accessed
                                                    : item->modified;
    }
    // Where it is UTC.
    Result<params::CalendarTime> local_time_of(files::FileTime time) override {
        using namespace std::chrono;
        const sys_seconds moment =
            year_1601 + seconds(static_cast<std::int64_t>(time) / units_per_second);
        const year_month_day date(floor<days>(moment));
        const hh_mm_ss clock(moment - floor<days>(moment));
        return params::CalendarTime{static_cast<int>(date.year()),
                                    static_cast<int>(static_cast<unsigned>(date.month())),
                                    static_cast<int>(static_cast<unsigned>(date.day())),
                                    static_cast<int>(clock.hours().count()),
                                    static_cast<int>(clock.minutes().count()),
                                    static_cast<int>(clock.seconds().count())};
    }
    Result<void> set_times(const NativePath& path, const files::NewTimes& times) override {
        set_item_times(*VELL_TRY(existing(path.wide)), times);
        return {};
    }
    Result<std::u16string> type_name(const std::u16string&, std::uint32_t, files::TypeBy) override {
        return nothing;
    }
    Result<files::CodeSignature> code_signature(const NativePath&) override { return not_found; }

    // FinalPaths
    Result<std::u16string> of(const NativePath& path) override {
        const std::u16string key = followed(key_of(path.wide));
        if (kind_of(native(key)) == files::ItemKind::None)
            return not_found;
        return key.ends_with(u':') ? key + u'\\' : key;
    }
    Result<files::HeldFolder> hold(const NativePath& folder) override {
        std::u16string path = VELL_TRY(of(folder));
        return files::HeldFolder{std::move(path), nullptr};
    }

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
    Made<files::RunningCommand> start(const std::u16string&,
                                      const files::CommandSettings&) override {
        return nothing;
    }

    // Logs
    void append(files::LogChannel, files::LogFolder, std::string_view, std::string_view) override {}
    std::unique_ptr<files::OverflowFile> new_overflow_file() override { return nullptr; }

    // PictureSystem
    Made<pictures::PictureRows> decode(ByteSource&, std::uint32_t) override { return nothing; }
    Result<pictures::Picture> pdf_page(ByteSource&, const pictures::PdfPageRequest&,
                                       std::vector<std::string>&) override {
        return nothing;
    }
    Result<pictures::Picture> shell_thumbnail(const NativePath&, std::uint32_t) override {
        return Failure{ErrorCode::NoPicture};
    }
    Result<pictures::Picture> icon(const NativePath&, pictures::IconOf, std::uint32_t) override {
        return nothing;
    }

    // Clock
    std::uint64_t milliseconds() override { return 4'294'967'295u; }
    params::CalendarTime local_time() override { return noon; }

  private:
    class Held : public files::HeldItem {
      public:
        Held(FakeSystem& system, std::u16string key, files::FollowLink follow)
            : system_(system), key_(std::move(key)), is_folder_(system.is_folder(key_)) {
            const FakeItem* item = system.find(key_);
            is_link_ = item && item->link && follow == files::FollowLink::No;
            system_.held_.insert(key_);
            system_.most_held = std::max(system_.most_held, system_.held_.size());
        }
        ~Held() override { system_.held_.erase(system_.held_.find(key_)); }

        files::ItemKind kind() const override {
            return is_folder_ ? files::ItemKind::Folder : files::ItemKind::File;
        }
        bool is_link() const override { return is_link_; }
        Made<files::HeldItem> hold(std::u16string_view name) override {
            return system_.hold_at(at(name), files::FollowLink::No);
        }
        Made<files::HeldItem> make_folder(std::u16string_view name) override {
            VELL_TRY(system_.make_folder_at(at(name)));
            return system_.held(at(name), files::FollowLink::No);
        }
        Made<files::HeldFile> open_new(std::u16string_view name) override {
            return system_.open_new_at(at(name));
        }
        Made<files::HeldFile> open_emptied(std::u16string_view name) override {
            return system_.open_emptied_at(at(name));
        }

      private:
        std::u16string at(std::u16string_view name) const {
            return std::u16string(key_).append(u"\\").append(name);
        }

        FakeSystem& system_;
        std::u16string key_;
        bool is_folder_;
        bool is_link_;
    };

    std::unique_ptr<files::HeldItem> held(const std::u16string& key, files::FollowLink follow) {
        return std::make_unique<Held>(*this, key, follow);
    }
    Made<files::HeldItem> hold_at(const std::u16string& key, files::FollowLink follow) {
        step();
        ++looks;
        if (!find(key) && !is_folder(key))
            return not_found;
        return held(key, follow);
    }
    Result<void> make_folder_at(const std::u16string& key) {
        VELL_TRY(count_operation());
        VELL_TRY(check_free(native(key)));
        add_folder(key);
        return {};
    }

    static constexpr Failure<ErrorCode> nothing{ErrorCode::NotAvailable};
    static constexpr Failure<ErrorCode> not_found{ErrorCode::NotFound};
};

} // namespace vell::test
