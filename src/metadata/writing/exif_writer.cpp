#include "src/metadata/writing/exif_writer.h"

#include "src/formats/tiff/exif.h"
#include "src/metadata/reading/tag_reader.h"
#include "src/metadata/tag_table.h"
#include "src/metadata/writing/exif_block.h"
#include "src/metadata/writing/exif_value.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vell::metadata {
namespace {

using SectionKey = std::pair<SectionKind, std::uint16_t>;

// The longest value that a text has for each tag that it names.
using NamedTags = std::map<SectionKey, std::size_t>;

NamedTags named_in(std::span<const TaggedSection> sections) {
    NamedTags tags;
    for (const TaggedSection& section : sections) {
        std::size_t& longest = tags[{section.kind, section.number}];
        longest = std::max(longest, section.value.size());
    }
    return tags;
}

// Says how a block reads, to tell what a text leaves as it is. Only what may be the same as a value
// in the text is kept.
class RenderedBlock {
  public:
    RenderedBlock(const TagsAsText& tags, const ExifReadOptions& options, TextEncoding encoding,
                  const NamedTags& named) {
        std::string text;
        {
            MetadataText rendered;
            tags(options, encoding, rendered); // what was read before a failure counts
            text.reserve(static_cast<std::size_t>(rendered.size()));
            for (const MetadataText::Piece& piece : rendered.pieces())
                text += piece.bytes;
        }
        const auto sections = parse_tagged_text(text);
        if (!sections)
            return; // a value looks like the end of a section
        for (const TaggedSection& section : *sections) {
            const SectionKey key{section.kind, section.number};
            const auto tag = named.find(key);
            if (tag == named.end())
                continue;
            const bool may_be_the_same = section.value.size() <= most_of_same(tag->second);
            values_[key].push_back(may_be_the_same ? std::optional<std::string>(section.value)
                                                   : std::nullopt);
        }
    }

    std::optional<std::string_view> value(const SectionKey& key, std::size_t occurrence) const {
        const auto found = values_.find(key);
        if (found == values_.end() || occurrence >= found->second.size())
            return std::nullopt;
        return found->second[occurrence];
    }

  private:
    // No encoding has more bytes for a character.
    static std::size_t most_of_same(std::size_t size) {
        constexpr std::size_t longest_character = 4;
        return size * longest_character + params::invalid_utf8_trying_native.size();
    }

    std::map<SectionKey, std::vector<std::optional<std::string>>> values_;
};

TagFamily family_of(SectionKind kind) {
    return kind == SectionKind::Gps ? TagFamily::Gps : TagFamily::General;
}

// Where a tag stands that the block lacks as yet.
DirectoryKind home_of(SectionKind kind, TagCategory category) {
    if (kind == SectionKind::Gps)
        return DirectoryKind::Gps;
    if (kind == SectionKind::Interoperability)
        return DirectoryKind::Interoperability;
    return category == TagCategory::Exif ? DirectoryKind::Exif : DirectoryKind::Main;
}

// The block is built by these; what they say follows from it. A maker note has no text.
bool is_own_affair(SectionKind kind, std::uint16_t tag, TagCategory category) {
    constexpr std::uint16_t image_data_tags[] = {273, 279, 513, 514};
    return category == TagCategory::ExifPointer || category == TagCategory::GpsPointer ||
           category == TagCategory::InteroperabilityPointer || category == TagCategory::MakerNote ||
           (kind != SectionKind::Gps && std::ranges::count(image_data_tags, tag) > 0);
}

bool is_utf16_tag(SectionKind kind, std::uint16_t tag) {
    return kind != SectionKind::Gps && tiff::tag::is_utf16_text(tag);
}

// Where the tags stand: in a block of their own, or in a picture's file among those that say how
// the picture is stored.
enum class TagsHome : bool { Block, Picture };

// Tags of a picture's file that say how it is stored, and what is behind the places in it.
bool describes_storage(SectionKind kind, std::uint16_t tag, TagCategory category) {
    constexpr std::uint16_t subfile_types[] = {254, 255};
    constexpr std::uint16_t colour_positioning = 531;
    return kind != SectionKind::Gps && kind != SectionKind::Interoperability &&
           (category == TagCategory::Baseline || tag == colour_positioning ||
            std::ranges::count(subfile_types, tag) > 0);
}

class ExifWriter {
  public:
    ExifWriter(const TagsAsText& tags, ExifBlock& block, std::span<const TaggedSection> sections,
               const TextStore& store, TagsHome home)
        : block_(block), sections_(sections), store_(store), home_(home),
          named_(named_in(sections)),
          plain_(tags, {.want_exif = true, .want_gps = true}, store.reading(), named_),
          raw_(tags, {.want_exif = true, .want_gps = true, .raw_values = true}, store.reading(),
               named_),
          decimal_(tags, {.want_gps = true, .decimal_gps = true}, store.reading(), named_) {}

