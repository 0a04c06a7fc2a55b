// Files and folders that exist only in a test, in memory, and fail at the operation that the test
// chooses. There is every drive but Q, and every share.
#pragma once

#include "src/base/ascii.h"
#include "src/system/system.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vell::test {

inline constexpr params::CalendarTime noon{2024, 2, 29, 12, 34, 56};

inline files::NativePath native(std::u16string_view path) {
    return {std::u16string(path), std::nullopt};
}

struct FakeItem {
    std::string bytes = {};
    // Instead of bytes, for what is too long to be made: without `byte_at` reads leave their buffer
    // as it is.
    std::uint64_t length = 0;
    std::function<char(std::uint64_t)> byte_at = {};
    std::optional<std::uint64_t> reported_length = {}; // where that is not the truth
    bool is_device = false;                            // has no length and no choice of place
    std::size_t longest_read = std::numeric_limits<std::size_t>::max();

    std::uint32_t attributes = files::bit(files::Attribute::Archive);
    params::CalendarTime created = noon;
    params::CalendarTime accessed = noon;
    params::CalendarTime modified = noon;
    std::u16string short_name = {};
    std::optional<std::u16string> link = {}; // what it leads to
    std::string property = {};               // such as permissions: it goes with the file
    bool is_watched = false;                 // others open it
    std::uint64_t number = 0;                // folders are listed in the order of their making

    bool has(files::Attribute attribute) const { return (attributes & files::bit(attribute)) != 0; }
    std::uint64_t end() const { return length > 0 ? length : bytes.size(); }
    std::uint64_t told_length() const { return is_device ? 0 : reported_length.value_or(end()); }
    static FakeItem device(std::string bytes, std::size_t longest_read) {
        return {.bytes = std::move(bytes), .is_device = true, .longest_read = longest_read};
    }
};

inline constexpr std::int64_t units_per_second = 10'000'000;
inline constexpr std::chrono::sys_seconds year_1601 =
    std::chrono::sys_days(std::chrono::year(1601) / 1 / 1);

inline files::FileTime file_time(const params::CalendarTime& time) {
    const std::int64_t days = params::day_number(time) - params::day_number({1601, 1, 1, 0, 0, 0});
    const std::int64_t seconds = days * 86400 + params::seconds_of_day(time);
    return files::FileTime{static_cast<std::uint64_t>(seconds * units_per_second)};
}

template <typename T>
using Made = Result<std::unique_ptr<T>>;

// What a folder holds.
using Entries = std::vector<files::FolderEntry>;

inline files::FolderEntry file(std::u16string name, std::uint64_t size = 0) {
    return {.name = std::move(name), .short_name = {}, .size = size};
}
inline files::FolderEntry folder(std::u16string name) {
    files::FolderEntry entry = file(std::move(name));
    entry.is_folder = true;
    return entry;
}
inline files::FolderEntry hidden(files::FolderEntry entry) {
    entry.is_hidden = true;
    return entry;
}
inline files::FolderEntry link(files::FolderEntry entry) {
    entry.is_link = true;
    return entry;
}

class FakeItems : public files::FileSystem, public files::FolderSource {
  public:
    using NativePath = files::NativePath;
    using Contents = std::map<std::u16string, std::string>;

    // Items, with the folders above them.
    FakeItem& add(std::u16string_view path, FakeItem item) {
        const std::u16string key = key_of(path);
        if (const std::u16string parent = parent_of(key); !is_folder(parent))
            add_folder(parent);
        item.number = ++made_;
        return items_.insert_or_assign(key, std::move(item)).first->second;
    }
    FakeItem& add(std::u16string_view path, std::string bytes = {}) {
        return add(path, FakeItem{.bytes = std::move(bytes)});
    }
    FakeItem& add_folder(std::u16string_view path) {
        if (FakeItem* there = find(path); there && there->has(files::Attribute::Folder))
            return *there;
        return add(path, FakeItem{.attributes = bit(files::Attribute::Folder)});
    }
    void fill(const std::u16string& folder_path, const Entries& entries) {
        add_folder(folder_path);
        for (const files::FolderEntry& entry : entries) {
            const std::u16string path = key_of(folder_path) + u'\\' + entry.name;
            FakeItem& item = entry.is_folder ? add_folder(path) : add(path);
            item.length = entry.size;
            item.short_name = entry.short_name;
            if (entry.is_hidden)
                item.attributes |= bit(files::Attribute::Hidden);
            if (entry.is_link)
                item.link = u"elsewhere";
        }
    }
    std::function<Entries(const std::u16string& path)> generate; // what every folder holds instead

