// The structures of an ICC profile (ICC.1:2010, profile version 4; ICC.1:2001, version 2): header
// and table of tags. What they refer to stays in the profile's bytes.
#pragma once

#include "src/formats/damage.h"
#include "src/formats/record.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <tuple>

namespace vell::formats::icc {

constexpr std::uint32_t signature(std::string_view text) {
    return load<std::uint32_t>(text, 0, ByteOrder::Big).value_or(0);
}

// s15Fixed16Number (4.6).
constexpr double fixed_number(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits) / 65536.0;
}

// dateTimeNumber (4.2).
struct DateTime {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint16_t year = 0, month = 0, day = 0, hours = 0, minutes = 0, seconds = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &DateTime::year},    Field{2, &DateTime::month},
                          Field{4, &DateTime::day},     Field{6, &DateTime::hours},
                          Field{8, &DateTime::minutes}, Field{10, &DateTime::seconds}};
    }
};

// The profile header (7.2).
struct Header {
    static constexpr std::size_t size = 128;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t profile_size = 0;
    std::uint32_t preferred_cmm_type = 0;
    std::uint32_t profile_version = 0; // one byte major, then minor and bug fix in four bits each
    std::uint32_t profile_class = 0;
    std::uint32_t data_colour_space = 0;
    std::uint32_t connection_space = 0;
    DateTime creation;
    std::uint32_t file_signature = 0;
    std::uint32_t primary_platform = 0;
    std::uint32_t profile_flags = 0;
    std::uint32_t device_manufacturer = 0;
    std::uint32_t device_model = 0;
    std::uint64_t device_attributes = 0;
    std::uint32_t rendering_intent = 0;
    std::array<std::uint32_t, 3> illuminant{}; // fixed numbers
    std::uint32_t profile_creator = 0;
    std::array<char, 16> profile_id{};

    static constexpr auto fields() {
        return std::tuple{Field{0, &Header::profile_size},
                          Field{4, &Header::preferred_cmm_type},
                          Field{8, &Header::profile_version},
                          Field{12, &Header::profile_class},
                          Field{16, &Header::data_colour_space},
                          Field{20, &Header::connection_space},
                          Field{24, &Header::creation},
                          Field{36, &Header::file_signature},
                          Field{40, &Header::primary_platform},
                          Field{44, &Header::profile_flags},
                          Field{48, &Header::device_manufacturer},
                          Field{52, &Header::device_model},
                          Field{56, &Header::device_attributes},
                          Field{64, &Header::rendering_intent},
                          Field{68, &Header::illuminant},
                          Field{80, &Header::profile_creator},
                          Field{84, &Header::profile_id}};
    }
    // CutOff when the profile ends in its header, Corrupt when it is no profile.
    static Read<Header> read(std::string_view profile);
};

// An entry of the tag table (7.3).
struct TagEntry {
    static constexpr std::size_t size = 12;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t name = 0; // its signature
    std::uint32_t offset = 0;
    std::uint32_t data_size = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &TagEntry::name}, Field{4, &TagEntry::offset},
                          Field{8, &TagEntry::data_size}};
    }
};

struct Tag {
    TagEntry entry;
    std::string_view data; // what of it lies within the profile

    std::uint32_t type() const { return signature(data); }
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

} // namespace vell::formats::icc
