// The tags of a file, by directory and number, and their values as a person or a program wants
// them: texts in characters, dates in ISO 8601, numbers as numbers.
//
// Tagged text (reading/tag_value.h) gives values as solutions have stored them for years; it asks
// here only where "-Readable" wants another form.
#pragma once

#include "src/base/result.h"
#include "src/formats/tiff/directory.h"
#include "src/formats/window.h"
#include "src/metadata/containers/metadata_blocks.h"
#include "src/metadata/values/character_code.h"
#include "src/metadata/values/value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vell::metadata {

enum class TagDirectory : std::uint8_t { First, Exif, Interoperability, Gps };

struct FoundTag {
    TagDirectory directory;
    std::size_t block; // of those that were added
    formats::tiff::Entry entry;
};

class TagSet {
  public:
    // What bytes that are no UTF-8 are read in.
    explicit TagSet(TextEncoding otherwise) : otherwise_(otherwise) {}

    // Takes the tags of a block, whose source outlives the set: those of the directory that the
    // block begins with, and of the ones below it. Damage ends the directory that it is in. A
    // failure of the source is the only one.
    Result<void> add(const formats::Window& block, TagRoot root = TagRoot::Image);

    const std::vector<FoundTag>& tags() const { return tags_; }
    const FoundTag* find(TagDirectory directory, std::uint16_t tag) const;

    // The text that "-Readable" puts in the place of what tagged text has otherwise; nullopt where
    // it is the same.
    std::optional<FoundText> readable_text(const FoundTag& tag) const;
    // nullopt for what says nothing about the picture: pointers, maker notes, padding, and blocks
    // that are metadata of another kind.
    std::optional<Value> value(const FoundTag& tag, const TextDecoder& decoder) const;

    // Latitude, longitude and altitude as signed numbers, the time in UTC: members that no tag has.
    void add_position(Members& gps) const;

  private:
    struct Block {
        formats::Window bytes;
        formats::tiff::Layout layout;
    };
    struct Rational {
        std::int64_t numerator;
        std::int64_t denominator;
    };

    Result<void> walk(std::size_t block, std::uint64_t offset, TagDirectory directory);
    // As many bytes as there are, at most `most`; none where all values together are too long.
    std::string bytes_of(const FoundTag& tag, std::uint64_t most) const;
    std::string text_of(TagDirectory directory, std::uint16_t tag) const;
    std::string until_zero(const FoundTag& tag) const;
    std::vector<Rational> rationals_of(const FoundTag& tag, std::size_t most) const;

    std::optional<std::string> date_text(const FoundTag& tag) const;
    std::optional<std::string> gps_time_text(const FoundTag& tag) const;
    std::optional<std::string> position_text(const FoundTag& tag) const;
    Value numbers(const FoundTag& tag) const;
    Value bytes_value(const FoundTag& tag, const TextDecoder& decoder) const;
    Value plain_value(const FoundTag& tag, const TextDecoder& decoder) const;

    TextEncoding otherwise_;
    std::vector<Block> blocks_;
    std::vector<FoundTag> tags_;
    mutable std::uint64_t bytes_left_ = 0x10000; // that may be read of values
};

// Seconds as photographers write them: "1/250", "2.5". nullopt without a denominator.
std::optional<std::string> exposure_text(std::uint32_t numerator, std::uint32_t denominator);

// All of a set, in the members "Exif" and "GPS" of an answer.
Members exif_members(const TagSet& tags, const TextDecoder& decoder);
Members gps_members(const TagSet& tags, const TextDecoder& decoder);

} // namespace vell::metadata
