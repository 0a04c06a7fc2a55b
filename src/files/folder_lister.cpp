#include "src/files/folder_lister.h"

#include "src/base/ascii.h"

#include <algorithm>
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
    return name.size() > ending.size() &&
           std::ranges::equal(name.substr(name.size() - ending.size()), ending, {},
                              fold_ascii<char16_t>);
}

// Listings pass the system's number as it is.
ErrorCode unmapped(SystemError error) {
    return static_cast<ErrorCode>(error);
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

void FolderLister::write_line(const FolderEntry& entry, std::u16string& text) const {
    text += prefix_;
    text += listed_name(entry, options_);
    if (entry.is_folder)
        text += options_.folder_suffix;
    text += line_end;
}

Result<void> FolderLister::enter() {
    if (path_.size() >= path_limit || (!path_.ends_with(u'\\') && !path_.ends_with(u':')))
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

Result<void> FolderLister::append(const std::u16string& folder, std::u16string& text) {
    levels_.clear(); // what a listing that failed left open
    depth_ = 0;
    path_ = folder;
    prefix_ = options_.prefix;
    VELL_TRY(enter());
    while (depth_ > 0) {
        Level& level = levels_[depth_ - 1];
        path_.resize(level.path_length);
        prefix_.resize(level.prefix_length);
        const FolderEntry* entry = VELL_TRY(next_entry(level));
        if (!entry) {
            level.reader.reset();
            --depth_;
            continue;
        }
        if (!keeps(*entry))
            continue;
        if (!options_.recursive || !entry->is_folder || options_.folders)
            write_line(*entry, text);
        if (options_.recursive && entry->is_folder && !entry->is_link &&
            !is_self_or_parent(entry->name)) {
            path_.append(entry->name) += u'\\';
            prefix_.append(listed_name(*entry, options_)) += u'/';
            VELL_TRY(enter());
        }
    }
    return {};
}

} // namespace vell::files
