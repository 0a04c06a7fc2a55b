// The system below archives in memory: files of WritableFiles, folders, links and times.
#pragma once

#include "src/archive/zip_writer.h"
#include "tests/portable/fake_folders.h"
#include "tests/portable/writable_files.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vell::testing {

inline std::u16string parent_of(const std::u16string& path) {
    return path.substr(0, std::min(path.rfind(u'\\'), path.size()));
}

// Files and folders; paths of folders have no separator at their end.
class FilesAndFolders : public WritableFiles {
  public:
    std::set<std::u16string> folders;
    files::FileSystem* shared = nullptr; // has the files that are opened as shared ones
    std::set<std::u16string> watched;    // files that others open as soon as they are there

    Result<std::unique_ptr<files::File>> open(const files::NativePath& path,
                                              files::Permission permission) override {
        if (watched.contains(path.wide))
            return Failure{ErrorCode::Busy};
        return WritableFiles::open(path, permission);
    }
    Result<std::unique_ptr<files::File>> open_shared(const files::NativePath& path) override {
        if (shared)
            return shared->open(path, files::Permission::Read);
        return WritableFiles::open_shared(path);
    }
    Result<std::unique_ptr<files::File>> open_new(const files::NativePath& path) override {
        if (kind_of(path) != files::ItemKind::None)
            return Failure{ErrorCode::AlreadyExists};
        if (!folders.contains(parent_of(path.wide)))
            return Failure{ErrorCode::FolderNotFound};
        VELL_TRY(create_new(path));
        auto file = WritableFiles::open(path, files::Permission::Write);
        if (!file) // all in one step: nothing is there then
            static_cast<void>(remove(path));
        return file;
    }
    Result<std::unique_ptr<files::File>> open_emptied(const files::NativePath& path) override {
        if (kind_of(path) == files::ItemKind::Folder)
            return Failure{ErrorCode::Busy};
        if (!folders.contains(parent_of(path.wide)))
            return Failure{ErrorCode::FolderNotFound};
        return WritableFiles::open_emptied(path);
    }
    files::ItemKind kind_of(const files::NativePath& path) override {
        std::u16string name = path.wide;
        if (name.ends_with(u'\\'))
            name.pop_back();
        return folders.contains(name) ? files::ItemKind::Folder : WritableFiles::kind_of(path);
    }
};

class FakeArchives : public FakeSystem {
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

    files::FileSystem& files() override { return store; }
    files::FolderSource& folders() override { return listing_; }

    Result<void> create_folder(const NativePath& path) override {
        if (folder_failure != ErrorCode::Ok)
            return Failure{folder_failure};
        if (store.kind_of(path) != files::ItemKind::None)
            return Failure{ErrorCode::AlreadyExists};
        if (!store.folders.contains(parent_of(path.wide)))
            return Failure{ErrorCode::FolderNotFound};
        store.folders.insert(path.wide);
        return {};
    }
    bool is_link(const NativePath& path) override { return links.contains(path.wide); }
    Result<params::CalendarTime> time(const NativePath&, files::ItemTime) override { return noon; }
    Result<void> set_times(const NativePath& path, const files::NewTimes& given) override {
        times[path.wide] = given.modified.value();
        return {};
    }

  private:
    Entries items_of(const std::u16string& path) const {
        Entries entries{folder(u"."), folder(u"..")};
        const auto add = [&](const std::u16string& item, bool is_folder) {
            if (parent_of(item) + u"\\" != path)
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
    FakeFolders listing_;
};

inline files::NativePath native(std::u16string_view path) {
    return {std::u16string(path), std::nullopt};
}

} // namespace vell::testing
