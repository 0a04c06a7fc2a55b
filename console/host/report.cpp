#include "console/host/report.h"

#include "console/host/container_file.h"
#include "console/model/unicode.h"

#include <algorithm>
#include <charconv>

namespace vell::console {

namespace {

// CR and CR LF as LF, and one LF at the end.
std::u16string with_line_feeds(std::u16string text) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool pair = text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n';
        if (!pair)
            text[kept++] = text[i] == u'\r' ? u'\n' : text[i];
    }
    text.resize(kept);
    if (!text.ends_with(u'\n'))
        text += u'\n';
    return text;
}

const fm::BinaryData* binary_of(const Value& value) {
    const auto container = std::dynamic_pointer_cast<const HostContainer>(value.container());
    return container ? container->get() : nullptr;
}

std::string padded(std::string text, std::size_t width) {
    if (text.size() < width)
        text.append(width - text.size(), ' ');
    return text;
}

std::string right_aligned(const std::string& text, std::size_t width) {
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

std::string container_text(const Value& value) {
    const std::vector<ContainerStream> streams = streams_of(binary_of(value));
    std::string text = "container \"" + utf8_from_utf16(value.as_text()) + "\", " +
                       std::to_string(streams.size()) +
                       (streams.size() == 1 ? " stream\n" : " streams\n");
    for (const ContainerStream& stream : streams)
        text += "  " + utf8_from_utf16(utf16_from_utf8(stream.type)) +
                right_aligned(std::to_string(stream.size), 12) + " bytes\n";
    return text;
}

std::string counts(int minimum, int maximum) {
    if (maximum < 0)
        return std::to_string(minimum) + "+";
    return minimum == maximum ? std::to_string(minimum)
                              : std::to_string(minimum) + "-" + std::to_string(maximum);
}

std::string hexadecimal(std::uint32_t value) {
    char digits[8];
    const auto end = std::to_chars(digits, digits + 8, value, 16).ptr;
    const std::string text(digits, end);
    return "0x" + (text.size() < 4 ? std::string(4 - text.size(), '0') : "") + text;
}

// As it is written in a statement: step "Copy File" [ Source ; Destination ].
std::string step_prototype(const RegisteredStep& step) {
    std::string text = "step \"" + utf8_from_utf16(step.name) + "\"";
    std::string separator = " [ ";
    for (const StepParameter& parameter : step.definition.parameters) {
        text += separator + utf8_from_utf16(parameter.label);
        separator = " ; ";
    }
    return text + (step.definition.parameters.empty() ? "" : " ]");
}

// "words for type-ahead|description"
std::string description_lines(const std::u16string& text) {
    const std::size_t bar = text.find(u'|');
    const std::u16string words = bar == text.npos ? u"" : text.substr(0, bar);
    const std::u16string sentence = bar == text.npos ? text : text.substr(bar + 1);
    std::string lines;
    if (!sentence.empty())
        lines += "  description   " + utf8_from_utf16(sentence) + "\n";
    if (!words.empty())
        lines += "  type-ahead    " + utf8_from_utf16(words) + "\n";
    return lines;
}

std::string function_text(const RegisteredFunction& function) {
    return utf8_from_utf16(function.prototype) + "\n  function      " +
           utf8_from_utf16(function.name) + "\n  ID            " + std::to_string(function.id) +
           " of plug-in " + function.plugin_id + "\n  arguments     " +
           counts(function.min_arguments, function.max_arguments) + "\n  flags         " +
           hexadecimal(function.flags) + "\n" + description_lines(function.description);
}

std::string parameter_text(const StepParameter& parameter) {
    std::string text = "  " + right_aligned(std::to_string(parameter.id), 3) + "  " +
                       padded(std::string(type_name(parameter.type)), 6) +
                       utf8_from_utf16(parameter.label);
    switch (parameter.type) {
    case StepParameterType::Calculation:
        text += " (" + std::string(type_name(parameter.data_type)) + ")";
        break;
    case StepParameterType::Boolean:
        text +=
            std::string(" (") + (parameter.default_value != 0 ? "true" : "false") + " by default)";
        break;
    case StepParameterType::List:
        break;
    }
    text += parameter.show_inline ? "\n" : ", not shown inline\n";
    for (const StepListValue& value : parameter.values)
        text += "             " + right_aligned(std::to_string(value.id), 5) + "  " +
                utf8_from_utf16(value.label) +
                (value.id == parameter.default_value ? " (default)\n" : "\n");
    return text;
}

std::string step_text(const RegisteredStep& step) {
    const StepDefinition& definition = step.definition;
    std::string text = step_prototype(step) + "\n  script step   " + utf8_from_utf16(step.name) +
                       "\n  ID            " + std::to_string(step.id) + " of plug-in " +
                       step.plugin_id + "\n  flags         " + hexadecimal(step.flags) + "\n" +
                       description_lines(step.description);
    text += "  target        ";
    text += definition.target ? utf8_from_utf16(definition.target->label) + " (" +
                                    std::string(type_name(definition.target->data_type)) + ")\n"
                              : "none, the result is dropped\n";
    if (!definition.parameters.empty())
        text += "  parameters, by index\n";
    for (const StepParameter& parameter : definition.parameters)
        text += parameter_text(parameter);
    for (const std::string& ignored : definition.ignored)
        text += "  ignored       " + ignored + "\n";
    return text;
}

} // namespace

