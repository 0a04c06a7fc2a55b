// The host objects behind the opaque names of the interface.
#pragma once

#include "console/fmwrapper/guard.h"
#include "console/fmwrapper/style_runs.h"
#include "console/fmwrapper/text_units.h"
#include "console/model/calendar.h"
#include "console/model/decimal.h"

#include <cstddef>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace vell::fm {

struct Text {
    console::TextUnits units;
    console::StyleRuns styles;
};

struct FixPt {
    console::Decimal value;
    int precision = console::Decimal::default_precision;
};

// A date, a time or both. A time by itself may lie outside of a day ("-25:00:00").
struct DateTime {
    std::int64_t day = console::first_day;
    console::Decimal seconds;
};

struct QuadChar {
    std::uint32_t type = 0; // the first character in the highest byte
};

struct Locale {
    LocaleType type = LocaleType::System;
};

struct BinaryData {
    struct Stream {
        std::uint32_t type;
        std::shared_ptr<const std::vector<std::byte>> bytes; // shared by copies of the container
    };
    std::vector<Stream> streams; // in the order in which they were added, one of each type

    std::int32_t index_of(std::uint32_t type) const; // -1 when absent
    void put(std::uint32_t type, const void* bytes, std::size_t size);
};

struct Data {
    // What was set; every other form is made from it when it is asked for.
    enum class Source { None, Text, Number, Date, Time, TimeStamp, Binary };

    Source source = Source::None;
    NativeType native_type = NativeType::Invalid;
    Locale locale;
    std::variant<std::monostate, Text, FixPt, DateTime, BinaryData> value;

    struct Converted {
        std::unique_ptr<Text> text;
        std::unique_ptr<FixPt> number;
        std::unique_ptr<DateTime> date;
        std::unique_ptr<DateTime> time;
        std::unique_ptr<DateTime> time_stamp;
        std::unique_ptr<BinaryData> binary;
    };
    mutable Converted converted;

    Data() = default;
    Data(const Data& other)
        : source(other.source), native_type(other.native_type), locale(other.locale),
          value(other.value) {}
    Data& operator=(const Data&) = delete;

    const Text& as_text() const;
    const FixPt& as_number() const;
    const DateTime& as_date() const;
    const DateTime& as_time() const;
    const DateTime& as_time_stamp() const;
    const BinaryData& as_binary() const;
};

struct DataVect {
    std::vector<std::unique_ptr<const Data>> elements; // at addresses that last
};

struct ExprEnv {};

} // namespace vell::fm

namespace vell::console {

// Stream types of containers.
constexpr std::uint32_t quad_char(const char (&characters)[5]) {
    std::uint32_t type = 0;
    for (int i = 0; i < 4; ++i)
        type = type << 8 | static_cast<unsigned char>(characters[i]);
    return type;
}
inline constexpr std::uint32_t fnam_stream = quad_char("FNAM");
inline constexpr std::uint32_t size_stream = quad_char("SIZE");

// The host's error codes that the stand-in answers.
enum class HostError : fm::Errcode {
    None = 0,
    AlreadyRegistered = 956,
    NotRegistered = 959,
    BadParameter = 960,
    DivisionByZero = 1219,
    NotSupported = 1225,
};
constexpr fm::Errcode number(HostError error) {
    return static_cast<fm::Errcode>(error);
}

// The name list of a container; empty when it has none.
std::u16string file_name_list(const fm::BinaryData& binary);

} // namespace vell::console
