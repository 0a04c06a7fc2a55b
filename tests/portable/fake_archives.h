// The system below archives in memory: files of WritableFiles, folders, links and times.
#pragma once

#include "src/archive/archive_system.h"
#include "src/archive/zip_writer.h"
#include "tests/portable/fake_folders.h"
#include "tests/portable/writable_files.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vell::testing {

inline constexpr params::CalendarTime noon{2024, 2, 29, 12, 34, 56};

// Files and folders; paths of folders have no separator at their end.
class FilesAndFolders : public WritableFiles {
  public:
    std::set<std::u16string> folders;
    std::set<std::u16string> watched; // files that others open as soon as they are there

    Result<std::unique_ptr<files::File>> open(const files::NativePath& path,
                                              files::Permission permission) override {
        if (watched.contains(path.wide))
            return Failure{ErrorCode::Busy};
        return WritableFiles::open(path, permission);
    }
    files::ItemKind kind_of(const files::NativePath& path) override {
        std::u16string name = path.wide;
        if (name.ends_with(u'\\'))
            name.pop_back();
        return folders.contains(name) ? files::ItemKind::Folder : WritableFiles::kind_of(path);
    }
};

class FakeArchives : public archive::ArchiveSystem {
  public:
    FakeArchives() {
        listing_.generate = [this](const std::u16string& path) {
            return items_of(path);
        };
    }

    FilesAndFolders store;
    std::set<std::u16string> links; // items among the files and folders
    std::map<std::u16string, params::CalendarTime> times;
    ErrorCode folder_failure = ErrorCode::Ok; // of create_folder

    FilesAndFolders& files() override { return store; }
    files::FolderSource& folders() override { return listing_; }
    Result<files::NativePath> full_path(const files::NativePath& path) override { return path; }

    Result<std::unique_ptr<files::File>> open_shared(const files::NativePath& path) override {
        return store.open(path, files::Permission::Read);
    }
    Result<std::unique_ptr<files::File>> open_new(const files::NativePath& path) override {
        if (store.kind_of(path) != files::ItemKind::None)
            return Failure{ErrorCode::AlreadyExists};
        if (!store.folders.contains(parent(path.wide)))
            return Failure{ErrorCode::FolderNotFound};
        VELL_TRY(store.create_new(path));
        auto file = store.WritableFiles::open(path, files::Permission::Write);
        if (!file) // all in one step: nothing is there then
            static_cast<void>(store.remove(path));
        return file;
    }
    Result<std::unique_ptr<files::File>> open_emptied(const files::NativePath& path) override {
        if (store.kind_of(path) == files::ItemKind::Folder)
            return Failure{ErrorCode::Busy};
        if (!store.folders.contains(parent(path.wide)))
            return Failure{ErrorCode::FolderNotFound};
        if (store.kind_of(path) == files::ItemKind::None)
            VELL_TRY(store.create_new(path));
        auto file = VELL_TRY(store.open(path, files::Permission::Write));
        VELL_TRY(file->set_end_of_file());
        return file;
    }
    Result<void> create_folder(const files::NativePath& path) override {
        if (folder_failure != ErrorCode::Ok)
            return Failure{folder_failure};
        if (store.kind_of(path) != files::ItemKind::None)
            return Failure{ErrorCode::AlreadyExists};
        if (!store.folders.contains(parent(path.wide)))
            return Failure{ErrorCode::FolderNotFound};
        store.folders.insert(path.wide);
        return {};
    }
    bool is_link(const files::NativePath& path) override { return links.contains(path.wide); }
    params::CalendarTime now() override { return noon; }
    Result<params::CalendarTime> modification_time(const files::NativePath&) override {
        return noon;
    }
    Result<void> set_times(const files::NativePath& path,
                           const params::CalendarTime& local) override {
        times[path.wide] = local;
        return {};
    }

  private:
    Entries items_of(const std::u16string& path) const {
        Entries entries{folder(u"."), folder(u"..")};
        const auto add = [&](const std::u16string& item, bool is_folder) {
            if (parent(item) + u"\\" != path)
                return;
            FolderEntry& entry = entries.emplace_back(file(item.substr(path.size())));
            entry.is_folder = is_folder;
            entry.is_hidden = entry.name.starts_with(u"hidden");
            entry.is_link = links.contains(item);
        };
        for (const std::u16string& item : store.folders)
            add(item, true);
        for (const auto& item : store.contents())
            add(item.first, false);
        return entries;
    }
    static std::u16string parent(const std::u16string& path) {
        return path.substr(0, std::min(path.rfind(u'\\'), path.size()));
    }

    FakeFolders listing_;
};

inline archive::NativePath native(std::u16string_view path) {
    return {std::u16string(path), std::nullopt};
}

} // namespace vell::testing
