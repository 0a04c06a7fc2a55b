#include "src/metadata/reading/tag_reader.h"

#include "src/base/number_text.h"
#include "src/metadata/faults.h"
#include "src/metadata/reading/tag_value.h"
#include "src/metadata/tag_table.h"
#include "src/metadata/values/tag_set.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace vell::metadata {
namespace {

using formats::Window;

// ShortRead when there is no header, CorruptStructure when the directory would lie in it.
Result<tiff::Start> read_start(const Window& block) {
    const auto start = tiff::Start::read(block);
    if (!start && start.error().damage == formats::Damage::Absent)
        return Failure{ErrorCode::ShortRead};
    if (VELL_TRY(coded(start)).first_directory < tiff::Header::size)
        return Failure{ErrorCode::CorruptStructure};
    return *start;
}

// The directories that the entries of another lead to; 0 for none.
struct Pointers {
    std::uint64_t exif = 0;
    std::uint64_t gps = 0;
    std::uint64_t interoperability = 0;

    void note(const tiff::Entry& entry, ByteOrder order) {
        if (entry.tag == tiff::tag::exif_directory)
            exif = entry.place(order);
        else if (entry.tag == tiff::tag::gps_directory)
            gps = entry.place(order);
        else if (entry.tag == tiff::tag::interoperability_directory)
            interoperability = entry.place(order);
    }
};

// The positions in the GPS directory; the tag before each tells north from south, east from west.
constexpr std::array<std::uint16_t, 4> position_tags{2, 4, 20, 22};

using Entries = std::vector<tiff::Entry>;

class TagReader {
  public:
    TagReader(const Window& block, tiff::Layout layout, const ReaderRules& rules,
              const ExifReadOptions& options, TextEncoding source, MetadataText& text)
        : block_(block), layout_(layout), options_(options), text_(text),
          values_(block, layout.order, rules, options, source, text) {}

    // Each kind of directory is read once and none leads back, so that loops end by themselves.
    Result<void> read(std::uint64_t first_directory, TagRoot root) {
        Pointers pointers;
        directory_ = TagDirectory::Gps;
        if (root == TagRoot::Gps)
            return options_.want_gps ? walk(first_directory, "GPS", pointers) : Result<void>();
        if (root == TagRoot::Exif && !options_.want_exif)
            return {};
        directory_ = root == TagRoot::Exif ? TagDirectory::Exif : TagDirectory::First;
        VELL_TRY(walk(first_directory, options_.want_exif ? "EXIF" : "", pointers));
        if (options_.want_exif) {
            Pointers inner;
            directory_ = TagDirectory::Exif;
            VELL_TRY(walk_inner(pointers.exif, "EXIF", inner));
            directory_ = TagDirectory::Interoperability;
            VELL_TRY(walk_inner(inner.interoperability, "INTEROP", inner));
        }
        directory_ = TagDirectory::Gps;
        if (options_.want_gps)
            VELL_TRY(walk_inner(pointers.gps, "GPS", pointers));
        return {};
    }

    // Takes what stands in other tags for texts that a person reads.
    Result<void> prepare_readable(TagRoot root, TextEncoding source) {
        if (options_.readable && !options_.raw_values)
            VELL_TRY(readable_.emplace(source).add(block_, root));
        return {};
    }

  private:
    // What is wrong in an inner directory, or missing of it, ends that directory alone: what was
    // read before is no worse for it.
    Result<void> walk_inner(std::uint64_t offset, std::string_view section, Pointers& pointers) {
        if (offset == 0)
            return {};
        const Result<void> done = walk(offset, section, pointers);
        if (!done &&
            (done.error() == ErrorCode::CorruptStructure || done.error() == ErrorCode::EndOfFile))
            return {};
        return done;
    }

    // Without a section nothing is printed.
    Result<void> walk(std::uint64_t offset, std::string_view section, Pointers& pointers) {
        const auto directory = tiff::Directory::at(block_, offset, layout_);
        if (!directory && directory.error().damage == formats::Damage::CutOff)
            return values_.beyond_end();
        const std::uint16_t announced = VELL_TRY(coded(directory)).announced();
        const Entries entries = VELL_TRY(coded(directory->entries()));
        const TagFamily family = section == "GPS" ? TagFamily::Gps : TagFamily::General;
        if (family == TagFamily::Gps && options_.decimal_gps)
            note_references(entries);
        for (const tiff::Entry& entry : entries) {
            pointers.note(entry, layout_.order);
            if (!section.empty())
                VELL_TRY(print(entry, section, family));
        }
        // The offset of a next directory is not followed, and may be missing.
        if (entries.size() < announced)
            return values_.beyond_end();
        return {};
    }

