// Integers in bytes, in either byte order, without ever reading past the end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace vell {

enum class ByteOrder : std::uint8_t { Little, Big };

// The integer that stands at `offset`; nullopt when it does not lie wholly within `bytes`.
template <typename T>
constexpr std::optional<T> load(std::string_view bytes, std::size_t offset, ByteOrder order) {
    static_assert(std::is_integral_v<T>);
    if (offset > bytes.size() || bytes.size() - offset < sizeof(T))
        return std::nullopt;
    std::make_unsigned_t<T> value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        const std::size_t shift = 8 * (order == ByteOrder::Little ? i : sizeof(T) - 1 - i);
        const auto byte = static_cast<unsigned char>(bytes[offset + i]);
        value = static_cast<std::make_unsigned_t<T>>(
            value | static_cast<std::make_unsigned_t<T>>(byte) << shift);
    }
    return static_cast<T>(value);
}

// Appends the integer to `bytes`.
template <typename T>
constexpr void append_integer(std::string& bytes, std::type_identity_t<T> value, ByteOrder order) {
    static_assert(std::is_integral_v<T>);
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        const std::size_t shift = 8 * (order == ByteOrder::Little ? i : sizeof(T) - 1 - i);
        bytes += static_cast<char>(static_cast<std::make_unsigned_t<T>>(value) >> shift & 0xFF);
    }
}

} // namespace vell
