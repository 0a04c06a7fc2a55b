// Parameters of a script step, described by type, and the definition that the host reads of them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vell::plugin {

enum class ParameterType : std::uint8_t {
    Target,      // the variable or field that receives the result
    Calculation, // arrives as its value, as empty data when left out
    Bool,        // arrives as 0 or 1
    List,        // arrives as the value of the chosen item
};

enum class DataType : std::uint8_t { Text, Number, Date, Time, TimeStamp, Container };

struct ListItem {
    std::int32_t value;
    std::string_view label;
};

struct StepParameter {
    ParameterType type;
    std::string_view label;
    DataType data_type = DataType::Text;  // of a target or calculation
    std::span<const ListItem> items = {}; // of a list
    std::uint8_t default_index = 0;       // of a list: index of an item; of a bool: 0 or 1
};

constexpr StepParameter target(std::string_view label, DataType type = DataType::Text) {
    return {ParameterType::Target, label, type};
}
constexpr StepParameter calculation(std::string_view label, DataType type = DataType::Text) {
    return {ParameterType::Calculation, label, type};
}
constexpr StepParameter boolean(std::string_view label, bool by_default = false) {
    return {ParameterType::Bool, label, DataType::Text, {}, by_default};
}
constexpr StepParameter list(std::string_view label, std::span<const ListItem> items,
                             std::uint8_t default_index = 0) {
    return {ParameterType::List, label, DataType::Text, items, default_index};
}

// The "<PluginStep>" definition. The target carries no ID; the others are numbered from 1 in order,
// so that a step's values stand where its function has them and index 0 is the (empty) switches.
std::string step_definition(std::span<const StepParameter> parameters);

} // namespace vell::plugin