    // A section is closed whatever became of its value.
    Result<void> print(const tiff::Entry& entry, std::string_view section, TagFamily family) {
        if (!is_printed(category_of(family, entry.tag), options_.hide_maker_note))
            return {};
        const std::string number = to_text(std::uint64_t{entry.tag});
        text_.append("\r##" + std::string(section) + " " + number + "\r");
        const bool is_done =
            append_readable(entry) || (family == TagFamily::Gps && append_decimal(entry));
        const Result<void> done = is_done ? Result<void>() : values_.append(entry, family);
        text_.append("\r##END " + number);
        return done;
    }

    bool append_readable(const tiff::Entry& entry) {
        if (!readable_)
            return false;
        const auto text = readable_->readable_text({directory_, 0, entry});
        if (text)
            text_.append(text->bytes, text->encoding);
        return text.has_value();
    }

    void note_references(const Entries& entries) {
        for (const tiff::Entry& entry : entries) {
            const auto position = std::ranges::find(position_tags, entry.tag + 1);
            if (position != position_tags.end() && entry.type == FieldType::Ascii)
                references_[static_cast<std::size_t>(position - position_tags.begin())] =
                    values_.first_byte(entry);
        }
    }

    bool append_decimal(const tiff::Entry& entry) {
        const auto position = std::ranges::find(position_tags, entry.tag);
        if (position == position_tags.end() || !options_.decimal_gps || options_.raw_values)
            return false;
        return values_.append_decimal(
            entry, references_[static_cast<std::size_t>(position - position_tags.begin())]);
    }

    Window block_;
    tiff::Layout layout_;
    const ExifReadOptions& options_;
    MetadataText& text_;
    ValueReader values_;
    std::array<char, position_tags.size()> references_{};
    TagDirectory directory_ = TagDirectory::First;
    std::optional<TagSet> readable_;
};

Result<void> read_tags(const Window& block, const ReaderRules& rules, TagRoot root,
                       const ExifReadOptions& options, TextEncoding source, MetadataText& text) {
    const tiff::Start start = VELL_TRY(read_start(block));
    TagReader reader(block, start.layout, rules, options, source, text);
    VELL_TRY(reader.prepare_readable(root, source));
    return reader.read(start.first_directory, root);
}

} // namespace

Result<void> read_tags(files::BufferedReader& file, const ExifReadOptions& options,
                       TextEncoding source, MetadataText& text) {
    return read_tags(Window(file).from(file.position()), file_rules, TagRoot::Image, options,
                     source, text);
}

Result<void> read_tags(std::string_view block, const ExifReadOptions& options, TextEncoding source,
                       MetadataText& text) {
    BytesInMemory memory(block);
    return read_tags(Window(memory), memory_rules, TagRoot::Image, options, source, text);
}

Result<void> read_tags(const Window& block, TagRoot root, const ExifReadOptions& options,
                       TextEncoding source, MetadataText& text) {
    return read_tags(block, memory_rules, root, options, source, text);
}

Result<std::string> find_tag(files::BufferedReader& file, std::uint16_t tag, std::uint64_t most) {
    const Window block = Window(file).from(file.position());
    const tiff::Start start = VELL_TRY(read_start(block));
    const ByteOrder order = start.layout.order;
    const auto directory =
        VELL_TRY(coded(tiff::Directory::at(block, start.first_directory, start.layout)));
    const Entries entries = VELL_TRY(coded(directory.entries()));
    const auto found = std::ranges::find(entries, tag, &tiff::Entry::tag);
    if (found == entries.end())
        return Failure{entries.size() == directory.announced() ? ErrorCode::NothingFound
                                                               : ErrorCode::EndOfFile};
    if (!is_known(found->type))
        return Failure{ErrorCode::CorruptStructure};
    const auto entries_to_it = static_cast<std::size_t>(found - entries.begin() + 1);
    if (!found->is_inline() && found->place(order) < directory.end_of(entries_to_it) &&
        !start.layout.is_big) // whose entries have room for values of eight bytes
        return Failure{ErrorCode::CorruptStructure};
    if (found->value_size() > most)
        return Failure{ErrorCode::ResourceTooLarge};
    std::string bytes = VELL_TRY(coded(tiff::read_value(block, *found, order, most)));
    if (bytes.size() < found->value_size())
        return Failure{ErrorCode::EndOfFile};
    return bytes;
}

} // namespace vell::metadata
