// The structures of an ICC profile (ICC.1:2010, profile version 4; ICC.1:2001, version 2): header,
// table of tags, and the texts in tags. All of them refer to the profile's bytes.
#pragma once

#include "src/base/bytes.h"
#include "src/base/result.h"
#include "src/params/encodings.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vell::metadata::icc {

constexpr std::uint32_t signature(std::string_view text) {
    return load<std::uint32_t>(text, 0, ByteOrder::Big).value_or(0);
}
// As text without trailing blanks: "(none)" for 0, as hexadecimal digits where a character is not
// to be printed.
std::string signature_text(std::uint32_t signature);

// s15Fixed16Number (4.6).
constexpr double fixed_number(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits) / 65536.0;
}

// dateTimeNumber (4.2).
struct DateTime {
    std::uint16_t year, month, day, hours, minutes, seconds;

    // CorruptStructure when the bytes end before it does.
    static Result<DateTime> read(std::string_view bytes, std::size_t offset);
    std::string text() const;
};

// The profile header (7.2).
struct Header {
    static constexpr std::size_t length = 128;

    std::uint32_t profile_size;
    std::uint32_t preferred_cmm_type;
    std::uint32_t profile_version; // one byte major, then minor and bug fix in four bits each
    std::uint32_t profile_class;
    std::uint32_t data_colour_space;
    std::uint32_t connection_space;
    DateTime creation;
    std::uint32_t file_signature;
    std::uint32_t primary_platform;
    std::uint32_t profile_flags;
    std::uint32_t device_manufacturer;
    std::uint32_t device_model;
    std::uint64_t device_attributes;
    std::uint32_t rendering_intent;
    std::array<double, 3> illuminant;
    std::uint32_t profile_creator;
    std::string_view profile_id;

    // ShortRead when the profile ends in its header, CorruptStructure when it is no profile.
    static Result<Header> read(std::string_view profile);
};

// An entry of the tag table (7.3).
struct Tag {
    std::uint32_t signature;
    std::uint32_t offset;
    std::uint32_t size;
    std::string_view data; // what of it lies within the profile

    std::uint32_t type() const { return icc::signature(data); }
};

class TagTable {
  public:
    explicit TagTable(std::string_view profile);

    // Tags that the profile has room for, and those that it announces.
    std::size_t size() const { return size_; }
    std::uint32_t announced() const { return announced_; }
    bool is_complete() const { return size_ == announced_; }

    Tag operator[](std::size_t index) const;
    std::optional<Tag> find(std::uint32_t signature) const;

  private:
    std::string_view profile_;
    std::uint32_t announced_ = 0;
    std::size_t size_ = 0;
};

// How many bytes of tags may still be shown: tags and their texts may share their bytes, and a
// description must not grow with the square of the profile's size.
class Allowance {
  public:
    explicit Allowance(std::size_t profile_size) : left_(4 * profile_size + 4096) {}
    // What is refused once stays refused.
    bool take(std::size_t bytes) {
        const bool enough = bytes < left_;
        left_ = enough ? left_ - bytes : 0;
        return enough;
    }
    bool is_used_up() const { return left_ == 0; }

  private:
    std::size_t left_;
};

struct LocalizedText {
    std::string language; // such as "en-US"; what the text is of, or empty, in version 2
    std::string bytes;    // without the zero at their end
    params::TextEncoding encoding;
};

// Gets one text after the other; `false` ends the giving.
using TextSink = std::function<bool(const LocalizedText&)>;

// The texts of a tag of type 'text', 'desc' or 'mluc' that are not empty; `source` is the encoding
// of what should be ASCII and is not. CorruptStructure for other types, and when the tag's bytes
// end too early; what stands before that is given.
Result<void> give_texts(std::string_view data, params::TextEncoding source, Allowance& allowance,
                        const TextSink& sink);

} // namespace vell::metadata::icc
