#include "src/files/listing/folder_lister.h"

#include "src/base/ascii.h"

#include <string_view>

namespace vell::files {
namespace {

constexpr char16_t line_end = 13;

bool is_self_or_parent(std::u16string_view name) {
    return name == u"." || name == u"..";
}

// Shortcut files. No dot is looked for.
bool is_alias(std::u16string_view name) {
    constexpr std::u16string_view ending = u"lnk";
    return name.size() > ending.size() && ends_ignoring_case(name, ending);
}

// Listings pass the system's number as it is.
ErrorCode unmapped(SystemError error) {
    return static_cast<ErrorCode>(error.number);
}

const std::u16string& listed_name(const FolderEntry& entry, const ListingOptions& options) {
    return options.short_names && !entry.short_name.empty() ? entry.short_name : entry.name;
}

} // namespace

bool FolderLister::keeps(const FolderEntry& entry) const {
    if (entry.is_hidden && !options_.invisibles)
        return false;
    if (!options_.aliases && is_alias(entry.name))
        return false;
    if (!entry.is_folder)
        return options_.files;
    if (!options_.folders && !options_.recursive)
        return false;
    return options_.point_folders || !entry.name.starts_with(u'.');
}

void FolderLister::give(const FolderEntry& entry, std::u16string& text) {
    if (options_.take) {
        line_.assign(prefix_).append(listed_name(entry, options_));
        return options_.take(entry, line_);
    }
    text += prefix_;
    text += listed_name(entry, options_);
    if (entry.is_folder)
        text += options_.folder_suffix;
    text += line_end;
}

Result<void> FolderLister::enter() {
    if ((path_.size() >= path_limit && !options_.any_depth) ||
        (!path_.ends_with(u'\\') && !path_.ends_with(u':')))
        return Failure{ErrorCode::BadParameter};
    auto reader = source_.open_folder(path_);
    if (!reader)
        return Failure{unmapped(reader.error())};
    if (depth_ == levels_.size())
        levels_.emplace_back();
    Level& level = levels_[depth_++];
    level.reader = *std::move(reader);
    level.count = level.next = 0;
    level.path_length = path_.size();
    level.prefix_length = prefix_.size();
    return {};
}

void FolderLister::leave() {
    levels_[--depth_].reader.reset();
}

// Null at the end of the folder.
Result<const FolderEntry*> FolderLister::next_entry(Level& level) {
    if (level.next == level.count) {
        const auto count = level.reader->read(level.batch);
        if (!count)
            return Failure{unmapped(count.error())};
        level.count = count.value();
        level.next = 0;
        if (level.count == 0)
            return nullptr;
    }
    return &level.batch[level.next++];
}

// What becomes of a folder, below those that are entered, that cannot be read.
Result<void> FolderLister::pass_over(ErrorCode code) {
    if (!options_.skip_unreadable || depth_ == 0)
        return Failure{code};
    ++skipped_;
    return {};
}

Result<void> FolderLister::append(const std::u16string& folder, std::u16string& text) {
    levels_.clear(); // what a listing that failed left open
    depth_ = 0;
    skipped_ = 0;
    path_ = folder;
    prefix_ = options_.prefix;
    VELL_TRY(enter());
    for (std::uint64_t lines = 0; depth_ > 0 && lines < options_.most_lines;) {
        Level& level = levels_[depth_ - 1];
        path_.resize(level.path_length);
        prefix_.resize(level.prefix_length);
        if (level.next == level.count && options_.time_is_up && options_.time_is_up())
            return Failure{ErrorCode::TimeLimitPassed};
        const auto next = next_entry(level);
        if (!next || !next.value()) {
            leave();
            if (!next)
                VELL_TRY(pass_over(next.error()));
            continue;
        }
        const FolderEntry* const entry = next.value();
        if (!keeps(*entry))
            continue;
        if ((!options_.recursive || !entry->is_folder || options_.folders) &&
            (!options_.wants || options_.wants(entry->name))) {
            give(*entry, text);
            ++lines;
        }
        if (options_.recursive && entry->is_folder && !entry->is_link &&
            !is_self_or_parent(entry->name)) {
            path_.append(entry->name) += u'\\';
            prefix_.append(listed_name(*entry, options_)) += options_.separator;
            if (const auto entered = enter(); !entered)
                VELL_TRY(pass_over(entered.error()));
        }
    }
    return {};
}

} // namespace vell::files
