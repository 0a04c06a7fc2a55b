// Records of public formats: structs that say of each of their fields where it stands.
//
//     struct FrameHeader {
//         static constexpr std::size_t size = 6;
//         static constexpr ByteOrder order = ByteOrder::Big;
//
//         std::uint8_t sample_precision = 0;
//         std::uint16_t lines = 0;
//
//         static constexpr auto fields() {
//             return std::tuple{Field{0, &FrameHeader::sample_precision},
//                               Field{1, &FrameHeader::lines}};
//         }
//     };
//
// Fields are integers, enumerations, records and arrays of them; bytes between them are passed over
// in reading and 0 in writing. A record with a `signature` begins with that integer. One whose
// format is written in either byte order has no `order`; it is given to each call then.
#pragma once

#include "src/base/bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

namespace vell::formats {

template <typename Record, typename T>
struct Field {
    std::size_t offset;
    T Record::*member;
};
template <typename Record, typename T>
Field(std::size_t, T Record::*) -> Field<Record, T>;

template <typename T>
concept IsRecord = requires {
    T::fields();
};
template <typename T>
concept HasSignature = requires {
    typename std::integral_constant<std::uint64_t, T::signature>;
};

namespace detail {

template <typename T>
constexpr std::size_t field_size = sizeof(T);
template <IsRecord T>
constexpr std::size_t field_size<T> = T::size;

// `bytes` holds all of the field.
template <typename T>
constexpr void load_field(std::string_view bytes, std::size_t offset, ByteOrder order, T& field);
template <typename T, std::size_t count>
constexpr void load_field(std::string_view bytes, std::size_t offset, ByteOrder order,
                          std::array<T, count>& field) {
    for (std::size_t i = 0; i < count; ++i)
        load_field(bytes, offset + i * field_size<T>, order, field[i]);
}
template <typename T>
constexpr void load_field(std::string_view bytes, std::size_t offset, ByteOrder order, T& field) {
    if constexpr (IsRecord<T>)
        std::apply(
            [&](const auto&... each) {
                (load_field(bytes, offset + each.offset, order, field.*each.member), ...);
            },
            T::fields());
    else if constexpr (std::is_enum_v<T>)
        field = T{*load<std::underlying_type_t<T>>(bytes, offset, order)};
    else
        field = *load<T>(bytes, offset, order);
}

// `bytes` has room for the field.
template <typename T>
void store_field(std::span<char> bytes, std::size_t offset, ByteOrder order, const T& field);
template <typename T, std::size_t count>
void store_field(std::span<char> bytes, std::size_t offset, ByteOrder order,
                 const std::array<T, count>& field) {
    for (std::size_t i = 0; i < count; ++i)
        store_field(bytes, offset + i * field_size<T>, order, field[i]);
}
template <typename T>
void store_field(std::span<char> bytes, std::size_t offset, ByteOrder order, const T& field) {
    if constexpr (IsRecord<T>) {
        std::apply(
            [&](const auto&... each) {
                (store_field(bytes, offset + each.offset, order, field.*each.member), ...);
            },
            T::fields());
    } else if constexpr (std::is_enum_v<T>) {
        store_field(bytes, offset, order, static_cast<std::underlying_type_t<T>>(field));
    } else {
        std::string integer;
        append_integer<T>(integer, field, order);
        integer.copy(bytes.data() + offset, integer.size());
    }
}

} // namespace detail

// The record that the bytes begin with; nullopt when they are too few or have another signature.
template <IsRecord Record>
constexpr std::optional<Record> read_record(std::string_view bytes,
                                            ByteOrder order = Record::order) {
    if (bytes.size() < Record::size)
        return std::nullopt;
    if constexpr (HasSignature<Record>)
        if (load<std::remove_const_t<decltype(Record::signature)>>(bytes, 0, order) !=
            Record::signature)
            return std::nullopt;
    Record record;
    detail::load_field(bytes, 0, order, record);
    return record;
}

template <IsRecord Record>
void append_record(std::string& bytes, const Record& record, ByteOrder order = Record::order) {
    std::array<char, Record::size> stored{};
    if constexpr (HasSignature<Record>)
        detail::store_field(std::span<char>(stored), 0, order, Record::signature);
    detail::store_field(std::span<char>(stored), 0, order, record);
    bytes.append(stored.data(), stored.size());
}

} // namespace vell::formats
