// Files to read that exist only in a test: of any length, slow or failing as it wants them.
#pragma once

#include "tests/portable/failing_file_system.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace vell::testing {

// Whose place can be told from a few of them.
inline std::string numbered_bytes(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes += static_cast<char>('a' + i * i % 23);
    return bytes;
}

struct FakeContents {
    static FakeContents of(std::string bytes) {
        const std::uint64_t length = bytes.size();
        return {length, length, [bytes = std::move(bytes)](std::uint64_t at) {
                    return bytes[static_cast<std::size_t>(at)];
                }};
    }
    // The same without a length of its own.
    static FakeContents device(std::string bytes, std::size_t longest_read) {
        FakeContents contents = of(std::move(bytes));
        contents.reported_length = 0;
        contents.longest_read = longest_read;
        return contents;
    }

    std::uint64_t reported_length = 0;
    std::uint64_t length = 0;
    std::function<char(std::uint64_t)> byte_at;
    std::size_t longest_read = std::numeric_limits<std::size_t>::max();
};

class FakeFiles : public FailingFileSystem {
  public:
    void add(std::u16string path, FakeContents contents) {
        contents_.insert_or_assign(std::move(path), std::move(contents));
    }
    void add_folder(std::u16string path) { folders_.insert(std::move(path)); }
    int open_files() const { return open_files_; }
    std::size_t longest_request() const { return longest_request_; }
    std::uint64_t end_of_reading() const { return end_of_reading_; }

    Result<std::unique_ptr<files::File>> open(const files::NativePath& path,
                                              files::Permission permission) override {
        VELL_TRY(count_operation());
        const auto found = contents_.find(path.wide);
        if (found == contents_.end())
            return Failure{ErrorCode::NotFound};
        if (permission != files::Permission::Read || open_files_ > 0)
            return Failure{ErrorCode::Busy};
        return std::unique_ptr<files::File>(std::make_unique<OpenFile>(*this, found->second));
    }
    Result<void> create_new(const files::NativePath&) override { return Failure{ErrorCode::Busy}; }
    files::ItemKind kind_of(const files::NativePath& path) override {
        return contents_.contains(path.wide)  ? files::ItemKind::File
               : folders_.contains(path.wide) ? files::ItemKind::Folder
                                              : files::ItemKind::None;
    }
    bool is_same_file(const files::NativePath& a, const files::NativePath& b) override {
        return a.wide == b.wide;
    }
    Result<void> copy(const files::NativePath&, const files::NativePath&, files::Replace) override {
        return Failure{ErrorCode::Busy};
    }
    Result<void> rename(const files::NativePath&, const files::NativePath&,
                        files::Replace) override {
        return Failure{ErrorCode::Busy};
    }
    Result<void> replace(const files::NativePath&, const files::NativePath&) override {
        return Failure{ErrorCode::Busy};
    }
    Result<void> remove(const files::NativePath&) override { return Failure{ErrorCode::Busy}; }
    Result<files::NativePath> temporary_name(std::u16string_view) override {
        return Failure{ErrorCode::Busy};
    }

  private:
    class OpenFile : public files::File {
      public:
        OpenFile(FakeFiles& files, const FakeContents& contents)
            : files_(files), contents_(contents) {
            ++files_.open_files_;
        }
        ~OpenFile() override { --files_.open_files_; }

        Result<std::uint64_t> size() override {
            VELL_TRY(files_.count_operation());
            return contents_.reported_length;
        }
        Result<void> seek(files::SeekFrom from, std::int64_t offset) override {
            VELL_TRY(files_.count_operation());
            if (from != files::SeekFrom::Start || contents_.reported_length == 0)
                return Failure{ErrorCode::DiskError};
            position_ = static_cast<std::uint64_t>(offset);
            return {};
        }
        Result<std::size_t> read(std::span<char> buffer) override {
            VELL_TRY(files_.count_operation());
            files_.longest_request_ = std::max(files_.longest_request_, buffer.size());
            std::size_t done = 0;
            const std::size_t most = std::min(buffer.size(), contents_.longest_read);
            while (done < most && position_ < contents_.length)
                buffer[done++] = contents_.byte_at(position_++);
            files_.end_of_reading_ = position_;
            return done;
        }
        Result<void> write(std::string_view) override { return Failure{ErrorCode::Busy}; }
        Result<void> set_end_of_file() override { return Failure{ErrorCode::Busy}; }
        Result<void> close() override { return files_.count_operation(); }

      private:
        FakeFiles& files_;
        const FakeContents& contents_;
        std::uint64_t position_ = 0;
    };

    std::map<std::u16string, FakeContents> contents_;
    std::set<std::u16string> folders_;
    int open_files_ = 0;
    std::size_t longest_request_ = 0;
    std::uint64_t end_of_reading_ = 0;
};

} // namespace vell::testing
