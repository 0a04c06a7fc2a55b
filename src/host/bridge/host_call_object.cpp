#include "src/host/bridge/host_call_object.h"

#include "src/base/utf8.h"
#include "src/base/utf8_parts.h"
#include "src/host/bridge/styled_text.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace vell::host {
namespace {

using params::EncodedText;
using params::LineEndings;
using params::TextEncoding;

void append_bytes_as_characters(Text& text, std::string_view bytes) {
    constexpr std::size_t bytes_at_once = 64 * 1024;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), bytes_at_once))) {
        std::u16string units;
        for (const char c : bytes.substr(0, bytes_at_once))
            units += static_cast<unsigned char>(c);
        text.append(Text(units));
    }
}

// A second text of the host's holds a part of a long piece at a time, where UTF-8 tells where it
// can be parted. Of other encodings only the host knows.
void append_in_parts(Text& text, const EncodedText& piece) {
    constexpr std::size_t longest_part = 64 * 1024;
    for (std::string_view rest = piece.bytes; !rest.empty();) {
        std::size_t size = rest.size();
        if (piece.encoding == TextEncoding::Utf8 && size > longest_part) {
            std::size_t place = longest_part;
            while (place > 0 && !can_be_parted(rest.substr(0, place), rest.substr(place)))
                --place;
            if (place > 0)
                size = place;
        }
        Text decoded;
        decoded.assign_bytes(rest.substr(0, size), piece.encoding);
        text.append(decoded);
        rest.remove_prefix(size);
    }
}

void append_decoded(Text& text, const EncodedText& piece, bool is_first) {
    if (!piece.style.empty()) {
        Text decoded;
        decoded.assign_bytes(piece.bytes, piece.encoding);
        append_styled(text, decoded.to_utf16(), text_style(piece.style));
    } else if (piece.encoding == TextEncoding::BytesOnly) {
        append_bytes_as_characters(text, piece.bytes);
    } else if (is_first) {
        text.assign_bytes(piece.bytes, piece.encoding); // the common case: no second copy
    } else {
        append_in_parts(text, piece);
    }
}

} // namespace

HostCallObject::HostCallObject(plugin::Plugin& plugin, const fm::ExprEnv* environment,
                               const fm::DataVect* parameters, fm::Data* result, bool is_step)
    : plugin_(plugin), environment_(environment), parameters_(parameters), result_(result),
      is_step_(is_step) {
    if (plugin.state.logs_calls() && !is_step)
        asked_.emplace();
}

bool HostCallObject::can_ask_user() const {
    return plugin_.state.can_ask_user;
}

void* HostCallObject::main_window() const {
    return plugin_.main_window();
}

void HostCallObject::debug_note(std::string_view line) {
    plugin_.debug_log.add(line);
}

const fm::Text* HostCallObject::host_text(std::size_t index) const {
    return index < parameters_.size() ? parameters_.text(static_cast<std::uint32_t>(index))
                                      : nullptr;
}

params::SwitchSet HostCallObject::switches() {
    const fm::Text* text = host_text(0);
    if (!text)
        return {};
    auto switches = params::SwitchSet::filled_by([&](std::span<char> buffer) {
        const std::uint32_t size = std::min(host_call(FM_Text_GetSize, text),
                                            std::uint32_t{params::SwitchSet::max_length});
        host_call(FM_Text_GetBytes, text, buffer.data(), static_cast<std::uint32_t>(buffer.size()),
                  0u, size, static_cast<std::int32_t>(TextEncoding::AsciiMac));
        buffer.back() = '\0';
        return static_cast<std::size_t>(std::ranges::find(buffer, '\0') - buffer.begin());
    });
    if (asked_)
        switches.note_in(*asked_);
    return switches;
}

std::u16string HostCallObject::text(std::size_t index) {
    const fm::Text* text = host_text(index);
    return text ? to_utf16(text) : std::u16string();
}