    Result<void> write();

  private:
    struct Found {
        ChangeableDirectory* directory;
        ChangeableEntry* entry;
    };

    static bool has_type(const Found& found, FieldType type) {
        return found.entry->entry.type == type;
    }

    Result<void> write(const TaggedSection& section);
    std::optional<Found> find(const TaggedSection& section, std::size_t occurrence);
    Result<bool> reads_as(const TaggedSection& section, std::size_t occurrence,
                          const std::optional<Found>& found) const;
    Result<void> set(const TaggedSection& section, const std::optional<Found>& found);
    bool set_position(const TaggedSection& section, const TagTarget& target,
                      const std::optional<Found>& found);
    void put(DirectoryKind home, const std::optional<Found>& found, const TagTarget& target,
             std::string value);
    void complete_new_directories(bool had_exif, bool had_gps);

    ExifBlock& block_;
    std::span<const TaggedSection> sections_;
    const TextStore& store_;
    TagsHome home_;
    NamedTags named_;
    RenderedBlock plain_;
    RenderedBlock raw_;
    RenderedBlock decimal_;
    // Sections of each tag that have been written, and those of them that were removals: entries
    // behind a removed one move up.
    std::map<SectionKey, std::size_t> seen_;
    std::map<SectionKey, std::size_t> removed_;
};

// A tag that occurs several times is told by the order in which the readers come by it.
std::optional<ExifWriter::Found> ExifWriter::find(const TaggedSection& section,
                                                  std::size_t occurrence) {
    constexpr std::array tag_homes{DirectoryKind::Main, DirectoryKind::Exif};
    constexpr std::array gps_homes{DirectoryKind::Gps};
    constexpr std::array interoperability_homes{DirectoryKind::Interoperability};
    std::span<const DirectoryKind> homes = tag_homes;
    if (section.kind == SectionKind::Gps)
        homes = gps_homes;
    else if (section.kind == SectionKind::Interoperability)
        homes = interoperability_homes;
    std::optional<Found> last;
    for (const DirectoryKind kind : homes) {
        ChangeableDirectory& directory = block_.directory(kind);
        for (ChangeableEntry& candidate : directory.entries) {
            if (candidate.entry.tag != section.number)
                continue;
            last = {&directory, &candidate};
            if (occurrence-- == 0)
                return last;
        }
    }
    return last; // one more than there are replaces the last
}

// Fractions and decimals, positions in either form: whatever the readers make of the entry.
Result<bool> ExifWriter::reads_as(const TaggedSection& section, std::size_t occurrence,
                                  const std::optional<Found>& found) const {
    const SectionKey key{section.kind, section.number};
    const auto plain = plain_.value(key, occurrence);
    const auto raw = raw_.value(key, occurrence);
    if (!plain && !raw)
        return false;
    const bool is_fallback = section.value.starts_with(params::invalid_utf8_trying_native);
    const bool is_utf8 = found && has_type(*found, FieldType::Utf8) && !is_fallback;
    if (is_utf8 || is_utf16_tag(section.kind, section.number))
        return plain == section.value;
    if (decimal_.value(key, occurrence) == section.value)
        return true;
    if (is_fallback) {
        const std::string_view remark = params::invalid_utf8_trying_native;
        const std::string native =
            VELL_TRY(store_.store_as(TextEncoding::Native, section.value.substr(remark.size())));
        const bool was_read_natively = !store_.chosen() && plain == native;
        return was_read_natively || plain == std::string(remark) + native;
    }
    if ((plain && VELL_TRY(store_.reads_as(*plain, section.value))) ||
        (raw && VELL_TRY(store_.reads_as(*raw, section.value))))
        return true;
    const TagRow* row = find_tag_row(family_of(section.kind), section.number);
    const bool is_undefined = row != nullptr && row->type == FieldType::Undefined;
    return is_undefined && raw && store_.native(section.value) == *raw;
}

Result<void> ExifWriter::write(const TaggedSection& section) {
    const TagCategory category = category_of(family_of(section.kind), section.number);
    const bool is_picture = home_ == TagsHome::Picture;
    if (is_own_affair(section.kind, section.number, category) ||
        (is_picture && describes_storage(section.kind, section.number, category)))
        return {};
    if (is_picture && category == TagCategory::Unknown)
        return Failure{ErrorCode::BadParameter};
    const SectionKey key{section.kind, section.number};
    const std::size_t occurrence = seen_[key]++;
    const auto found = find(section, occurrence - removed_[key]);
    if (VELL_TRY(reads_as(section, occurrence, found)))
        return {};
    if (!section.value.empty())
        return set(section, found);
    if (found) {
        found->directory->erase(*found->entry);
        ++removed_[key];
    }
    return {};
}

Result<void> ExifWriter::set(const TaggedSection& section, const std::optional<Found>& found) {
    const TagFamily family = family_of(section.kind);
    const TagRow* row = find_tag_row(family, section.number);
    if (row == nullptr && !found)
        return Failure{ErrorCode::BadParameter};
    // Exif 3.0 lets each of its texts be of either type.
    const bool keeps_type = row == nullptr || (row->type == FieldType::Ascii && found &&
                                               has_type(*found, FieldType::Utf8));
    const TagTarget target{family, section.number,
                           keeps_type ? found->entry->entry.type : row->type, block_.order()};
    if (is_position(target) && set_position(section, target, found))
        return {};
    const DirectoryKind home = home_of(section.kind, row ? row->category : TagCategory::Unknown);
    put(home, found, target, VELL_TRY(exif_value(section.value, target, store_)));
    return {};
}

void ExifWriter::put(DirectoryKind home, const std::optional<Found>& found, const TagTarget& target,
                     std::string value) {
    if (found)
        found->directory->set(*found->entry, target.type, std::move(value));
    else
        block_.directory(home).add(target.tag, target.type, std::move(value));
}

// Decimal degrees carry the reference in their sign. North and east may be said by a section of
// their own instead.
bool ExifWriter::set_position(const TaggedSection& section, const TagTarget& target,
                              const std::optional<Found>& found) {
    auto position = position_from_degrees(section.value, target.order);
    if (!position)
        return false;
    put(DirectoryKind::Gps, found, target, std::move(*position));
    const auto reference_tag = static_cast<std::uint16_t>(target.tag - 1);
    const bool is_negative = section.value.starts_with('-');
    if (!is_negative && named_.contains({SectionKind::Gps, reference_tag}))
        return true;
    const bool is_latitude = target.tag == 2 || target.tag == 20;
    const TagTarget reference{target.family, reference_tag, FieldType::Ascii, target.order};
    const char letter = is_latitude ? (is_negative ? 'S' : 'N') : (is_negative ? 'W' : 'E');
    put(DirectoryKind::Gps, find({SectionKind::Gps, reference_tag, {}}, 0), reference,
        std::string{letter, '\0'});
    return true;
}

// What the standard wants in every Exif and GPS directory.
void ExifWriter::complete_new_directories(bool had_exif, bool had_gps) {
    ChangeableDirectory& exif = block_.directory(DirectoryKind::Exif);
    constexpr std::uint16_t exif_version = 36864;
    if (!had_exif && !exif.entries.empty() && exif.find(exif_version) == nullptr)
        exif.add(exif_version, FieldType::Undefined, "0230");
    ChangeableDirectory& gps = block_.directory(DirectoryKind::Gps);
    if (!had_gps && !gps.entries.empty() && gps.find(formats::tiff::gps_tag::version) == nullptr)
        gps.add(formats::tiff::gps_tag::version, FieldType::Byte, {2, 3, 0, 0});
}

Result<void> ExifWriter::write() {
    const bool had_exif = block_.directory(DirectoryKind::Exif).place.has_value();
    const bool had_gps = block_.directory(DirectoryKind::Gps).place.has_value();
    for (const TaggedSection& section : sections_)
        if (section.kind != SectionKind::Iptc && section.kind != SectionKind::Comment)
            VELL_TRY(write(section));
    complete_new_directories(had_exif, had_gps);
    return {};
}

} // namespace

Result<std::string> write_exif(std::string_view existing, std::span<const TaggedSection> sections,
                               MakerNote maker_note, const TextStore& store,
                               std::size_t most_bytes) {
    ExifBlock block = VELL_TRY(ExifBlock::read(existing));
    const auto tags = [&](const ExifReadOptions& options, TextEncoding encoding,
                          MetadataText& text) {
        static_cast<void>(read_tags(existing, options, encoding, text));
    };
    VELL_TRY(ExifWriter(tags, block, sections, store, TagsHome::Block).write());
    if (maker_note == MakerNote::Remove)
        block.remove_maker_note();
    return block.write(most_bytes);
}

Result<void> change_file_tags(ExifBlock& block, const TagsAsText& tags,
                              std::span<const TaggedSection> sections, MakerNote maker_note,
                              const TextStore& store) {
    VELL_TRY(ExifWriter(tags, block, sections, store, TagsHome::Picture).write());
    if (maker_note == MakerNote::Remove)
        block.remove_maker_note();
    return {};
}

} // namespace vell::metadata
