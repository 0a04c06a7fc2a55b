// Text: UTF-16 units with runs of styles.
#include "console/fmwrapper/encodings.h"
#include "console/fmwrapper/objects.h"
#include "console/model/unicode.h"

#include <algorithm>
#include <cstring>
#include <string_view>

using namespace vell;
using console::checked;
using console::guarded;

namespace {

// A position and a size of a caller, brought inside a text.
struct Range {
    std::uint32_t begin;
    std::uint32_t length;
    std::uint32_t end() const { return begin + length; }
};

std::uint32_t length_of(const fm::Text& text) {
    return static_cast<std::uint32_t>(text.units.get().size());
}

Range clamped(const fm::Text& text, std::uint32_t position, std::uint32_t size) {
    const std::uint32_t begin = std::min(position, length_of(text));
    return {begin, std::min(size, length_of(text) - begin)};
}

// The largest position is the mark for "not found", which no unit may stand at.
void check_room(const fm::Text& text, std::uint32_t added) {
    if (added >= fm::not_found - length_of(text))
        throw std::bad_alloc();
}

void assign_bytes(fm::Text& text, std::string_view bytes, std::int32_t encoding) {
    text.units.set(console::decode(bytes, encoding));
    text.styles.clear();
}

void assign_units(fm::Text& text, std::u16string_view units) {
    if (units.size() >= fm::not_found)
        throw std::bad_alloc();
    text.units.set(std::u16string(units));
    text.styles.clear();
}

std::uint32_t find_ignoring_case(std::u16string_view text, std::u16string_view wanted,
                                 std::size_t position) {
    const auto equal = [](char16_t a, char16_t b) {
        return console::lower_case(a) == console::lower_case(b);
    };
    const auto found = std::search(text.begin() + static_cast<std::ptrdiff_t>(position), text.end(),
                                   wanted.begin(), wanted.end(), equal);
    return found == text.end() ? fm::not_found : static_cast<std::uint32_t>(found - text.begin());
}

} // namespace

fm::Text* FM_Text_Constructor1(fm::Status* status) {
    return console::create<fm::Text>(__func__, status);
}

void FM_Text_Delete(fm::Text* self, fm::Status* status) {
    console::destroy(self, status);
}

std::uint32_t FM_Text_GetSize(const fm::Text* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return length_of(checked(self)); });
}

void FM_Text_Assign(fm::Text* self, const char* bytes, std::int32_t encoding, fm::Status* status) {
    guarded(__func__, status,
            [&] { assign_bytes(checked(self), std::string_view(&checked(bytes)), encoding); });
}

void FM_Text_AssignWithLength(fm::Text* self, const char* bytes, std::uint32_t length,
                              std::int32_t encoding, fm::Status* status) {
    guarded(__func__, status, [&] {
        assign_bytes(checked(self),
                     length == 0 ? std::string_view() : std::string_view(&checked(bytes), length),
                     encoding);
    });
}

void FM_Text_AssignUnicode(fm::Text* self, const char16_t* units, fm::Status* status) {
    guarded(__func__, status,
            [&] { assign_units(checked(self), std::u16string_view(&checked(units))); });
}

void FM_Text_AssignUnicodeWithLength(fm::Text* self, const char16_t* units, std::uint32_t length,
                                     fm::Status* status) {
    guarded(__func__, status, [&] {
        assign_units(checked(self), length == 0 ? std::u16string_view()
                                                : std::u16string_view(&checked(units), length));
    });
}

void FM_Text_GetBytes(const fm::Text* self, char* buffer, std::uint32_t buffer_size,
                      std::uint32_t position, std::uint32_t size, std::int32_t encoding,
                      fm::Status* status) {
    guarded(__func__, status, [&] {
        const Range range = clamped(checked(self), position, size);
        if (buffer_size == 0)
            throw console::BadCall();
        checked(buffer) = '\0';
        const std::size_t written = console::encode(
            std::u16string_view(self->units.get()).substr(range.begin, range.length), encoding,
            buffer, buffer_size - 1);
        buffer[written] = '\0';
    });
}