    FakeItem* find(std::u16string_view path) {
        const auto found = items_.find(key_of(path));
        return found == items_.end() ? nullptr : &found->second;
    }
    std::string at(std::u16string_view path) { return find(path) ? find(path)->bytes : "<none>"; }
    void erase(std::u16string_view path) { items_.erase(key_of(path)); }
    // The bytes of files by their paths, and with folders, whose paths end with a backslash.
    Contents contents() const {
        Contents found = all();
        std::erase_if(found, [](const auto& item) { return item.first.ends_with(u'\\'); });
        return found;
    }
    Contents all() const {
        Contents found;
        for (const auto& [path, item] : items_)
            found[item.has(files::Attribute::Folder) ? path + u'\\' : path] = item.bytes;
        return found;
    }
    bool has_contents(std::string_view wanted) const {
        return std::ranges::any_of(items_,
                                   [&](const auto& item) { return item.second.bytes == wanted; });
    }

    // Operations are counted from 1; whatever is done to the file system or to a file is one, apart
    // from looking at it.
    void fail(int operation, ErrorCode code) { fail(operation, operation, code); }
    // Nothing works any more from this operation on.
    void die(int operation, ErrorCode code) {
        fail(operation, std::numeric_limits<int>::max(), code);
    }
    int operations() const { return operations_; }
    bool replacing_loses_target = false; // when it fails
    bool watch_new_files = false;        // others open them as soon as they are there
    // Takes what is written, instead of the file.
    std::function<void(std::uint64_t position, std::string_view bytes)> on_write;

    // Comes before whatever is asked or done: others may change the items meanwhile.
    std::function<void()> on_step;
    // Others can put a link where an item is, or none, unless that would move what is held. One
    // that leads to an item is followed on the way to others, and by what opens it.
    bool swap_in(std::u16string_view path, std::u16string_view target) {
        const std::u16string key = key_of(path);
        const auto holds = [&](const std::u16string& held) {
            return held == key || held.starts_with(key + u'\\');
        };
        if (!is_folder(parent_of(key)) || std::ranges::any_of(held_, holds) ||
            std::ranges::any_of(open_, holds))
            return false;
        std::erase_if(items_,
                      [&](const auto& item) { return item.first.starts_with(key + u'\\'); });
        add(path, FakeItem{.attributes = find(target)->attributes, .link = std::u16string(target)});
        return true;
    }

    // Windows' own numbers, for a folder that is not opened and for one reading of any.
    void refuse(std::u16string_view path, std::int32_t error) { refused_[key_of(path)] = error; }
    void fail_read(int read, std::int32_t error) {
        failing_read_ = read;
        read_error_ = error;
        reads_ = 0;
    }

    // What was done.
    int open_files() const { return static_cast<int>(open_.size()); }
    std::size_t longest_request() const { return longest_request_; }
    std::uint64_t end_of_reading() const { return end_of_reading_; }
    int open_folders() const { return open_folders_; }
    int folder_reads() const { return reads_; }
    std::size_t largest_batch() const { return largest_batch_; }
    int looks = 0; // at an item

