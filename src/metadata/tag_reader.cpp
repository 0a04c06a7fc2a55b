#include "src/metadata/tag_reader.h"

#include "src/base/number_text.h"
#include "src/metadata/ifd.h"
#include "src/metadata/tag_table.h"
#include "src/metadata/tag_value.h"

#include <algorithm>
#include <array>

namespace vell::metadata {
namespace {

class FileBlock : public TagBlock {
  public:
    explicit FileBlock(files::BufferedReader& file)
        : file_(file), start_(file.position()), size_(file.remaining()) {}

    std::uint64_t start() const { return start_; }
    std::uint64_t size() const override { return size_; }
    Result<std::string_view> bytes(std::uint64_t offset, std::uint64_t count) override {
        file_.seek(start_ + offset);
        bytes_ = VELL_TRY(file_.read_bytes(count));
        return std::string_view(bytes_);
    }

  private:
    files::BufferedReader& file_;
    std::uint64_t start_;
    std::uint64_t size_;
    std::string bytes_;
};

class MemoryBlock : public TagBlock {
  public:
    explicit MemoryBlock(std::string_view bytes) : bytes_(bytes) {}

    std::uint64_t size() const override { return bytes_.size(); }
    Result<std::string_view> bytes(std::uint64_t offset, std::uint64_t count) override {
        if (offset >= bytes_.size())
            return std::string_view();
        return bytes_.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(count));
    }

  private:
    std::string_view bytes_;
};

// ShortRead when there is no header, CorruptStructure when the directory would lie in it.
Result<TiffHeader> read_header(TagBlock& block) {
    const auto header = TiffHeader::read(VELL_TRY(block.bytes(0, TiffHeader::size)));
    if (!header)
        return Failure{ErrorCode::ShortRead};
    if (header->first_directory < TiffHeader::size)
        return Failure{ErrorCode::CorruptStructure};
    return *header;
}

// The entries of a directory, as many of them as there are.
class Directory {
  public:
    static constexpr std::size_t count_size = 2;

    static Result<Directory> read(TagBlock& block, std::uint64_t offset, ByteOrder order) {
        const auto count = load<std::uint16_t>(VELL_TRY(block.bytes(offset, count_size)), 0, order);
        if (!count) // and then at least one entry is missing
            return Directory({}, 1, order);
        const std::string_view bytes =
            VELL_TRY(block.bytes(offset + count_size, std::uint64_t{*count} * IfdEntry::size));
        return Directory(std::string(bytes), *count, order);
    }

    std::size_t size() const { return bytes_.size() / IfdEntry::size; }
    bool is_whole() const { return size() == announced_; }
    IfdEntry operator[](std::size_t index) const {
        return IfdEntry::read(
            std::string_view(bytes_).substr(index * IfdEntry::size, IfdEntry::size), order_);
    }

  private:
    Directory(std::string bytes, std::size_t announced, ByteOrder order)
        : bytes_(std::move(bytes)), announced_(announced), order_(order) {}

    std::string bytes_;
    std::size_t announced_;
    ByteOrder order_;
};

// The directories that the entries of another lead to; 0 for none.
struct Pointers {
    std::uint32_t exif = 0;
    std::uint32_t gps = 0;
    std::uint32_t interoperability = 0;

    void note(const IfdEntry& entry, ByteOrder order) {
        if (entry.tag == tag::exif_directory)
            exif = entry.offset(order);
        else if (entry.tag == tag::gps_directory)
            gps = entry.offset(order);
        else if (entry.tag == tag::interoperability_directory)
            interoperability = entry.offset(order);
    }
};

// The positions in the GPS directory; the tag before each tells north from south, east from west.
constexpr std::array<std::uint16_t, 4> position_tags{2, 4, 20, 22};

class TagReader {
  public:
    TagReader(TagBlock& block, ByteOrder order, const ReaderRules& rules,
              const ExifReadOptions& options, TextEncoding source, MetadataText& text)
        : block_(block), order_(order), options_(options), text_(text),
          values_(block, order, rules, options, source, text) {}

    // Each kind of directory is read once and none leads back, so that loops end by themselves.
    Result<void> read(std::uint32_t first_directory) {
        Pointers pointers;
        VELL_TRY(walk(first_directory, options_.want_exif ? "EXIF" : "", pointers));
        if (options_.want_exif) {
            Pointers inner;
            VELL_TRY(walk_inner(pointers.exif, "EXIF", inner));
            VELL_TRY(walk_inner(inner.interoperability, "INTEROP", inner));
        }
        if (options_.want_gps)
            VELL_TRY(walk_inner(pointers.gps, "GPS", pointers));
        return {};
    }

