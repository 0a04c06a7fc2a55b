// A system of which only one folder may be touched: whatever reaches it for a path elsewhere is
// noted.
#pragma once

#include "tests/portable/fake_system.h"

namespace vell::test {

class WatchedSystem : public FakeSystem {
  public:
    static constexpr std::u16string_view allowed = u"C:\\in";

    std::vector<std::u16string> trespasses;

    // Whatever leads there, by its name or by a link.
    void watch(const NativePath& path) {
        if (is_outside(key_of(path.wide)) || is_outside(followed(key_of(path.wide))))
            trespasses.push_back(path.wide);
    }

    Result<std::unique_ptr<files::File>> open(const NativePath& path,
                                              files::Permission permission) override {
        watch(path);
        return FakeSystem::open(path, permission);
    }
    Result<std::unique_ptr<files::File>> open_new(const NativePath& path) override {
        watch(path);
        return FakeSystem::open_new(path);
    }
    Result<std::unique_ptr<files::File>> open_emptied(const NativePath& path) override {
        watch(path);
        return FakeSystem::open_emptied(path);
    }
    Result<void> create_new(const NativePath& path) override {
        watch(path);
        return FakeSystem::create_new(path);
    }
    files::ItemKind kind_of(const NativePath& path) override {
        const bool leads_there = allowed.starts_with(key_of(path.wide));
        if (!is_looking_ && !leads_there)
            watch(path);
        return FakeSystem::kind_of(path);
    }
    Result<void> copy(const NativePath& source, const NativePath& target,
                      files::Replace replace) override {
        watch(source);
        watch(target);
        return FakeSystem::copy(source, target, replace);
    }
    // A link itself may be renamed and removed.
    Result<void> rename(const NativePath& source, const NativePath& target,
                        files::Replace replace) override {
        watch_name(source);
        watch_name(target);
        return FakeSystem::rename(source, target, replace);
    }
    Result<void> replace(const NativePath& source, const NativePath& target) override {
        watch_name(source);
        watch(target);
        return FakeSystem::replace(source, target);
    }
    Result<void> remove(const NativePath& path) override {
        watch_name(path);
        return FakeSystem::remove(path);
    }
    Result<std::unique_ptr<files::FolderReader>, files::SystemError>
    open_folder(const std::u16string& path) override {
        watch(native(path));
        return FakeSystem::open_folder(path);
    }

    Result<void> create_folder(const NativePath& path) override {
        watch(path);
        return FakeSystem::create_folder(path);
    }
    Result<void> remove_folder(const NativePath& path) override {
        watch_name(path);
        return FakeSystem::remove_folder(path);
    }
    Result<void> move(const NativePath& source, const NativePath& target) override {
        watch_name(source);
        watch_name(target);
        return FakeSystem::move(source, target);
    }
    bool is_link(const NativePath& path) override {
        watch_name(path);
        return FakeSystem::is_link(path);
    }
    using FakeSystem::hold;
    Result<std::unique_ptr<files::HeldItem>> hold(const NativePath& path,
                                                  files::FollowLink follow) override {
        follow == files::FollowLink::Yes ? watch(path) : watch_name(path);
        return FakeSystem::hold(path, follow);
    }
    Result<void> for_each_below(const NativePath& path, const files::VisitItem& visit) override {
        watch(path);
        return FakeSystem::for_each_below(path, visit);
    }