    Made<files::File> open(const NativePath& path, files::Permission permission) override {
        VELL_TRY(count_operation());
        const std::u16string key = followed(key_of(path.wide), files::FollowLink::Yes);
        if (VELL_TRY(existing(key))->is_watched)
            return Failure{ErrorCode::Busy};
        return VELL_TRY(open_free(key, permission));
    }
    Made<files::File> open_shared(const NativePath& path) override {
        return open(path, files::Permission::Read);
    }
    Made<files::File> open_new(const NativePath& path) override {
        return VELL_TRY(open_new_at(followed(key_of(path.wide), files::FollowLink::No)));
    }
    Made<files::File> open_to_write(const NativePath& path) override {
        return open(path, files::Permission::Write);
    }
    Made<files::File> open_emptied(const NativePath& path) override {
        if (!find(path.wide))
            VELL_TRY(create_new(path));
        auto file = VELL_TRY(open(path, files::Permission::Write));
        VELL_TRY(file->set_end_of_file());
        return file;
    }
    Result<void> create_new(const NativePath& path) override {
        return create_at(followed(key_of(path.wide), files::FollowLink::No));
    }
    files::ItemKind kind_of(const NativePath& path) override {
        step();
        ++looks;
        const std::u16string key = followed(key_of(path.wide), files::FollowLink::Yes);
        if (is_folder(key))
            return files::ItemKind::Folder;
        return find(key) ? files::ItemKind::File : files::ItemKind::None;
    }
    bool is_same_file(const NativePath& a, const NativePath& b) override {
        return kind_of(a) != files::ItemKind::None && behind(a) == behind(b);
    }
    // A failing copy has copied half.
    Result<void> copy(const NativePath& source, const NativePath& target,
                      files::Replace replace) override {
        VELL_TRY(check_transfer(source, target, replace));
        std::string copied = find(source.wide)->bytes;
        const Result<void> counted = count_operation();
        if (!counted)
            copied.resize(copied.size() / 2);
        add(target.wide, std::move(copied));
        return counted;
    }
    Result<void> rename(const NativePath& source, const NativePath& target,
                        files::Replace replace) override {
        VELL_TRY(count_operation());
        VELL_TRY(check_transfer(source, target, replace));
        auto item = items_.extract(key_of(source.wide));
        items_.insert_or_assign(key_of(target.wide), std::move(item.mapped()));
        return {};
    }
    Result<void> replace(const NativePath& source, const NativePath& target) override {
        if (const Result<void> counted = count_operation(); !counted) {
            if (replacing_loses_target)
                erase(target.wide);
            return counted;
        }
        VELL_TRY(check_transfer(source, target, files::Replace::Yes));
        VELL_TRY(existing(target.wide))->bytes = find(source.wide)->bytes;
        erase(source.wide);
        return {};
    }
    Result<void> remove(const NativePath& path) override {
        VELL_TRY(count_operation());
        VELL_TRY(existing(path.wide));
        if (open_.contains(key_of(path.wide)) || is_folder(key_of(path.wide)))
            return Failure{ErrorCode::Busy};
        erase(path.wide);
        return {};
    }
    Made<files::File> open_private(const NativePath& path, const NativePath&) override {
        return open_new(path);
    }
    Made<files::File> open_temporary() override { return files::memory_file(); }
    Result<NativePath> temporary_name(std::u16string_view) override {
        VELL_TRY(count_operation());
        const auto digit = static_cast<char16_t>(u'0' + temporary_names_++ % 10);
        return native(std::u16string(u"T:\\VELLTEMP{") + digit + u"}.tmp");
    }

    Result<std::unique_ptr<files::FolderReader>, files::SystemError>
    open_folder(const std::u16string& path) override {
        if (const auto found = refused_.find(key_of(path)); found != refused_.end())
            return Failure{of_windows(found->second)};
        if (!generate && !is_folder(key_of(path)))
            return Failure{of_windows(3)};
        return std::unique_ptr<files::FolderReader>(
            std::make_unique<Reader>(*this, generate ? generate(path) : entries_of(key_of(path))));
    }

