// Files in memory that can be read, written, copied, renamed and removed, shared by nobody while
// they are open, and failing at the operation that a test chooses.
#pragma once

#include "tests/portable/failing_file_system.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace vell::testing {

class WritableFiles : public FailingFileSystem {
  public:
    static constexpr std::u16string_view temporary_folder = u"T:\\";

    void add(std::u16string path, std::string contents) {
        contents_.insert_or_assign(std::move(path), std::move(contents));
    }
    // A file that may be read only.
    void protect(std::u16string path) { protected_ = std::move(path); }
    // What a file has beside its contents, such as permissions; it goes with the file.
    std::map<std::u16string, std::string> properties;
    bool replacing_loses_target = false; // when it fails

    int open_files() const { return static_cast<int>(open_.size()); }
    const std::map<std::u16string, std::string>& contents() const { return contents_; }
    std::string at(const std::u16string& path) const {
        const auto found = contents_.find(path);
        return found == contents_.end() ? "<none>" : found->second;
    }
    bool has_contents(std::string_view wanted) const {
        return std::ranges::any_of(contents_,
                                   [&](const auto& file) { return file.second == wanted; });
    }

    Result<std::unique_ptr<files::File>> open(const files::NativePath& path,
                                              files::Permission permission) override {
        VELL_TRY(count_operation());
        if (!contents_.contains(path.wide))
            return Failure{ErrorCode::NotFound};
        const bool writing = permission == files::Permission::Write;
        if (open_.contains(path.wide) || (writing && path.wide == protected_))
            return Failure{ErrorCode::Busy};
        return std::unique_ptr<files::File>(std::make_unique<OpenFile>(*this, path.wide, writing));
    }
    Result<void> create_new(const files::NativePath& path) override {
        VELL_TRY(count_operation());
        if (!contents_.emplace(path.wide, "").second)
            return Failure{ErrorCode::AlreadyExists};
        return {};
    }
    files::ItemKind kind_of(const files::NativePath& path) override {
        return contents_.contains(path.wide) ? files::ItemKind::File : files::ItemKind::None;
    }
    bool is_same_file(const files::NativePath& a, const files::NativePath& b) override {
        return contents_.contains(a.wide) && a.wide == b.wide;
    }
    // A failing copy has copied half.
    Result<void> copy(const files::NativePath& source, const files::NativePath& target,
                      files::Replace replace) override {
        const auto found = contents_.find(source.wide);
        if (found == contents_.end())
            return Failure{ErrorCode::NotFound};
        if (open_.contains(source.wide) || open_.contains(target.wide))
            return Failure{ErrorCode::Busy};
        if (replace == files::Replace::No && contents_.contains(target.wide))
            return Failure{ErrorCode::AlreadyExists};
        const std::string copied = found->second;
        const Result<void> counted = count_operation();
        contents_[target.wide] = counted ? copied : copied.substr(0, copied.size() / 2);
        return counted;
    }
    Result<void> rename(const files::NativePath& source, const files::NativePath& target,
                        files::Replace replace) override {
        VELL_TRY(count_operation());
        if (!contents_.contains(source.wide))
            return Failure{ErrorCode::NotFound};
        if (open_.contains(source.wide) || open_.contains(target.wide))
            return Failure{ErrorCode::Busy};
        if (replace == files::Replace::No && contents_.contains(target.wide))
            return Failure{ErrorCode::AlreadyExists};
        move_contents(source.wide, target.wide);
        properties.erase(target.wide);
        if (auto moved = properties.extract(source.wide)) {
            moved.key() = target.wide;
            properties.insert(std::move(moved));
        }
        return {};
    }
    Result<void> replace(const files::NativePath& source,
                         const files::NativePath& target) override {
        if (const Result<void> counted = count_operation(); !counted) {
            if (replacing_loses_target)
                contents_.erase(target.wide);
            return counted;
        }
        if (!contents_.contains(source.wide) || !contents_.contains(target.wide))
            return Failure{ErrorCode::NotFound};
        if (open_.contains(source.wide) || open_.contains(target.wide))
            return Failure{ErrorCode::Busy};
        move_contents(source.wide, target.wide);
        return {};
    }
    Result<void> remove(const files::NativePath& path) override {
        VELL_TRY(count_operation());
        if (open_.contains(path.wide))
            return Failure{ErrorCode::Busy};
        return contents_.erase(path.wide) > 0 ? Result<void>()
                                              : Result<void>(Failure{ErrorCode::NotFound});
    }
    Result<files::NativePath> temporary_name(std::u16string_view) override {
        VELL_TRY(count_operation());
        std::u16string name(temporary_folder);
        name += u"VELLTEMP{";
        name += static_cast<char16_t>(u'0' + temporary_names_++ % 10);
        return files::NativePath{name + u"}.tmp", std::nullopt};
    }

