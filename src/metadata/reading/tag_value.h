// The values of tags as text.
#pragma once

#include "src/base/result.h"
#include "src/formats/tiff/directory.h"
#include "src/metadata/metadata_request.h"
#include "src/metadata/metadata_text.h"
#include "src/metadata/tag_table.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace vell::metadata {

// Where the text of a file and that of a block in memory differ. Solutions compare what they get
// with what they stored from either, so neither reader may fall in with the other.
struct ReaderRules {
    // What lies beyond the end: a block's values are cut there, and one that begins there is a
    // corrupt tag; in a file it is a read that fails, of which rationals only say "<readErr>".
    bool values_are_cut;
    // A LONG of 2^31 and above is negative.
    bool longs_are_signed;
    // The word that a FLOAT is taken for goes through single precision, which keeps 24 bits of it.
    bool floats_are_single;
    // A signed rational over 0 is no text at all instead of "nan".
    bool signed_over_zero_is_empty;
};
inline constexpr ReaderRules file_rules{false, false, false, true};
inline constexpr ReaderRules memory_rules{true, true, true, false};

// Appends values of one block to a text.
//
// Values may overlap, so that a small file can announce any amount of text. Those of real files do
// not: all values together may be as long as the block and 64 KiB, and no longer than one block may
// be; the one that goes beyond is a corrupt tag.
class ValueReader {
  public:
    ValueReader(const formats::Window& block, ByteOrder order, const ReaderRules& rules,
                const ExifReadOptions& options, TextEncoding source, MetadataText& text)
        : block_(block), order_(order), rules_(rules), options_(options), source_(source),
          text_(text), bytes_left_(std::min(block.size() + 0x10000, formats::longest_block)) {}

    // CorruptStructure after "<CORRUPT EXIF TAG>"; EndOfFile or a failure of the file after what
    // could be read.
    Result<void> append(const tiff::Entry& entry, TagFamily family);
    // A latitude or longitude as decimal degrees; false, and nothing done, when it is none.
    bool append_decimal(const tiff::Entry& position, char reference);
    // The first byte of a value; 0 when there is none.
    char first_byte(const tiff::Entry& entry);

    Failure<ErrorCode> beyond_end() const;

  private:
    struct Value {
        std::string bytes; // cut where the block ends
        bool is_whole;     // or the first bytes as they were asked for
    };

    Result<formats::Window> place_of(const tiff::Entry& entry, std::uint64_t wanted);
    Result<Value> value(const tiff::Entry& entry, std::uint64_t most);
    Result<Value> value_to_zero(const tiff::Entry& entry);
    Result<void> check(const Value& value) const;

    Result<void> append_known(const tiff::Entry& entry, TagFamily family);
    Result<void> append_bytes(const tiff::Entry& entry, TagFamily family);
    Result<void> append_utf16(const tiff::Entry& entry);
    Result<void> append_text(const tiff::Entry& entry, TextEncoding encoding);
    Result<void> append_all(const tiff::Entry& entry, TextEncoding encoding);
    template <typename Integer>
    Result<void> append_first(const tiff::Entry& entry);
    Result<void> append_word_as_float(const tiff::Entry& entry, bool is_single);
    template <typename Integer>
    Result<void> append_rationals(const tiff::Entry& entry);

    formats::Window block_;
    ByteOrder order_;
    const ReaderRules& rules_;
    const ExifReadOptions& options_;
    TextEncoding source_;
    MetadataText& text_;
    std::uint64_t bytes_left_;
    int failed_values_left_ = 100; // "<readErr>"s
};

} // namespace vell::metadata