  protected:
    Result<FakeItem*> existing(std::u16string_view path) {
        FakeItem* item = find(path);
        return item ? Result<FakeItem*>(item) : Failure{ErrorCode::NotFound};
    }
    // Where a path leads.
    std::u16string followed(const std::u16string& key, files::FollowLink last) {
        for (std::size_t end = 0; end < key.size();) {
            end = std::min(key.find(u'\\', end + 1), key.size());
            const FakeItem* item = find(std::u16string_view(key).substr(0, end));
            const bool is_on_the_way = end < key.size() || last == files::FollowLink::Yes;
            if (!item)
                return key;
            if (item->link && find(*item->link) && is_on_the_way)
                return followed(key_of(*item->link) + key.substr(end), last);
        }
        return key;
    }
    void step() {
        if (on_step)
            on_step();
    }
    void set_item_times(FakeItem& item, const files::NewTimes& times) {
        item.created = times.created.value_or(item.created);
        item.accessed = times.accessed.value_or(item.accessed);
        item.modified = times.modified.value_or(item.modified);
    }
    Result<void> create_at(const std::u16string& key) {
        VELL_TRY(count_operation());
        VELL_TRY(check_free(native(key)));
        add(key).is_watched = watch_new_files;
        return {};
    }
    Made<files::HeldFile> open_new_at(const std::u16string& key) {
        VELL_TRY(create_at(key));
        const Result<void> counted = count_operation();
        if (!counted) { // all in one step: nothing is there then
            erase(key);
            return Failure{counted.error()};
        }
        return open_free(key, files::Permission::Write);
    }
    // In the place of a link, be it there.
    Made<files::HeldFile> open_emptied_at(const std::u16string& key) {
        if (!find(key))
            VELL_TRY(create_at(key));
        VELL_TRY(count_operation());
        auto file = VELL_TRY(open_free(key, files::Permission::Write));
        VELL_TRY(file->set_end_of_file());
        return file;
    }
    static std::u16string key_of(std::u16string_view path) {
        std::u16string key(path);
        std::ranges::replace(key, u'/', u'\\');
        while (key.ends_with(u'\\'))
            key.pop_back();
        // Of names on the way Windows cuts one dot off.
        for (std::size_t at = 0; (at = key.find(u".\\", at + 1)) != key.npos;)
            if (key[at - 1] != u'.' && key[at - 1] != u'\\')
                key.erase(at, 1);
        return key;
    }
    static std::u16string parent_of(const std::u16string& key) {
        const std::size_t end = key.rfind(u'\\');
        return end == key.npos ? std::u16string() : key.substr(0, end);
    }
    // The path behind every link on the way, in the letters of what is there.
    std::u16string followed(std::u16string key) const {
        for (std::size_t end = key.find(u'\\'); end != key.npos;) {
            end = std::min(key.find(u'\\', end + 1), key.size());
            const auto found = items_.find(key.substr(0, end));
            if (found != items_.end() && found->second.link)
                return followed(*found->second.link + key.substr(end));
            if (end == key.size())
                break;
        }
        return key;
    }
    bool is_folder(const std::u16string& key) const {
        const auto found = items_.find(key);
        if (found != items_.end())
            return found->second.has(files::Attribute::Folder);
        const bool is_share = key.starts_with(u"\\\\") && std::ranges::count(key, u'\\') <= 3;
        return key.empty() || is_share || (key.ends_with(u':') && key != u"Q:");
    }
    Result<void> check_free(const NativePath& path) {
        const std::u16string key = key_of(path.wide);
        if (items_.contains(key) || is_folder(key))
            return Failure{ErrorCode::AlreadyExists};
        return is_folder(parent_of(key)) ? Result<void>() : Failure{ErrorCode::FolderNotFound};
    }
    Result<void> check_transfer(const NativePath& source, const NativePath& target,
                                files::Replace replace) {
        VELL_TRY(existing(source.wide));
        if (open_.contains(key_of(source.wide)) || open_.contains(key_of(target.wide)))
            return Failure{ErrorCode::Busy};
        return replace == files::Replace::Yes ? Result<void>() : check_free(target);
    }
    Result<void> count_operation() {
        step();
        ++operations_;
        if (operations_ >= first_failing_ && operations_ <= last_failing_)
            return Failure{failure_};
        return {};
    }

    std::map<std::u16string, FakeItem> items_; // by paths without a separator at their end
    std::set<std::u16string> open_;
    std::multiset<std::u16string> held_;

  private:
    class OpenFile : public files::HeldFile {
      public:
        OpenFile(FakeItems& items, std::u16string key, bool writing)
            : items_(items), key_(std::move(key)), writing_(writing) {
            items_.open_.insert(key_);
        }
        ~OpenFile() override { items_.open_.erase(key_); }

        Result<std::uint64_t> size() override {
            VELL_TRY(items_.count_operation());
            return item().told_length();
        }
        Result<files::FileTime> modified() override { return file_time(item().modified); }
        Result<void> seek(files::SeekFrom from, std::int64_t offset) override {
            VELL_TRY(items_.count_operation());
            if (item().is_device)
                return Failure{ErrorCode::DiskError};
            const std::uint64_t base = from == files::SeekFrom::Start ? 0
                                       : from == files::SeekFrom::End ? item().end()
                                                                      : position_;
            position_ = base + static_cast<std::uint64_t>(offset);
            return {};
        }
        Result<std::size_t> read(std::span<char> buffer) override {
            VELL_TRY(items_.count_operation());
            if (writing_)
                return Failure{ErrorCode::Busy};
            items_.longest_request_ = std::max(items_.longest_request_, buffer.size());
            const FakeItem& read = item();
            const std::uint64_t left = read.end() - std::min(position_, read.end());
            const std::size_t most = std::min(buffer.size(), read.longest_read);
            const auto done = static_cast<std::size_t>(std::min<std::uint64_t>(most, left));
            if (read.byte_at)
                for (std::size_t i = 0; i < done; ++i)
                    buffer[i] = read.byte_at(position_ + i);
            else if (read.length == 0 && done > 0)
                read.bytes.copy(buffer.data(), done, static_cast<std::size_t>(position_));
            position_ += done;
            items_.end_of_reading_ = position_;
            return done;
        }
        // A failing write has written half.
        Result<void> write(std::string_view given) override {
            if (!writing_)
                return Failure{ErrorCode::Busy};
            const Result<void> counted = items_.count_operation();
            const std::string_view written = counted ? given : given.substr(0, given.size() / 2);
            const auto at = static_cast<std::size_t>(position_);
            position_ += written.size();
            if (items_.on_write) {
                items_.on_write(at, written);
                return counted;
            }
            std::string& all = item().bytes;
            all.resize(std::max(all.size(), at + written.size()));
            // Not replace, which moves what lies before, too, in one of our compilers.
            written.copy(all.data() + at, written.size());
            return counted;
        }
        Result<void> set_end_of_file() override {
            VELL_TRY(items_.count_operation());
            if (!writing_)
                return Failure{ErrorCode::Busy};
            item().bytes.resize(static_cast<std::size_t>(position_));
            return {};
        }
        Result<void> set_times(const files::NewTimes& times) override {
            items_.set_item_times(item(), times);
            return {};
        }
        Result<void> close() override {
            items_.open_.erase(key_);
            return items_.count_operation();
        }
        Result<std::u16string> final_path() override { return items_.followed(key_); }