void FM_Text_GetUnicode(const fm::Text* self, char16_t* buffer, std::uint32_t position,
                        std::uint32_t size, fm::Status* status) {
    guarded(__func__, status, [&] {
        const Range range = clamped(checked(self), position, size);
        if (range.length != 0)
            std::memcpy(&checked(buffer), self->units.get().data() + range.begin,
                        range.length * sizeof(char16_t));
    });
}

void FM_Text_SetText(fm::Text* self, const fm::Text* other, std::uint32_t position,
                     std::uint32_t size, fm::Status* status) {
    guarded(__func__, status, [&] {
        const Range range = clamped(checked(other), position, size);
        auto styles = other->styles.slice(range.begin, range.end());
        if (range.length == length_of(*other))
            checked(self).units = other->units;
        else
            checked(self).units.set(other->units.get().substr(range.begin, range.length));
        self->styles = std::move(styles);
    });
}

void FM_Text_AppendText(fm::Text* self, const fm::Text* other, std::uint32_t position,
                        std::uint32_t size, fm::Status* status) {
    guarded(__func__, status, [&] {
        const Range range = clamped(checked(other), position, size);
        check_room(checked(self), range.length);
        const std::uint32_t length = length_of(*self);
        const auto styles = other->styles.slice(range.begin, range.end());
        self->units.change([&](std::u16string& units) {
            units.append(other->units.get(), range.begin, range.length);
        });
        self->styles.append(styles, range.length, length);
    });
}

void FM_Text_InsertText(fm::Text* self, const fm::Text* other, std::uint32_t position,
                        fm::Status* status) {
    guarded(__func__, status, [&] {
        const std::uint32_t added = length_of(checked(other));
        check_room(checked(self), added);
        const std::uint32_t length = length_of(*self);
        const std::uint32_t at = std::min(position, length);
        const auto styles = other->styles;
        self->units.change([&](std::u16string& units) { units.insert(at, other->units.get()); });
        self->styles.insert(styles, added, at, length);
    });
}

void FM_Text_DeleteText(fm::Text* self, std::uint32_t position, std::uint32_t size,
                        fm::Status* status) {
    guarded(__func__, status, [&] {
        const Range range = clamped(checked(self), position, size);
        self->styles.erase(range.begin, range.end(), length_of(*self));
        self->units.change([&](std::u16string& units) { units.erase(range.begin, range.length); });
    });
}

std::uint32_t FM_Text_Find(const fm::Text* self, const fm::Text* other, std::uint32_t position,
                           fm::Status* status) {
    return guarded(__func__, status, [&] {
        if (checked(other).units.get().empty() || position > length_of(checked(self)))
            return fm::not_found;
        const std::size_t found = self->units.get().find(other->units.get(), position);
        return found == std::u16string::npos ? fm::not_found : static_cast<std::uint32_t>(found);
    });
}

std::uint32_t FM_Text_FindIgnoringCase(const fm::Text* self, const fm::Text* other,
                                       std::uint32_t position, fm::Status* status) {
    return guarded(__func__, status, [&] {
        if (checked(other).units.get().empty() || position > length_of(checked(self)))
            return fm::not_found;
        return find_ignoring_case(self->units.get(), other->units.get(), position);
    });
}

void FM_Text_GetStyle(const fm::Text* self, fm::CharacterStyle* style, std::uint32_t position,
                      fm::Status* status) {
    guarded(__func__, status, [&] { checked(style) = checked(self).styles.at(position); });
}

void FM_Text_SetStyle(fm::Text* self, const fm::CharacterStyle* style, std::uint32_t position,
                      std::uint32_t size, fm::Status* status) {
    guarded(__func__, status, [&] {
        const Range range = clamped(checked(self), position, size);
        self->styles.set(checked(style), range.begin, range.end(), length_of(*self));
    });
}
