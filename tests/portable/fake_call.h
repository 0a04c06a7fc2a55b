// A call of a function with parameters and result in memory.
#pragma once

#include "src/base/utf8.h"
#include "src/params/call.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vell::test {

// Bytes that are not to be read as UTF-8 become the characters of their numbers.
inline std::u16string decoded(std::string_view bytes, params::TextEncoding encoding) {
    if (encoding == params::TextEncoding::Utf8)
        return utf16_from_utf8(bytes);
    std::u16string text;
    for (const char byte : bytes)
        text += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return text;
}

class FakeCall : public params::Call {
  public:
    // The switches stand first.
    explicit FakeCall(std::vector<std::u16string> parameters)
        : parameters_(std::move(parameters)) {}

    // Makes the call that of a step.
    void set_step_option(std::size_t index, std::int32_t value) { step_options_[index] = value; }
    // Makes a parameter a container that holds "field.bin".
    void set_container_parameter(std::size_t index, std::string bytes) {
        containers_[index] = std::move(bytes);
    }
    // What the host makes of a calculation.
    void set_calculation(std::u16string calculation, std::u16string value) {
        calculations_.insert_or_assign(std::move(calculation), std::move(value));
    }
    // Lines for the debug log.
    const std::vector<std::string>& notes() const { return notes_; }

    // What the body has set; nullopt as long as it has set nothing.
    const std::optional<std::u16string>& result() const { return result_; }
    // A container as a result: "JPEG photo.jpg 80x60", and its bytes.
    const std::string& container_bytes() const { return container_bytes_; }
    // The encodings of the pieces of a decoded result.
    const std::vector<params::TextEncoding>& encodings() const { return encodings_; }

    bool is_step() const override { return !step_options_.empty(); }
    bool can_ask_user() const override { return true; }
    void* main_window() const override { return nullptr; }
    void debug_note(std::string_view line) override { notes_.emplace_back(line); }
    std::size_t parameter_count() const override { return parameters_.size(); }
    params::SwitchSet switches() override { return params::SwitchSet(utf8_from_utf16(text(0))); }
    std::u16string text(std::size_t index) override {
        return index < parameters_.size() ? parameters_[index] : std::u16string();
    }
    Result<std::string> encode(std::u16string_view text, params::TextEncoding encoding,
                               params::Unencodable) override {
        if (encoding == params::TextEncoding::Utf8)
            return utf8_from_utf16(text);
        std::string bytes;
        for (const char16_t unit : text) {
            if (unit > 0xFF)
                return Failure{ErrorCode::ParameterUnreadable};
            bytes += static_cast<char>(unit);
        }
        return bytes;
    }
    std::u16string decode(std::string_view bytes, params::TextEncoding encoding) override {
        return decoded(bytes, encoding);
    }
    std::int64_t number(std::size_t index) override {
        using Limits = std::numeric_limits<std::int32_t>;
        const std::int64_t value = std::atoll(utf8_from_utf16(text(index)).c_str());
        return std::clamp<std::int64_t>(value, std::int64_t{Limits::min()} - 1,
                                        std::int64_t{Limits::max()} + 1);
    }
    std::int32_t step_option(std::size_t index) override {
        const auto found = step_options_.find(index);
        return found == step_options_.end() ? not_given : found->second;
    }
    std::optional<params::CalendarTime> time_stamp(std::size_t) override { return std::nullopt; }
    bool is_container(std::size_t index) override { return containers_.contains(index); }
    Result<void> read_container(std::size_t index, const params::ByteSink& sink) override {
        return is_container(index) ? sink(containers_[index])
                                   : Result<void>(Failure{ErrorCode::NotFound});
    }
    Result<std::unique_ptr<ByteSource>> open_container(std::size_t index) override {
        if (!is_container(index))
            return Failure{ErrorCode::NotFound};
        return std::unique_ptr<ByteSource>(std::make_unique<BytesInMemory>(containers_[index]));
    }
    std::u16string container_name(std::size_t index) override {
        return is_container(index) ? u"field.bin" : u"";
    }

    Result<std::u16string> evaluate(std::u16string_view calculation) override {
        const auto found = calculations_.find(std::u16string(calculation));
        if (found == calculations_.end())
            return Failure{ErrorCode::NotAvailable};
        return found->second;
    }

    void set_text(std::u16string_view text) override { result_ = std::u16string(text); }
    void set_literal(std::string_view ascii) override {
        result_ = std::u16string(ascii.begin(), ascii.end());
    }
    void set_number(std::int64_t value) override { set_literal(std::to_string(value)); }
    void set_date(const params::CalendarTime&) override {}
    void set_time(const params::CalendarTime&) override {}
    void set_time_stamp(const params::CalendarTime&) override {}
    void set_container(const params::ContainerValue& value) override {
        const std::string label = std::string(value.type) + ' ' + utf8_from_utf16(value.name) +
                                  ' ' + std::to_string(value.width) + 'x' +
                                  std::to_string(value.height);
        set_literal(label);
        container_bytes_ = value.bytes;
    }
    void set_decoded_text(std::span<const params::EncodedText> pieces,
                          params::LineEndings line_endings) override {
        encodings_.clear();
        std::u16string text;
        for (const params::EncodedText& piece : pieces) {
            encodings_.push_back(piece.encoding);
            text += decoded(piece.bytes, piece.encoding);
        }
        params::convert_line_endings(text, line_endings);
        result_ = std::move(text);
    }

  private:
    std::vector<std::u16string> parameters_;
    std::map<std::size_t, std::int32_t> step_options_;
    std::map<std::size_t, std::string> containers_;
    std::string container_bytes_;
    std::map<std::u16string, std::u16string> calculations_;
    std::vector<std::string> notes_;
    std::optional<std::u16string> result_;
    std::vector<params::TextEncoding> encodings_;
};

} // namespace vell::test