      private:
        FakeItem& item() { return items_.items_.at(key_); }

        FakeItems& items_;
        std::u16string key_;
        bool writing_;
        std::uint64_t position_ = 0;
    };

    class Reader : public files::FolderReader {
      public:
        Reader(FakeItems& items, Entries entries) : items_(items), entries_(std::move(entries)) {
            ++items_.open_folders_;
        }
        ~Reader() override { --items_.open_folders_; }
        Result<std::size_t, files::SystemError>
        read(std::span<files::FolderEntry> entries) override {
            items_.largest_batch_ = std::max(items_.largest_batch_, entries.size());
            if (++items_.reads_ == items_.failing_read_)
                return Failure{of_windows(items_.read_error_)};
            const std::size_t count = std::min(entries.size(), entries_.size() - next_);
            for (std::size_t i = 0; i < count; ++i)
                entries[i] = entries_[next_++];
            return count;
        }

      private:
        FakeItems& items_;
        Entries entries_;
        std::size_t next_ = 0;
    };

    static files::SystemError of_windows(std::int32_t error) {
        return {error, error == 3   ? ErrorCode::FolderNotFound
                       : error == 5 ? ErrorCode::Busy
                                    : static_cast<ErrorCode>(error)};
    }
    // Nobody else has a file open here.
    Made<files::HeldFile> open_free(const std::u16string& key, files::Permission permission) {
        const bool writing = permission == files::Permission::Write;
        if (is_folder(key) || open_.contains(key) ||
            (writing && items_.at(key).has(files::Attribute::ReadOnly)))
            return Failure{ErrorCode::Busy};
        return Made<files::HeldFile>(std::make_unique<OpenFile>(*this, key, writing));
    }
    std::u16string behind(const NativePath& path) {
        const FakeItem* item = find(path.wide);
        return key_of(item && item->link ? *item->link : path.wide);
    }
    Entries entries_of(const std::u16string& folder_key) const {
        std::map<std::uint64_t, files::FolderEntry> inside;
        for (auto at = items_.upper_bound(folder_key + u'\\'); at != items_.end(); ++at) {
            const auto& [key, item] = *at;
            if (!key.starts_with(folder_key + u'\\'))
                break;
            if (parent_of(key) == folder_key)
                inside[item.number] = {.name = key.substr(folder_key.size() + 1),
                                       .short_name = item.short_name,
                                       .size = item.end(),
                                       .is_folder = item.has(files::Attribute::Folder),
                                       .is_hidden = item.has(files::Attribute::Hidden),
                                       .is_link = item.link.has_value(),
                                       .is_read_only = item.has(files::Attribute::ReadOnly),
                                       .created = file_time(item.created),
                                       .modified = file_time(item.modified),
                                       .accessed = file_time(item.accessed)};
        }
        Entries entries{folder(u"."), folder(u"..")};
        for (auto& [number, entry] : inside)
            entries.push_back(std::move(entry));
        return entries;
    }
    void fail(int first, int last, ErrorCode code) {
        first_failing_ = first;
        last_failing_ = last;
        failure_ = code;
        operations_ = 0;
    }

    std::uint64_t made_ = 0;
    int first_failing_ = 0;
    int last_failing_ = 0;
    ErrorCode failure_ = ErrorCode::Ok;
    int operations_ = 0;
    int temporary_names_ = 0;
    std::size_t longest_request_ = 0;
    std::uint64_t end_of_reading_ = 0;
    std::map<std::u16string, std::int32_t> refused_;
    int failing_read_ = 0;
    std::int32_t read_error_ = 0;
    int reads_ = 0;
    int open_folders_ = 0;
    std::size_t largest_batch_ = 0;
};

} // namespace vell::test
