// Folders that exist only in a test.
#pragma once

#include "src/windows/error.h"
#include "tests/portable/fake_system.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vell::testing {

using files::FolderEntry;
using files::FolderReader;
using files::FolderSource;
using files::SystemError;
using Entries = std::vector<FolderEntry>;

inline FolderEntry file(std::u16string name, std::uint64_t size = 0) {
    FolderEntry entry;
    entry.name = std::move(name);
    entry.size = size;
    return entry;
}
inline FolderEntry folder(std::u16string name) {
    FolderEntry entry = file(std::move(name));
    entry.is_folder = true;
    return entry;
}
inline FolderEntry hidden(FolderEntry entry) {
    entry.is_hidden = true;
    return entry;
}
inline FolderEntry link(FolderEntry entry) {
    entry.is_link = true;
    return entry;
}

// Folders by their paths; whatever is not added holds what `generate` says.
class FakeFolders : public FolderSource {
  public:
    void add(const std::u16string& path, Entries entries) { folders_[path] = std::move(entries); }
    // Failures are Windows' own.
    void refuse(const std::u16string& path, std::int32_t error) {
        refused_[path] = of_windows(error);
    }
    void fail_read(int read, std::int32_t error) {
        failing_read_ = read;
        failure_ = of_windows(error);
        reads_ = 0;
    }
    std::function<Entries(const std::u16string& path)> generate;

    int reads() const { return reads_; }
    int open_readers() const { return open_readers_; }
    std::size_t largest_batch() const { return largest_batch_; }

    Result<std::unique_ptr<FolderReader>, SystemError>
    open_folder(const std::u16string& path) override {
        if (const auto found = refused_.find(path); found != refused_.end())
            return Failure{found->second};
        const auto found = folders_.find(path);
        if (found == folders_.end() && !generate)
            return Failure{of_windows(3)};
        return std::unique_ptr<FolderReader>(std::make_unique<Reader>(
            *this, found == folders_.end() ? generate(path) : found->second));
    }

  private:
    static SystemError of_windows(std::int32_t error) { return {error, error_from_win32(error)}; }

    class Reader : public FolderReader {
      public:
        Reader(FakeFolders& folders, Entries entries)
            : folders_(folders), entries_(std::move(entries)) {
            ++folders_.open_readers_;
        }
        ~Reader() override { --folders_.open_readers_; }
        Result<std::size_t, SystemError> read(std::span<FolderEntry> entries) override {
            folders_.largest_batch_ = std::max(folders_.largest_batch_, entries.size());
            if (++folders_.reads_ == folders_.failing_read_)
                return Failure{folders_.failure_};
            const std::size_t count = std::min(entries.size(), entries_.size() - next_);
            for (std::size_t i = 0; i < count; ++i)
                entries[i] = entries_[next_++];
            return count;
        }

      private:
        FakeFolders& folders_;
        Entries entries_;
        std::size_t next_ = 0;
    };

    std::map<std::u16string, Entries> folders_;
    std::map<std::u16string, SystemError> refused_;
    int failing_read_ = 0;
    SystemError failure_;
    int reads_ = 0;
    int open_readers_ = 0;
    std::size_t largest_batch_ = 0;
};

} // namespace vell::testing