  private:
    class OpenFile : public files::File {
      public:
        OpenFile(WritableFiles& files, std::u16string path, bool writing)
            : files_(files), path_(std::move(path)), writing_(writing) {
            files_.open_.emplace(path_, 0);
        }
        ~OpenFile() override { files_.open_.erase(path_); }

        Result<std::uint64_t> size() override {
            VELL_TRY(files_.count_operation());
            return bytes().size();
        }
        Result<void> seek(files::SeekFrom from, std::int64_t offset) override {
            VELL_TRY(files_.count_operation());
            const std::size_t base = from == files::SeekFrom::Start ? 0
                                     : from == files::SeekFrom::End ? bytes().size()
                                                                    : position_;
            position_ = base + static_cast<std::size_t>(offset);
            return {};
        }
        Result<std::size_t> read(std::span<char> buffer) override {
            VELL_TRY(files_.count_operation());
            if (writing_)
                return Failure{ErrorCode::Busy};
            const std::size_t from = std::min(position_, bytes().size());
            const std::size_t done = bytes().copy(buffer.data(), buffer.size(), from);
            position_ = from + done;
            return done;
        }
        // A failing write has written half.
        Result<void> write(std::string_view given) override {
            if (!writing_)
                return Failure{ErrorCode::Busy};
            const Result<void> counted = files_.count_operation();
            const std::string_view written = counted ? given : given.substr(0, given.size() / 2);
            std::string& all = bytes();
            if (all.size() < position_ + written.size())
                all.resize(position_ + written.size());
            // Not replace, which moves what lies before, too, in one of our compilers.
            position_ += written.copy(all.data() + position_, written.size());
            return counted;
        }
        Result<void> set_end_of_file() override {
            VELL_TRY(files_.count_operation());
            if (!writing_)
                return Failure{ErrorCode::Busy};
            bytes().resize(position_);
            return {};
        }
        Result<void> close() override {
            files_.open_.erase(path_);
            return files_.count_operation();
        }

      private:
        std::string& bytes() { return files_.contents_[path_]; }

        WritableFiles& files_;
        std::u16string path_;
        bool writing_;
        std::size_t position_ = 0;
    };

    void move_contents(const std::u16string& source, const std::u16string& target) {
        contents_[target] = std::move(contents_[source]);
        contents_.erase(source);
    }

    std::map<std::u16string, std::string> contents_;
    std::map<std::u16string, int> open_;
    std::u16string protected_;
    int temporary_names_ = 0;
};

// Sources of more than 4 GiB, whose bytes are never made, and targets that keep short writes only.
class LongFiles : public WritableFiles {
  public:
    static constexpr std::uint64_t length = (4ULL << 30) + 200'000;

    Result<std::unique_ptr<files::File>> open(const files::NativePath&,
                                              files::Permission) override {
        return std::unique_ptr<files::File>(std::make_unique<LongFile>(*this));
    }

    std::uint64_t written = 0;
    std::string short_writes; // each behind its position

  private:
    class LongFile : public files::File {
      public:
        explicit LongFile(LongFiles& files) : files_(files) {}
        Result<std::uint64_t> size() override { return length; }
        Result<void> seek(files::SeekFrom, std::int64_t) override {
            return Failure{ErrorCode::DiskError};
        }
        Result<std::size_t> read(std::span<char> buffer) override {
            const auto done = std::min<std::uint64_t>(buffer.size(), length - position_);
            position_ += done;
            return static_cast<std::size_t>(done);
        }
        Result<void> write(std::string_view bytes) override {
            if (bytes.size() == 1)
                files_.short_writes += std::to_string(files_.written) + std::string(bytes);
            files_.written += bytes.size();
            return {};
        }
        Result<void> set_end_of_file() override { return Failure{ErrorCode::DiskError}; }
        Result<void> close() override { return {}; }

      private:
        LongFiles& files_;
        std::uint64_t position_ = 0;
    };
};

} // namespace vell::testing
