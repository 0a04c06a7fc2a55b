#include "src/base/number_text.h"
#include "src/plugin/vocabulary/step_parameter.h"

#include <array>

namespace vell::plugin {
namespace {

std::string_view type_name(ParameterType type) {
    constexpr std::array<std::string_view, 4> names{"target", "calc", "bool", "list"};
    return names[static_cast<std::size_t>(type)];
}

std::string_view data_type_name(DataType type) {
    constexpr std::array<std::string_view, 6> names{"text", "number",    "date",
                                                    "time", "timestamp", "container"};
    return names[static_cast<std::size_t>(type)];
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

std::string attribute(std::string_view name, std::string_view value) {
    return std::string(" ").append(name).append("=\"").append(escaped(value)).append("\"");
}

std::string list_items(std::span<const ListItem> items) {
    std::string xml;
    for (const ListItem& item : items)
        xml += "<Value" + attribute("ID", to_text(std::int64_t{item.value})) + ">" +
               escaped(item.label) + "</Value>";
    return xml;
}

std::string element(const StepParameter& parameter, std::int64_t id) {
    std::string xml = "<Parameter" + attribute("Type", type_name(parameter.type));
    if (parameter.type == ParameterType::Target || parameter.type == ParameterType::Calculation)
        xml += attribute("DataType", data_type_name(parameter.data_type));
    xml += attribute("ShowInLine", "true") + attribute("Label", parameter.label);
    if (parameter.type != ParameterType::Target)
        xml += attribute("ID", to_text(id));
    if (parameter.type == ParameterType::Bool)
        xml += attribute("Default", parameter.default_index != 0 ? "true" : "false");
    if (parameter.type != ParameterType::List)
        return xml + "/>";
    xml += attribute("Default", to_text(std::int64_t{parameter.default_index}));
    return xml + ">" + list_items(parameter.items) + "</Parameter>";
}

} // namespace

std::string step_definition(std::span<const StepParameter> parameters) {
    std::string xml = "<PluginStep>";
    std::int64_t id = 0;
    for (const StepParameter& parameter : parameters)
        xml += element(parameter, parameter.type == ParameterType::Target ? 0 : ++id);
    return xml + "</PluginStep>";
}

} // namespace vell::plugin
