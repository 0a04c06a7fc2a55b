#include "src/metadata/writing/exif_block.h"

#include "src/formats/tiff/directory.h"
#include "src/metadata/faults.h"
#include "src/metadata/writing/exif_layout.h"

#include <algorithm>
#include <utility>

namespace vell::metadata {
namespace {

std::uint32_t value_count(FieldType type, std::size_t bytes) {
    return static_cast<std::uint32_t>(bytes / std::max<std::size_t>(size_of(type), 1));
}

} // namespace

void ChangeableEntry::set(FieldType type, std::string value) {
    entry.type = type;
    entry.count = value_count(type, value.size());
    entry.value = {};
    if (entry.is_inline())
        std::ranges::copy(value, entry.value.begin());
    new_value = std::move(value);
}

ChangeableEntry* ChangeableDirectory::find(std::uint16_t tag, std::size_t occurrence) {
    for (ChangeableEntry& candidate : entries)
        if (candidate.entry.tag == tag && occurrence-- == 0)
            return &candidate;
    return nullptr;
}

void ChangeableDirectory::set(ChangeableEntry& entry, FieldType type, std::string value) {
    entry.set(type, std::move(value));
    is_changed = true;
}

void ChangeableDirectory::add(std::uint16_t tag, FieldType type, std::string value) {
    ChangeableEntry added{.entry = {.tag = tag}};
    added.set(type, std::move(value));
    const auto next_tag = std::ranges::find_if(
        entries, [&](const ChangeableEntry& other) { return other.entry.tag > tag; });
    entries.insert(next_tag, std::move(added));
    is_changed = true;
}

void ChangeableDirectory::erase(const ChangeableEntry& entry) {
    entries.erase(entries.begin() + (&entry - entries.data()));
    is_changed = true;
}

bool ChangeableDirectory::is_as_read() const {
    return place && place->size == table_size() &&
           std::ranges::all_of(entries, [](const ChangeableEntry& candidate) {
               return candidate.old && !candidate.new_value;
           });
}

std::size_t ChangeableDirectory::table_size() const {
    return tiff::Directory::count_size + entries.size() * tiff::Entry::size +
           tiff::Directory::next_size;
}

std::string ChangeableDirectory::table_bytes(ByteOrder order) const {
    std::string bytes;
    append_integer<std::uint16_t>(bytes, static_cast<std::uint16_t>(entries.size()), order);
    for (const ChangeableEntry& candidate : entries)
        formats::append_record(bytes, candidate.entry, order);
    append_integer<std::uint32_t>(bytes, next, order);
    return bytes;
}

std::optional<DirectoryTable> read_table(std::string_view block, std::size_t offset,
                                         ByteOrder order) {
    BytesInMemory bytes(block);
    const auto directory = tiff::Directory::at(formats::Window(bytes), offset, order);
    if (!directory || offset < tiff::Header::size)
        return std::nullopt;
    DirectoryTable table;
    table.entries = directory->entries().value(); // of bytes in memory
    const auto next = directory->next();
    table.next = next ? static_cast<std::uint32_t>(*next) : 0;
    const std::uint64_t end = directory->end_of(table.entries.size()) + tiff::Directory::next_size;
    table.place = {offset,
                   static_cast<std::size_t>(std::min<std::uint64_t>(end, block.size())) - offset};
    return table;
}

Result<ExifBlock> ExifBlock::read(std::string_view bytes) {
    ExifBlock block;
    if (bytes.empty())
        return block;
    const auto header = tiff::Header::read(bytes);
    if (!header)
        return Failure{ErrorCode::ShortRead};
    block.old_ = bytes;
    block.order_ = header->order;
    block.read_directory(DirectoryKind::Main, header->first_directory);
    if (!block.directory(DirectoryKind::Main).place)
        return Failure{ErrorCode::CorruptStructure};
    if (const auto offset = block.pointer(DirectoryKind::Main, tiff::tag::exif_directory))
        block.read_directory(DirectoryKind::Exif, *offset);
    if (const auto offset = block.pointer(DirectoryKind::Main, tiff::tag::gps_directory))
        block.read_directory(DirectoryKind::Gps, *offset);
    if (const auto offset =
            block.pointer(DirectoryKind::Exif, tiff::tag::interoperability_directory))
        block.read_directory(DirectoryKind::Interoperability, *offset);
    return block;
}

void ExifBlock::read_directory(DirectoryKind kind, std::uint32_t offset) {
    auto table = read_table(old_, offset, order_);
    if (!table)
        return;
    ChangeableDirectory& directory = this->directory(kind);
    directory.place = table->place;
    directory.next = table->next;
    directory.entries.reserve(table->entries.size());
    for (const tiff::Entry& entry : table->entries)
        directory.entries.push_back({.entry = entry, .old = entry});
}

Result<ExifBlock> ExifBlock::read_file(const formats::Window& file) {
    formats::Window start = file;
    const auto header = tiff::Header::read(VELL_TRY(coded(start.read_bytes(tiff::Header::size))));
    if (!header)
        return Failure{ErrorCode::ShortRead};
    ExifBlock block;
    block.order_ = header->order;
    VELL_TRY(block.read_file_directory(file, DirectoryKind::Main, header->first_directory));
    return block;
}

Result<void> ExifBlock::read_directories_below(const formats::Window& file) {
    constexpr std::pair<std::uint16_t, DirectoryKind> pointers[] = {
        {tiff::tag::exif_directory, DirectoryKind::Exif},
        {tiff::tag::gps_directory, DirectoryKind::Gps}};
    for (const auto& [tag, kind] : pointers)
        if (const auto offset = pointer(DirectoryKind::Main, tag))
            VELL_TRY(read_file_directory(file, kind, *offset));
    if (const auto offset = pointer(DirectoryKind::Exif, tiff::tag::interoperability_directory))
        VELL_TRY(read_file_directory(file, DirectoryKind::Interoperability, *offset));
    return {};
}

Result<void> ExifBlock::read_file_directory(const formats::Window& file, DirectoryKind kind,
                                            std::uint32_t offset) {
    if (offset < tiff::Header::size)
        return Failure{ErrorCode::CorruptStructure};
    const auto table = VELL_TRY(coded(tiff::Directory::at(file, offset, order_)));
    const auto entries = VELL_TRY(coded(table.entries()));
    if (entries.size() < table.announced())
        return Failure{ErrorCode::EndOfFile};
    ChangeableDirectory& directory = this->directory(kind);
    // Below the first one no other is looked for, and some programs leave the number out.
    const auto next = VELL_TRY(coded(if_sound(table.next())));
    if (!next && kind == DirectoryKind::Main)
        return Failure{ErrorCode::EndOfFile};
    directory.next = static_cast<std::uint32_t>(next.value_or(0)); // BigTIFF is not written
    directory.entries.reserve(entries.size());
    for (const tiff::Entry& entry : entries)
        directory.entries.push_back({.entry = entry, .old = entry});
    directory.place = {offset, directory.table_size()};
    return {};
}

// Where several entries have the tag, the tag reader follows the last one.
std::optional<std::uint32_t> ExifBlock::pointer(DirectoryKind parent, std::uint16_t tag) {
    std::optional<std::uint32_t> offset;
    for (const ChangeableEntry& candidate : directory(parent).entries)
        if (candidate.entry.tag == tag)
            offset = candidate.entry.offset(order_);
    return offset;
}

void ExifBlock::remove_maker_note() {
    for (ChangeableDirectory& directory : directories_)
        if (std::erase_if(directory.entries, [](const ChangeableEntry& candidate) {
                return candidate.entry.tag == tiff::tag::maker_note;
            }) > 0)
            directory.is_changed = true;
}

// Gives the parent the entry that leads to a child which has become needed, and takes away the one
// that leads to a child without entries.
void ExifBlock::link(DirectoryKind parent, std::uint16_t tag, DirectoryKind child) {
    ChangeableDirectory& above = directory(parent);
    const ChangeableDirectory& below = directory(child);
    if (!below.is_changed)
        return;
    if (below.entries.empty()) {
        if (std::erase_if(above.entries, [&](const ChangeableEntry& candidate) {
                return candidate.entry.tag == tag;
            }) > 0)
            above.is_changed = true;
    } else if (above.find(tag) == nullptr) {
        above.add(tag, FieldType::Long, std::string(4, '\0'));
    }
    above.is_changed = true;
}

bool ExifBlock::is_changed() const {
    return std::ranges::any_of(directories_, &ChangeableDirectory::is_changed);
}

bool ExifBlock::link_directories() {
    link(DirectoryKind::Exif, tiff::tag::interoperability_directory,
         DirectoryKind::Interoperability);
    link(DirectoryKind::Main, tiff::tag::exif_directory, DirectoryKind::Exif);
    link(DirectoryKind::Main, tiff::tag::gps_directory, DirectoryKind::Gps);
    return is_changed();
}

Result<std::string> ExifBlock::write(std::size_t most_bytes) {
    if (!link_directories() || (is_new() && directory(DirectoryKind::Main).entries.empty()))
        return std::string(old_);
    return ExifLayout(*this, most_bytes).write();
}

} // namespace vell::metadata
