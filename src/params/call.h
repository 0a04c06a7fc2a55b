// What a function's body sees of the call that it serves. The host side implements it over the
// host's values; a body knows neither the host nor its objects.
#pragma once

#include "src/base/byte_source.h"
#include "src/base/result.h"
#include "src/params/calendar_time.h"
#include "src/params/encodings.h"
#include "src/params/line_endings.h"
#include "src/params/paths.h"
#include "src/params/switches.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vell {
class System; // src/system/system.h
}

namespace vell::params {

// Bytes of text, the encoding to read them in, and keywords of the style to show them in, such as
// "bold red"; without keywords the text is as the field has it.
struct EncodedText {
    std::string_view bytes;
    TextEncoding encoding;
    std::string_view style = {};
};

// Takes bytes piece by piece; its failure ends the giving.
using ByteSink = std::function<Result<void>(std::string_view)>;

// A picture or another file to put into a container.
struct ContainerValue {
    std::string_view type; // of its main stream, four characters such as "JPEG"
    std::u16string_view name;
    std::string_view bytes;
    std::uint32_t width = 0; // in pixels; 0 for what is no picture
    std::uint32_t height = 0;
};

// What happens to characters that an encoding lacks.
enum class Unencodable : std::uint8_t {
    Replace, // by what the host puts in their place, such as a question mark
    Refuse,  // ParameterUnreadable
};

class Call {
  public:
    // The value of a step option that is not given, and of every option of a function: the
    // switches decide then.
    static constexpr std::int32_t not_given = -101;

    Call() = default;
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    virtual ~Call() = default;

    virtual bool is_step() const = 0;
    // Whether somebody sits in front of the host. Without a user nothing may be shown: it would
    // wait for ever.
    virtual bool can_ask_user() const = 0;
    // The owner of dialogs, as a native window handle; null when there is none.
    virtual void* main_window() const = 0;
    // Adds a line to the debug log when that is on.
    virtual void debug_note(std::string_view line) = 0;

    // Parameters, counted from 0; index 0 holds the switches (empty in a step). An absent one reads
    // as empty text, 0 and not_given.
    virtual std::size_t parameter_count() const = 0;
    virtual SwitchSet switches() = 0;
    // Where the names go that are looked for in the switches; null where nobody wants to know.
    virtual AskedNames* asked_names() { return nullptr; }
    virtual std::u16string text(std::size_t index) = 0;
    // A text in an encoding. ParameterUnreadable when the host cannot convert to it, and for
    // BytesOnly when a character is above U+00FF.
    virtual Result<std::string> encode(std::u16string_view text, TextEncoding encoding,
                                       Unencodable unencodable) = 0;
    // Bytes as text; see EncodedText.
    virtual std::u16string decode(std::string_view bytes, TextEncoding encoding) = 0;
    // The integer part; values outside the signed 32-bit range come as the first number beyond it.
    virtual std::int64_t number(std::size_t index) = 0;
    virtual std::int32_t step_option(std::size_t index) = 0;
    // nullopt for an absent or empty parameter.
    virtual std::optional<CalendarTime> time_stamp(std::size_t index) = 0;
    virtual bool is_container(std::size_t index) = 0;
    // The bytes of a container's main stream, expanded where they are compressed. NotFound when
    // there is none, CompressedDataDamaged, or the sink's own failure.
    virtual Result<void> read_container(std::size_t index, const ByteSink& sink) = 0;
    // The same bytes, to be read at any place as long as the call lasts.
    virtual Result<std::unique_ptr<ByteSource>> open_container(std::size_t index) = 0;
    // The name of the file in a container, without folders; empty when it has none.
    virtual std::u16string container_name(std::size_t index) = 0;

    // A number of bytes, 0 when absent; NumberOutOfRange below 0 and above 2,147,483,647.
    Result<std::uint32_t> byte_count(std::size_t index);
    Result<NativePath> path(std::size_t index, const PathUse& use = {});

    // Whether something is wanted: what the step's option says (any value but 0 wants it), and
    // without the option whether the switch is there.
    bool option(std::size_t position, const SwitchSet& switches, std::string_view name);
    // The same for an option that must have one value to count, such as what deletes or replaces.
    bool option_is(std::size_t position, std::int32_t value, const SwitchSet& switches,
                   std::string_view name);

    // The value, as text, of a calculation in the host's language, in the context of the call.
    // NotAvailable when the host does not evaluate it.
    virtual Result<std::u16string> evaluate(std::u16string_view calculation) = 0;

    // Results: each sets the call's one result, the last one counts. A body that fails returns its
    // code instead and sets nothing; one that succeeds without data calls set_done.
    virtual void set_text(std::u16string_view text) = 0;
    virtual void set_literal(std::string_view ascii) = 0;
    virtual void set_number(std::int64_t value) = 0;
    virtual void set_date(const CalendarTime& date) = 0;
    virtual void set_time(const CalendarTime& time) = 0;
    virtual void set_time_stamp(const CalendarTime& time_stamp) = 0;
    virtual void set_container(const ContainerValue& value) = 0;
    // The pieces one after the other, decoded, with line ends converted.
    virtual void set_decoded_text(std::span<const EncodedText> pieces,
                                  LineEndings line_endings) = 0;
    void set_done() { set_literal("0"); }
};

// A body returns nothing, having set the result, or the code to report.
using Body = Result<void> (*)(Call& call, System& system);

// The body of a function that this build lacks: NotAvailable.
Result<void> not_available(Call& call, System& system);

} // namespace vell::params