  private:
    // What is wrong in an inner directory, or missing of it, ends that directory alone: what was
    // read before is no worse for it.
    Result<void> walk_inner(std::uint32_t offset, std::string_view section, Pointers& pointers) {
        if (offset == 0)
            return {};
        const Result<void> done = walk(offset, section, pointers);
        if (!done &&
            (done.error() == ErrorCode::CorruptStructure || done.error() == ErrorCode::EndOfFile))
            return {};
        return done;
    }

    // Without a section nothing is printed.
    Result<void> walk(std::uint32_t offset, std::string_view section, Pointers& pointers) {
        const Directory directory = VELL_TRY(Directory::read(block_, offset, order_));
        const TagFamily family = section == "GPS" ? TagFamily::Gps : TagFamily::General;
        if (family == TagFamily::Gps && options_.decimal_gps)
            note_references(directory);
        for (std::size_t i = 0; i < directory.size(); ++i) {
            const IfdEntry entry = directory[i];
            pointers.note(entry, order_);
            if (!section.empty())
                VELL_TRY(print(entry, section, family));
        }
        // The offset of a next directory is not followed, and may be missing.
        if (!directory.is_whole())
            return values_.beyond_end();
        return {};
    }

    // A section is closed whatever became of its value.
    Result<void> print(const IfdEntry& entry, std::string_view section, TagFamily family) {
        if (!is_printed(category_of(family, entry.tag), options_.hide_maker_note))
            return {};
        const std::string number = to_text(std::uint64_t{entry.tag});
        text_.append("\r##" + std::string(section) + " " + number + "\r");
        const bool is_done = family == TagFamily::Gps && append_decimal(entry);
        const Result<void> done = is_done ? Result<void>() : values_.append(entry, family);
        text_.append("\r##END " + number);
        return done;
    }

    void note_references(const Directory& directory) {
        for (std::size_t i = 0; i < directory.size(); ++i) {
            const IfdEntry entry = directory[i];
            const auto position = std::ranges::find(position_tags, entry.tag + 1);
            if (position != position_tags.end() && entry.type == FieldType::Ascii)
                references_[static_cast<std::size_t>(position - position_tags.begin())] =
                    values_.first_byte(entry);
        }
    }

    bool append_decimal(const IfdEntry& entry) {
        const auto position = std::ranges::find(position_tags, entry.tag);
        if (position == position_tags.end() || !options_.decimal_gps || options_.raw_values)
            return false;
        return values_.append_decimal(
            entry, references_[static_cast<std::size_t>(position - position_tags.begin())]);
    }

    TagBlock& block_;
    ByteOrder order_;
    const ExifReadOptions& options_;
    MetadataText& text_;
    ValueReader values_;
    std::array<char, position_tags.size()> references_{};
};

Result<void> read_tags(TagBlock& block, const ReaderRules& rules, const ExifReadOptions& options,
                       TextEncoding source, MetadataText& text) {
    const TiffHeader header = VELL_TRY(read_header(block));
    return TagReader(block, header.order, rules, options, source, text)
        .read(header.first_directory);
}

} // namespace

Result<void> read_tags(files::BufferedReader& file, const ExifReadOptions& options,
                       TextEncoding source, MetadataText& text) {
    FileBlock block(file);
    return read_tags(block, file_rules, options, source, text);
}

Result<void> read_tags(std::string_view block, const ExifReadOptions& options, TextEncoding source,
                       MetadataText& text) {
    MemoryBlock memory(block);
    return read_tags(memory, memory_rules, options, source, text);
}

Result<std::string> find_tag(files::BufferedReader& file, std::uint16_t tag, std::uint64_t most) {
    FileBlock block(file);
    const TiffHeader header = VELL_TRY(read_header(block));
    const Directory directory =
        VELL_TRY(Directory::read(block, header.first_directory, header.order));
    for (std::size_t i = 0; i < directory.size(); ++i) {
        const IfdEntry entry = directory[i];
        if (entry.tag != tag)
            continue;
        if (!is_known(entry.type))
            return Failure{ErrorCode::CorruptStructure};
        if (entry.is_inline())
            return std::string(entry.inline_value());
        const std::uint64_t end_of_entry =
            header.first_directory + Directory::count_size + (i + 1) * IfdEntry::size;
        if (entry.offset(header.order) < end_of_entry)
            return Failure{ErrorCode::CorruptStructure};
        if (entry.value_size() > most)
            return Failure{ErrorCode::ResourceTooLarge};
        file.seek(block.start() + entry.offset(header.order));
        std::string bytes = VELL_TRY(file.read_bytes(entry.value_size()));
        if (bytes.size() < entry.value_size())
            return Failure{ErrorCode::EndOfFile};
        return bytes;
    }
    return Failure{directory.is_whole() ? ErrorCode::NothingFound : ErrorCode::EndOfFile};
}

bool has_tiff_header(std::string_view first_bytes) {
    return TiffHeader::read(first_bytes).has_value();
}

} // namespace vell::metadata
