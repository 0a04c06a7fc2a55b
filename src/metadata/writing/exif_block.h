// A block of tags that is to be changed: its directories, and its bytes anew.
//
// What is not changed keeps its bytes and its place, so that offsets which only others know, such
// as those inside a maker note, stay true. Byte order is that of the block, little-endian for a new
// one.
#pragma once

#include "src/base/result.h"
#include "src/formats/tiff/records.h"
#include "src/formats/window.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::metadata {

namespace tiff = formats::tiff;
using tiff::FieldType;

enum class DirectoryKind : std::uint8_t { Main, Exif, Gps, Interoperability };

// An entry, and the value that it gets instead of its own, or whether its own is to stand behind
// the directory wherever that comes to stand.
struct ChangeableEntry {
    tiff::Entry entry;
    std::optional<std::string> new_value = {};
    std::optional<tiff::Entry> old = {}; // what stood there before; none for an added entry
    bool follows = false;

    void set(FieldType type, std::string value);
};

// A part of the block's bytes.
struct BlockRange {
    std::size_t start = 0;
    std::size_t size = 0;

    std::size_t end() const { return start + size; }
};

struct ChangeableDirectory {
    std::optional<BlockRange> place; // nullopt: stands nowhere yet
    std::vector<ChangeableEntry> entries;
    std::uint32_t next = 0;
    bool is_changed = false;

    // The entry of that tag with that index among them.
    ChangeableEntry* find(std::uint16_t tag, std::size_t occurrence = 0);
    void set(ChangeableEntry& entry, FieldType type, std::string value);
    // Stands before the first entry with a higher tag.
    void add(std::uint16_t tag, FieldType type, std::string value);
    void erase(const ChangeableEntry& entry);
    // Whether all entries are those that were read, in their place.
    bool is_as_read() const;

    std::size_t table_size() const;
    std::string table_bytes(ByteOrder order) const;
};

class ExifBlock {
  public:
    // ShortRead without a header, CorruptStructure when IFD0 lies nowhere in the block. No bytes at
    // all make a new block. Directories below IFD0 that cannot be read count as missing.
    static Result<ExifBlock> read(std::string_view bytes);
    // A block whose bytes stay in a file, with the first directory, and then with those below it;
    // it is not written by `write`. A directory that cannot be read whole is EndOfFile, one that
    // would stand in the header CorruptStructure.
    static Result<ExifBlock> read_file(const formats::Window& file);
    Result<void> read_directories_below(const formats::Window& file);

    ByteOrder order() const { return order_; }
    bool is_new() const { return old_.empty(); }
    ChangeableDirectory& directory(DirectoryKind kind) {
        return directories_[static_cast<std::size_t>(kind)];
    }
    void remove_maker_note();
    // Makes the entries that lead to directories follow from what is in these; whether anything has
    // changed.
    bool link_directories();

    // The block's bytes; those of an unchanged one are the old ones, and a new one without entries
    // has none. ResourceTooLarge for more than `most_bytes`.
    Result<std::string> write(std::size_t most_bytes);

  private:
    void read_directory(DirectoryKind kind, std::uint32_t offset);
    Result<void> read_file_directory(const formats::Window& file, DirectoryKind kind,
                                     std::uint32_t offset);
    std::optional<std::uint32_t> pointer(DirectoryKind parent, std::uint16_t tag);
    void link(DirectoryKind parent, std::uint16_t tag, DirectoryKind child);
    bool is_changed() const;

    friend class ExifLayout;

    std::string_view old_;
    ByteOrder order_ = ByteOrder::Little;
    std::array<ChangeableDirectory, 4> directories_;
};

} // namespace vell::metadata