bool is_error_result(const Value& value) {
    return value.text() && value.text()->starts_with(u"$$");
}

std::int64_t error_code_of(const Value& value) {
    if (!is_error_result(value))
        return 0;
    const std::string digits = utf8_from_utf16(value.text()->substr(2, 20));
    std::int64_t code = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), code);
    return code;
}

std::string plain_result(const Value& value, bool raw) {
    if (value.container())
        return container_text(value);
    return utf8_from_utf16(raw ? value.as_text() : with_line_feeds(value.as_text()));
}

std::string json_result(std::size_t line, const Value& value) {
    std::string text = "{\"line\":" + std::to_string(line) + ",\"type\":\"" +
                       std::string(type_name(value.type())) +
                       "\",\"result\":" + json_string(value.as_text()) +
                       ",\"code\":" + std::to_string(error_code_of(value));
    if (value.container()) {
        text += ",\"streams\":[";
        std::string separator;
        for (const ContainerStream& stream : streams_of(binary_of(value))) {
            text += std::exchange(separator, ",") + "{\"type\":" + json_string(stream.type) +
                    ",\"size\":" + std::to_string(stream.size) + "}";
        }
        text += "]";
    }
    return text + "}\n";
}

std::string plain_error(const std::string& name, std::size_t line, std::u16string_view source,
                        const CalcError& error) {
    if (source.empty()) // of an error without a place
        return "vellhost: " + error.message + "\n";
    const SourcePlace place = locate(source, error.position);
    const std::string where =
        std::to_string(line + place.line - 1) + ":" + std::to_string(place.column);
    return (name.empty() ? "vellhost: " : name + ":" + where + ": ") + error.message +
           (name.empty() ? " (" + where + ")\n" : "\n") + caret_display(source, error);
}

std::string json_error(std::size_t line, std::u16string_view source, const CalcError& error) {
    return "{\"line\":" + std::to_string(line) + ",\"error\":" + json_string(error.message) +
           ",\"column\":" + std::to_string(locate(source, error.position).column) + "}\n";
}

std::string registration_list(const PluginHost& host) {
    const PluginIdentity& identity = host.identity();
    std::string text = utf8_from_utf16(identity.name) + " " + identity.file_version +
                       "\n\nFunctions (" + std::to_string(host.functions().size()) +
                       "): ID, arguments, prototype\n";
    for (const RegisteredFunction& function : host.functions())
        text += right_aligned(std::to_string(function.id), 6) + "  " +
                padded(counts(function.min_arguments, function.max_arguments), 4) +
                utf8_from_utf16(function.prototype) + "\n";
    text += "\nScript steps (" + std::to_string(host.steps().size()) +
            "): ID, parameters, as a statement\n";
    for (const RegisteredStep& step : host.steps())
        text += right_aligned(std::to_string(step.id), 6) + "  " +
                padded(std::to_string(step.definition.parameters.size()), 4) +
                step_prototype(step) + "\n";
    return text;
}

std::string description(const PluginHost& host, std::u16string_view name) {
    std::string text;
    for (const RegisteredFunction& function : host.functions()) {
        if (equal_ignoring_case(function.name, name))
            text += (text.empty() ? "" : "\n") + function_text(function);
    }
    for (const RegisteredStep& step : host.steps()) {
        if (equal_ignoring_case(step.name, name))
            text += (text.empty() ? "" : "\n") + step_text(step);
    }
    return text;
}

std::string script_request_text(const ScriptRequest& request) {
    constexpr const char* controls[] = {"halting", "exiting", "resuming", "pausing"};
    std::string text = "the plug-in starts script \"" + utf8_from_utf16(request.script_name) +
                       "\" of file \"" + utf8_from_utf16(request.file_name) + "\"";
    if (request.control < std::size(controls))
        text += std::string(", ") + controls[request.control] + " the running one";
    return text + ", parameter: " + plain_result(request.parameter, false);
}

std::string leak_list() {
    std::string text;
    for (int i = 0; i < static_cast<int>(StandInObject::Count_); ++i) {
        const auto kind = static_cast<StandInObject>(i);
        if (const std::int64_t count = StandIn_LiveObjects(kind); count != 0)
            text += "  " + padded(StandIn_ObjectName(kind), 16) + std::to_string(count) + "\n";
    }
    return text;
}

} // namespace vell::console
