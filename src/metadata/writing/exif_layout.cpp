#include "src/metadata/writing/exif_layout.h"

#include "src/formats/tiff/directory.h"

#include <algorithm>

namespace vell::metadata {
namespace {

constexpr std::size_t longest_chain = 16; // directories behind IFD0; cameras write one

// Tags that lead to image data (TIFF 6.0, sections 8 and 22): offsets, and sizes.
struct ImageDataTags {
    std::uint16_t offsets;
    std::uint16_t sizes;
};
constexpr ImageDataTags image_data_tags[] = {{513, 514}, {273, 279}};

// Tags whose values may hold offsets to anywhere: SubIFDs, maker notes, DNGPrivateData.
constexpr std::uint16_t referring_tags[] = {tiff::tag::sub_directories, tiff::tag::maker_note,
                                            50740};

// Whether the entry may lead to bytes that the lists of directories and values do not tell. The
// value of a type that is not known may stand anywhere, and have any length.
bool may_refer(const tiff::Entry& entry) {
    return std::ranges::count(referring_tags, entry.tag) > 0 || !is_known(entry.type);
}

std::uint32_t number_at(const tiff::Entry& entry, std::string_view value, std::size_t index,
                        ByteOrder order) {
    if (entry.type == FieldType::Short)
        return load<std::uint16_t>(value, index * 2, order).value_or(0);
    return load<std::uint32_t>(value, index * 4, order).value_or(0);
}

const tiff::Entry* find_entry(const std::vector<tiff::Entry>& entries, std::uint16_t tag) {
    const auto found = std::ranges::find(entries, tag, &tiff::Entry::tag);
    return found == entries.end() ? nullptr : &*found;
}

std::string header_bytes(ByteOrder order, std::size_t first_directory) {
    std::string bytes;
    tiff::Header{.order = order, .first_directory = static_cast<std::uint32_t>(first_directory)}
        .write(bytes);
    return bytes;
}

void put(std::string& bytes, std::size_t at, std::string_view part) {
    bytes.replace(at, part.size(), part);
}

} // namespace

void BlockRanges::add(std::uint64_t start, std::uint64_t size) {
    const std::uint64_t block_size = changes_.size() - 1;
    if (start >= block_size)
        return;
    const std::uint64_t end = start + std::min(size, block_size - start);
    ++changes_[static_cast<std::size_t>(start)];
    --changes_[static_cast<std::size_t>(end)];
}

std::vector<bool> BlockRanges::bytes() const {
    std::vector<bool> covered(changes_.size() - 1);
    std::int32_t depth = 0;
    for (std::size_t at = 0; at < covered.size(); ++at) {
        depth += changes_[at];
        covered[at] = depth > 0;
    }
    return covered;
}

// Values stay where they are when their entries do; so do tables in which nothing changes.
void ExifLayout::keep_unchanged() {
    kept_ranges_.add(0, tiff::Header::size);
    for (const ChangeableDirectory& directory : block_.directories_) {
        if (!directory.is_changed && directory.place)
            kept_ranges_.add(directory.place->start, directory.place->size);
        std::vector<tiff::Entry> unchanged;
        for (const ChangeableEntry& candidate : directory.entries) {
            may_refer_ = may_refer_ || may_refer(candidate.entry);
            if (!candidate.new_value)
                unchanged.push_back(candidate.entry);
        }
        keep_entries(unchanged);
    }
    keep_chain(block_.directory(DirectoryKind::Main).next);
}

void ExifLayout::keep_entries(const std::vector<tiff::Entry>& entries) {
    const ByteOrder order = block_.order_;
    BytesInMemory bytes(old_);
    const formats::Window block(bytes);
    for (const tiff::Entry& entry : entries)
        if (!entry.is_inline())
            kept_ranges_.add(entry.offset(order), entry.value_size());
    for (const ImageDataTags& tags : image_data_tags) {
        const tiff::Entry* offsets = find_entry(entries, tags.offsets);
        const tiff::Entry* sizes = find_entry(entries, tags.sizes);
        if (offsets == nullptr || sizes == nullptr)
            continue;
        // Of bytes in memory; they cannot fail.
        const std::string starts = tiff::read_value(block, *offsets, order, old_.size()).value();
        const std::string lengths = tiff::read_value(block, *sizes, order, old_.size()).value();
        const std::size_t count = std::min<std::size_t>(offsets->count, starts.size() / 2);
        for (std::size_t i = 0; i < count; ++i)
            kept_ranges_.add(number_at(*offsets, starts, i, order),
                             number_at(*sizes, lengths, i, order));
    }
}

// The directories behind IFD0, of which the first describes the thumbnail.
void ExifLayout::keep_chain(std::uint32_t offset) {
    for (std::size_t length = 0; offset != 0 && length < longest_chain; ++length) {
        const auto table = read_table(old_, offset, block_.order_);
        if (!table)
            return;
        kept_ranges_.add(table->place.start, table->place.size);
        keep_entries(table->entries);
        may_refer_ = may_refer_ || std::ranges::any_of(table->entries, may_refer);
        offset = table->next;
    }
}

// Bytes that no entry accounts for stay where something may lead to them all the same.
void ExifLayout::find_kept_bytes() {
    kept_ = kept_ranges_.bytes();
    if (!may_refer_)
        return;
    BlockRanges changeable(old_.size());
    for (const ChangeableDirectory& directory : block_.directories_) {
        if (!directory.is_changed || !directory.place)
            continue;
        changeable.add(directory.place->start, directory.place->size);
        const auto table = read_table(old_, directory.place->start, block_.order_);
        for (const tiff::Entry& entry : table->entries)
            if (!entry.is_inline())
                changeable.add(entry.offset(block_.order_), entry.value_size());
    }
    const std::vector<bool> may_change = changeable.bytes();
    for (std::size_t at = 0; at < kept_.size(); ++at)
        kept_[at] = kept_[at] || !may_change[at];
}

Result<void> ExifLayout::collect_parts() {
    std::size_t total = 0;
    for (ChangeableDirectory& directory : block_.directories_) {
        const bool is_main = &directory == &block_.directory(DirectoryKind::Main);
        if (!directory.is_changed || (directory.entries.empty() && !is_main))
            continue;
        parts_.push_back({directory.table_size(), directory.place, &directory, nullptr});
        total += directory.table_size();
        for (ChangeableEntry& candidate : directory.entries) {
            if (!candidate.new_value || candidate.entry.is_inline())
                continue;
            std::optional<BlockRange> old_place;
            if (candidate.old && !candidate.old->is_inline())
                old_place = {candidate.old->offset(block_.order_),
                             static_cast<std::size_t>(candidate.old->value_size())};
            parts_.push_back({candidate.new_value->size(), old_place, nullptr, &candidate});
            total += candidate.new_value->size();
            if (total > most_bytes_)
                return Failure{ErrorCode::ResourceTooLarge};
        }
    }
    return {};
}

void ExifLayout::take_old_place(Part& part) {
    const BlockRange place = part.old_place.value_or(BlockRange{});
    if (part.size > place.size || place.start > used_.size() ||
        part.size > used_.size() - place.start)
        return;
    const auto begin = used_.begin() + static_cast<std::ptrdiff_t>(place.start);
    const auto end = begin + static_cast<std::ptrdiff_t>(part.size);
    if (std::find(begin, end, true) != end)
        return;
    std::fill(begin, end, true);
    part.place = place.start;
}

// The next room for anything; the one at the end has no bounds. Values begin on word boundaries
// (TIFF 6.0, section 2).
BlockRange ExifLayout::gap_from(std::size_t start) const {
    while (start < used_.size() && (used_[start] || start % 2 != 0))
        ++start;
    start += start % 2;
    std::size_t end = start;
    while (end < used_.size() && !used_[end])
        ++end;
    return {start, end < used_.size() ? end - start : std::string::npos};
}

void ExifLayout::place_the_others() {
    BlockRange gap = gap_from(tiff::Header::size);
    for (Part& part : parts_) {
        if (part.place)
            continue;
        while (part.size > gap.size)
            gap = gap_from(gap.end());
        part.place = gap.start;
        const std::size_t taken = part.size + part.size % 2;
        gap.start += taken;
        if (gap.size != std::string::npos)
            gap.size -= std::min(taken, gap.size);
    }
}

std::optional<std::size_t> ExifLayout::new_place(const ChangeableDirectory& directory) const {
    const auto part = std::ranges::find(parts_, &directory, &Part::table);
    return part == parts_.end() ? std::nullopt : part->place;
}

void ExifLayout::point_to(DirectoryKind parent, std::uint16_t tag, DirectoryKind child) {
    const auto place = new_place(block_.directory(child));
    if (!place)
        return;
    auto& entries = block_.directory(parent).entries;
    const auto last =
        std::find_if(entries.rbegin(), entries.rend(),
                     [&](const ChangeableEntry& candidate) { return candidate.entry.tag == tag; });
    if (last == entries.rend() || (last->old && last->old->offset(block_.order_) == *place))
        return;
    last->entry.set_offset(*place, block_.order_);
    const ChangeableDirectory& directory = block_.directory(child);
    if (directory.place && directory.table_size() <= directory.place->size)
        return;
    // Other readers, who are to see what was added, follow no pointer of another form.
    if (last->entry.type != tiff::ifd_offset)
        last->entry.type = FieldType::Long;
    last->entry.count = 1;
}

Result<std::string> ExifLayout::write() {
    VELL_TRY(collect_parts());
    keep_unchanged();
    find_kept_bytes();
    used_ = kept_;
    for (Part& part : parts_)
        take_old_place(part);
    place_the_others();

    const auto last_kept = std::find(kept_.rbegin(), kept_.rend(), true);
    std::size_t size = std::max<std::size_t>(tiff::Header::size, kept_.rend() - last_kept);
    for (const Part& part : parts_)
        size = std::max(size, *part.place + part.size);
    if (size > most_bytes_)
        return Failure{ErrorCode::ResourceTooLarge};

    point_to(DirectoryKind::Exif, tiff::tag::interoperability_directory,
             DirectoryKind::Interoperability);
    point_to(DirectoryKind::Main, tiff::tag::exif_directory, DirectoryKind::Exif);
    point_to(DirectoryKind::Main, tiff::tag::gps_directory, DirectoryKind::Gps);
    std::string bytes(size, '\0');
    for (std::size_t at = 0; at < kept_.size(); ++at)
        if (kept_[at])
            bytes[at] = old_[at];
    for (const Part& part : parts_) {
        if (part.value == nullptr)
            continue;
        part.value->entry.set_offset(*part.place, block_.order_);
        put(bytes, *part.place, *part.value->new_value);
    }
    for (const Part& part : parts_)
        if (part.table != nullptr)
            put(bytes, *part.place, part.table->table_bytes(block_.order_));
    const std::string header =
        header_bytes(block_.order_, *new_place(block_.directory(DirectoryKind::Main)));
    // A header may say something else than 42; what was read stays.
    put(bytes, 0, block_.is_new() ? std::string_view(header) : old_.substr(0, 4));
    put(bytes, 4, std::string_view(header).substr(4));
    return bytes;
}

} // namespace vell::metadata