Result<std::string> HostCallObject::encode(std::u16string_view text, TextEncoding encoding,
                                           params::Unencodable unencodable) {
    if (encoding == TextEncoding::Utf8)
        return utf8_from_utf16(text);
    if (encoding == TextEncoding::BytesOnly) {
        if (std::ranges::any_of(text, [](char16_t unit) { return unit > 0xFF; }))
            return Failure{ErrorCode::ParameterUnreadable};
        return std::string(text.begin(), text.end());
    }
    try {
        std::string bytes = to_bytes(Text(text).get(), encoding);
        if (unencodable == params::Unencodable::Refuse) {
            Text back;
            back.assign_bytes(bytes, encoding);
            if (back.to_utf16() != text)
                return Failure{ErrorCode::ParameterUnreadable};
        }
        return bytes;
    } catch (const EncodingFailure&) {
        return Failure{ErrorCode::ParameterUnreadable};
    }
}

std::u16string HostCallObject::decode(std::string_view bytes, TextEncoding encoding) {
    Text text;
    text.assign_bytes(bytes, encoding);
    return text.to_utf16();
}

std::int64_t HostCallObject::number(std::size_t index) {
    if (index >= parameters_.size())
        return 0;
    return to_integer(parameters_.number(static_cast<std::uint32_t>(index)));
}

std::int32_t HostCallObject::step_option(std::size_t index) {
    if (!is_step_ || index >= parameters_.size())
        return not_given;
    if (host_call(FM_Data_IsEmpty, parameters_.at(static_cast<std::uint32_t>(index))))
        return not_given;
    constexpr std::int64_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(number(index), lowest, highest));
}

std::optional<params::CalendarTime> HostCallObject::time_stamp(std::size_t index) {
    if (index >= parameters_.size())
        return std::nullopt;
    const auto position = static_cast<std::uint32_t>(index);
    if (host_call(FM_Data_IsEmpty, parameters_.at(position)))
        return std::nullopt;
    return to_calendar_time(parameters_.time_stamp(position));
}

bool HostCallObject::is_container(std::size_t index) {
    return index < parameters_.size() &&
           native_type(parameters_.at(static_cast<std::uint32_t>(index))) == fm::NativeType::Binary;
}

Result<void> HostCallObject::read_container(std::size_t index, const params::ByteSink& sink) {
    if (!is_container(index))
        return Failure{ErrorCode::NotFound};
    return read_main_stream(parameters_.container(static_cast<std::uint32_t>(index)), sink);
}

Result<std::unique_ptr<ByteSource>> HostCallObject::open_container(std::size_t index) {
    if (!is_container(index))
        return Failure{ErrorCode::NotFound};
    return open_main_stream(parameters_.container(static_cast<std::uint32_t>(index)));
}

std::u16string HostCallObject::container_name(std::size_t index) {
    if (!is_container(index))
        return {};
    return file_name(parameters_.container(static_cast<std::uint32_t>(index)));
}

Result<std::u16string> HostCallObject::evaluate(std::u16string_view calculation) {
    const Text expression(calculation);
    Data value;
    if (host_call(FM_ExprEnv_Evaluate, environment_, expression.get(), value.get()) != 0)
        return Failure{ErrorCode::NotAvailable};
    const fm::Text* text = text_of(value.get());
    return text ? to_utf16(text) : std::u16string();
}

void HostCallObject::set_text(std::u16string_view text) {
    store_text(result_, Text(text));
}

void HostCallObject::set_literal(std::string_view ascii) {
    store_text(result_, Text(ascii));
}

void HostCallObject::set_number(std::int64_t value) {
    Number number;
    number.assign(value);
    store_number(result_, number);
}

void HostCallObject::set_date(const params::CalendarTime& date) {
    store_date(result_, DateTime(date));
}

void HostCallObject::set_time(const params::CalendarTime& time) {
    store_time(result_, DateTime(time));
}

void HostCallObject::set_time_stamp(const params::CalendarTime& time_stamp) {
    store_time_stamp(result_, DateTime(time_stamp));
}

void HostCallObject::set_container(const params::ContainerValue& value) {
    Container container;
    add_file(container, QuadChar(mac_type(value.type)), value.name, value.bytes,
             {static_cast<std::int16_t>(value.width), static_cast<std::int16_t>(value.height)});
    store_container(result_, container);
}

void HostCallObject::set_decoded_text(std::span<const EncodedText> pieces,
                                      LineEndings line_endings) {
    Text text;
    for (const EncodedText& piece : pieces)
        append_decoded(text, piece, &piece == pieces.data());
    if (line_endings != LineEndings::Keep) {
        std::u16string units = text.to_utf16();
        convert_line_endings(units, line_endings);
        text.assign(units);
    }
    store_text(result_, text);
}

} // namespace vell::host
