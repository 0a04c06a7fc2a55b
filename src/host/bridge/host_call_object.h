// A call of the host, as a function's body sees it.
#pragma once

#include "src/host/bridge/host_data.h"
#include "src/params/call.h"
#include "src/plugin/plugin.h"

namespace vell::host {

class HostCallObject : public params::Call {
  public:
    // The host owns the objects; they outlive the call.
    HostCallObject(plugin::Plugin& plugin, const fm::ExprEnv* environment,
                   const fm::DataVect* parameters, fm::Data* result, bool is_step);

    bool is_step() const override { return is_step_; }
    bool can_ask_user() const override;
    void* main_window() const override;
    void debug_note(std::string_view line) override;
    std::size_t parameter_count() const override { return parameters_.size(); }
    params::SwitchSet switches() override;
    params::AskedNames* asked_names() override { return asked_ ? &*asked_ : nullptr; }
    std::u16string text(std::size_t index) override;
    Result<std::string> encode(std::u16string_view text, params::TextEncoding encoding,
                               params::Unencodable unencodable) override;
    std::u16string decode(std::string_view bytes, params::TextEncoding encoding) override;
    std::int64_t number(std::size_t index) override;
    std::int32_t step_option(std::size_t index) override;
    std::optional<params::CalendarTime> time_stamp(std::size_t index) override;
    bool is_container(std::size_t index) override;
    Result<void> read_container(std::size_t index, const params::ByteSink& sink) override;
    Result<std::unique_ptr<ByteSource>> open_container(std::size_t index) override;
    std::u16string container_name(std::size_t index) override;

    Result<std::u16string> evaluate(std::u16string_view calculation) override;

    void set_text(std::u16string_view text) override;
    void set_literal(std::string_view ascii) override;
    void set_number(std::int64_t value) override;
    void set_date(const params::CalendarTime& date) override;
    void set_time(const params::CalendarTime& time) override;
    void set_time_stamp(const params::CalendarTime& time_stamp) override;
    void set_container(const params::ContainerValue& value) override;
    void set_decoded_text(std::span<const params::EncodedText> pieces,
                          params::LineEndings line_endings) override;

  private:
    const fm::Text* host_text(std::size_t index) const;

    plugin::Plugin& plugin_;
    const fm::ExprEnv* environment_;
    ParameterVector parameters_;
    fm::Data* result_;
    bool is_step_;
    std::optional<params::AskedNames> asked_; // while calls are logged
};

} // namespace vell::host
