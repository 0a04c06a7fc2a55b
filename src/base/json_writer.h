// JSON texts (RFC 8259) in UTF-8, without blanks between their parts.
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vell {

// Writes one value: an object, an array or a single one. What is begun is ended in its order, and
// in objects each value has a key before it, which the writer asserts.
//
// Texts may hold any bytes: what is no UTF-8 becomes U+FFFD. Numbers that JSON has no form for (not
// a number, infinities) become null.
class JsonWriter {
  public:
    void begin_object() { begin('{'); }
    void end_object() { end('}'); }
    void begin_array() { begin('['); }
    void end_array() { end(']'); }
    void key(std::string_view name);

    void value(std::string_view text);
    void value(std::u16string_view text);
    void number(double number); // in the fewest digits that read back as the same number
    template <std::integral Integer>
    void number(Integer number) {
        integer(static_cast<Wide<Integer>>(number));
    }
    void boolean(bool value) { literal(value ? "true" : "false"); }
    void null() { literal("null"); }

    // Members of an object.
    template <typename Text>
    void member(std::string_view name, const Text& text) {
        key(name);
        value(text); // of UTF-8 or UTF-16
    }
    void member_boolean(std::string_view name, bool is_true) {
        key(name);
        boolean(is_true);
    }
    template <typename Number>
    void member_number(std::string_view name, Number value) {
        key(name);
        number(value);
    }

    bool is_complete() const { return open_.empty() && !text_.empty(); }
    std::string take();

  private:
    template <typename Integer>
    using Wide = std::conditional_t<std::is_signed_v<Integer>, std::int64_t, std::uint64_t>;
    struct Level {
        char closing;
        bool is_empty;
    };

    void begin(char opening);
    void end(char closing);
    void separate();
    void literal(std::string_view word);
    void integer(std::int64_t value);
    void integer(std::uint64_t value);
    void quote(std::string_view text);

    std::string text_;
    std::vector<Level> open_;
    bool has_key_ = false; // and waits for its value
};

// "FrameRate" for "Frame rate (per second)": the name of a member for what lines of text call so.
std::string member_name(std::string_view words);

} // namespace vell