    Result<std::uint32_t> attributes(const NativePath& path) override {
        watch(path);
        return FakeSystem::attributes(path);
    }
    Result<void> set_attributes(const NativePath& path, std::uint32_t attributes) override {
        watch(path);
        return FakeSystem::set_attributes(path, attributes);
    }
    Result<std::uint64_t> size(const NativePath& path) override {
        watch(path);
        return FakeSystem::size(path);
    }
    Result<bool> is_unused(const NativePath& path, files::Permission permission) override {
        watch(path);
        return FakeSystem::is_unused(path, permission);
    }
    Result<params::CalendarTime> time(const NativePath& path, files::ItemTime which) override {
        watch(path);
        return FakeSystem::time(path, which);
    }
    Result<void> set_times(const NativePath& path, const files::NewTimes& times) override {
        watch(path);
        return FakeSystem::set_times(path, times);
    }
    Result<std::u16string> type_name(const std::u16string& path, std::uint32_t,
                                     files::TypeBy by) override {
        if (by == files::TypeBy::Item)
            watch(native(path));
        return std::u16string(u"Kind");
    }
    Result<files::CodeSignature> code_signature(const NativePath& path) override {
        watch(path);
        if (FakeSystem::kind_of(path) == files::ItemKind::None)
            return Failure{ErrorCode::NotFound};
        return files::CodeSignature();
    }
    Result<pictures::Picture> shell_thumbnail(const NativePath& path, std::uint32_t) override {
        watch(path);
        return Failure{ErrorCode::NoPicture};
    }
    Result<pictures::Picture> icon(const NativePath& path, pictures::IconOf what,
                                   std::uint32_t) override {
        if (what == pictures::IconOf::Item)
            watch(path);
        if (what == pictures::IconOf::Item && FakeSystem::kind_of(path) == files::ItemKind::None)
            return Failure{ErrorCode::NotFound};
        return Failure{ErrorCode::NoPicture};
    }

    Result<files::VolumeInformation> information(const std::u16string& root) override {
        watch_disk(root);
        return files::VolumeInformation();
    }
    Result<files::DiskSpace> space(const std::u16string& root) override {
        watch_disk(root);
        return files::DiskSpace();
    }
    files::DiskType type_of(const std::u16string& root) override {
        watch_disk(root);
        return files::DiskType::Fixed;
    }
    std::uint32_t letters() override { return 0xFFFFFFF; }
    Result<void> connect(const files::ShareConnection& connection) override {
        trespasses.push_back(connection.share);
        return {};
    }
    Result<void> disconnect(const std::u16string& name, files::OpenFiles) override {
        trespasses.push_back(name);
        return {};
    }
    Result<void> eject(char16_t letter, files::OpenFiles) override {
        watch_disk(std::u16string{letter, u':', u'\\'});
        return {};
    }

    bool has_shell_operations() override { return true; }
    files::ShellOutcome shell_copy(const NativePath& folder, const NativePath& target,
                                   files::ShellMessages) override {
        watch(folder);
        watch(target);
        std::vector<NativePath> missing;
        for (NativePath at = target; FakeSystem::kind_of(at) == files::ItemKind::None;
             at = native(parent_of(at.wide)))
            missing.push_back(at);
        for (; !missing.empty(); missing.pop_back())
            add_folder(missing.back().wide);
        return {};
    }
    files::ShellOutcome shell_delete(const NativePath& folder, void*,
                                     files::ShellMessages) override {
        watch_name(folder);
        return {};
    }
    Result<std::unique_ptr<files::Digest>> new_digest(files::DigestAlgorithm) override {
        class Sum : public files::Digest {
            Result<void> add(std::span<const char>) override { return {}; }
            Result<std::vector<std::uint8_t>> finish() override {
                return std::vector<std::uint8_t>(16);
            }
        };
        return std::unique_ptr<files::Digest>(std::make_unique<Sum>());
    }
    Result<std::string> make(const files::ShellLink& link) override {
        watch(native(link.target));
        return std::string("link");
    }
    Result<void> launch(const files::LaunchRequest& request) override {
        watch(native(request.target));
        return {};
    }
    Result<void> reveal(const std::u16string& path) override {
        watch_name(native(path));
        return {};
    }
    Result<std::vector<std::u16string>> show(const files::FileDialog& dialog) override {
        if (!dialog.initial_folder.empty())
            watch(native(dialog.initial_folder));
        return Failure{ErrorCode::Cancelled};
    }

    // What a path leads to is found by a look at the way there, which is named inside.
    Result<std::u16string> of(const NativePath& path) override {
        watch_name(path);
        is_looking_ = true;
        auto final = FakeSystem::of(path);
        is_looking_ = false;
        return final;
    }

  private:
    static bool is_outside(std::u16string_view key) {
        return !key.starts_with(allowed) && !key.starts_with(u"T:\\VELLTEMP");
    }
    void watch_name(const NativePath& path) {
        if (is_outside(key_of(path.wide)))
            trespasses.push_back(path.wide);
    }
    void watch_disk(const std::u16string& root) {
        if (root != u"C:\\")
            trespasses.push_back(root);
    }

    bool is_looking_ = false;
};

} // namespace vell::test
