#include "src/host/bridge/host_values.h"

#include "src/base/utf16.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

namespace vell::host {
namespace {

std::uint32_t length32(std::size_t length) {
    if (length >= fm::to_end)
        throw std::bad_alloc();
    return static_cast<std::uint32_t>(length);
}

} // namespace

Text::Text() : HostObject(host_call(FM_Text_Constructor1)) {}
Text::Text(std::u16string_view units) : Text() {
    assign(units);
}
Text::Text(std::string_view literal) : Text() {
    assign_bytes(literal, params::TextEncoding::AsciiMac);
}

void Text::assign_bytes(std::string_view bytes, params::TextEncoding encoding) {
    host_call(FM_Text_AssignWithLength, get(), bytes.data(), length32(bytes.size()),
              static_cast<std::int32_t>(encoding));
}

void Text::assign(std::u16string_view units) {
    host_call(FM_Text_AssignUnicodeWithLength, get(), units.data(), length32(units.size()));
}

void Text::append(const Text& other) {
    host_call(FM_Text_AppendText, get(), other.get(), 0u, fm::to_end);
}

std::u16string Text::to_utf16() const {
    return host::to_utf16(get());
}

std::u16string to_utf16(const fm::Text* text) {
    const std::uint32_t size = host_call(FM_Text_GetSize, text);
    std::u16string units(size, u'\0');
    if (size > 0)
        host_call(FM_Text_GetUnicode, text, units.data(), 0u, size);
    return units;
}

namespace {

// Bytes that the host wrote before its terminating zero. A zero character encodes as one zero byte
// in every encoding, and nothing else does, so the terminator is the one after all of those.
std::size_t length_with_zeros(const char* bytes, std::size_t zeros) {
    const char* end = bytes;
    for (; zeros > 0; --zeros)
        end += std::strlen(end) + 1;
    return static_cast<std::size_t>(end - bytes) + std::strlen(end);
}

void encode(const fm::Text* text, std::span<char> encoded, std::uint32_t position,
            std::uint32_t count, params::TextEncoding encoding) {
    try {
        host_call(FM_Text_GetBytes, text, encoded.data(),
                  static_cast<std::uint32_t>(encoded.size()), position, count,
                  static_cast<std::int32_t>(encoding));
    } catch (const HostFailure&) {
        throw EncodingFailure();
    }
}

} // namespace

std::string to_bytes(const fm::Text* text, params::TextEncoding encoding) {
    constexpr std::uint32_t units_at_once = 16 * 1024;
    constexpr std::uint32_t most_bytes_of_a_unit = 4;
    const std::uint32_t size = host_call(FM_Text_GetSize, text);
    std::string bytes;
    std::vector<char16_t> units(std::min(size, units_at_once));
    std::vector<char> encoded(units.size() * most_bytes_of_a_unit + 1);
    for (std::uint32_t position = 0; position < size;) {
        std::uint32_t count = std::min(size - position, units_at_once);
        host_call(FM_Text_GetUnicode, text, units.data(), position, count);
        // A surrogate pair is encoded whole: its second half waits for the next round otherwise.
        if (count > 1 && position + count < size && is_high_surrogate(units[count - 1]))
            --count;
        encode(text, encoded, position, count, encoding);
        encoded.back() = '\0';
        const auto zeros = std::count(units.begin(), units.begin() + count, u'\0');
        bytes.append(encoded.data(),
                     length_with_zeros(encoded.data(), static_cast<std::size_t>(zeros)));
        position += count;
    }
    return bytes;
}

QuadChar::QuadChar() : HostObject(host_call(FM_QuadChar_Constructor1)) {}
QuadChar::QuadChar(const char (&code)[5]) : QuadChar(host::mac_type(code)) {}
QuadChar::QuadChar(std::uint32_t mac_type) : QuadChar() {
    host_call(FM_QuadChar_SetMacType, get(), mac_type);
}
std::uint32_t QuadChar::mac_type() const {
    return host_call(FM_QuadChar_GetMacType, get());
}

} // namespace vell::host
