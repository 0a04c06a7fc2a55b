#include "console/calc/step_definition.h"

#include "console/calc/xml_reader.h"
#include "console/model/unicode.h"

#include <algorithm>

namespace vell::console {

namespace {

// A whole number with an optional sign and nothing else.
std::optional<std::int64_t> whole_number(std::u16string_view text) {
    const bool negative = text.starts_with(u'-');
    const std::u16string_view digits = text.substr(negative ? 1 : 0);
    constexpr std::size_t most_digits = 18;
    if (digits.empty() || digits.size() > most_digits)
        return std::nullopt;
    std::int64_t value = 0;
    for (char16_t digit : digits) {
        if (digit < u'0' || digit > u'9')
            return std::nullopt;
        value = value * 10 + (digit - u'0');
    }
    return negative ? -value : value;
}

bool is_true(const std::u16string* text) {
    return text && equal_ignoring_case(*text, u"true");
}

class DefinitionReader {
  public:
    CalcResult<StepDefinition> read(const XmlElement& root);

  private:
    void ignore(const XmlElement& element, const std::string& reason);
    void parameter(const XmlElement& element);
    void add_target(const XmlElement& element);
    void list_values(const XmlElement& element, StepParameter& list);
    void default_of(const XmlElement& element, StepParameter& parameter);
    ValueType data_type(const XmlElement& element);

    StepDefinition definition_;
};

void DefinitionReader::ignore(const XmlElement& element, const std::string& reason) {
    const std::u16string* label = element.attribute(u"Label");
    definition_.ignored.push_back("<" + utf8_from_utf16(element.name) + ">" +
                                  (label ? " \"" + utf8_from_utf16(*label) + "\"" : "") + ": " +
                                  reason);
}

ValueType DefinitionReader::data_type(const XmlElement& element) {
    const std::u16string* text = element.attribute(u"DataType");
    if (!text)
        return ValueType::Text;
    constexpr ValueType types[] = {ValueType::Text, ValueType::Number,    ValueType::Date,
                                   ValueType::Time, ValueType::Timestamp, ValueType::Container};
    for (ValueType type : types) {
        if (equal_ignoring_case(*text, utf16_from_utf8(type_name(type))))
            return type;
    }
    ignore(element, "unknown DataType " + utf8_from_utf16(*text));
    return ValueType::Text;
}

bool show_inline(const XmlElement& element) {
    return is_true(element.attribute(u"ShowInline")) || is_true(element.attribute(u"ShowInLine"));
}

std::u16string label_of(const XmlElement& element) {
    const std::u16string* label = element.attribute(u"Label");
    return label ? *label : std::u16string();
}

void DefinitionReader::add_target(const XmlElement& element) {
    if (definition_.target)
        return ignore(element, "only the first target counts");
    definition_.target = StepTarget{label_of(element), data_type(element), show_inline(element)};
}

void DefinitionReader::list_values(const XmlElement& element, StepParameter& list) {
    std::int64_t next_id = 0;
    for (const XmlElement& child : element.children) {
        if (child.name != u"Value") {
            ignore(child, "not a value of a list");
            continue;
        }
        if (const std::u16string* text = child.attribute(u"ID")) {
            const auto id = whole_number(*text);
            if (id)
                next_id = *id;
            else
                ignore(child, "the ID " + utf8_from_utf16(*text) + " is not a whole number");
        }
        list.values.push_back({next_id++, child.text});
    }
}

void DefinitionReader::default_of(const XmlElement& element, StepParameter& parameter) {
    const std::u16string* text = element.attribute(u"Default");
    if (parameter.type == StepParameterType::Boolean) {
        parameter.default_value = is_true(text) ? 1 : 0;
        return;
    }
    if (parameter.values.empty())
        return;
    const auto index = text ? whole_number(*text) : 0;
    const bool exists = index && *index >= 0 && std::cmp_less(*index, parameter.values.size());
    if (!exists)
        ignore(element, "the Default " + utf8_from_utf16(*text) + " is not the index of a value");
    parameter.default_value = parameter.values[exists ? static_cast<std::size_t>(*index) : 0].id;
}

void DefinitionReader::parameter(const XmlElement& element) {
    const std::u16string* type = element.attribute(u"Type");
    StepParameter result;
    if (type && equal_ignoring_case(*type, u"target"))
        return add_target(element);
    if (type && equal_ignoring_case(*type, u"calc"))
        result.type = StepParameterType::Calculation;
    else if (type && equal_ignoring_case(*type, u"bool"))
        result.type = StepParameterType::Boolean;
    else if (type && equal_ignoring_case(*type, u"list"))
        result.type = StepParameterType::List;
    else
        return ignore(element, type ? "unknown Type " + utf8_from_utf16(*type) : "it has no Type");

    const std::u16string* id_text = element.attribute(u"ID");
    const auto id = id_text ? whole_number(*id_text) : std::nullopt;
    if (!id || *id < 0 || *id > max_step_parameter_id)
        return ignore(element, id_text
                                   ? "the ID " + utf8_from_utf16(*id_text) + " is not one of 0 to 9"
                                   : "it has no ID");
    result.id = static_cast<int>(*id);
    if (std::any_of(definition_.parameters.begin(), definition_.parameters.end(),
                    [&](const StepParameter& other) { return other.id == result.id; }))
        return ignore(element, "the ID " + utf8_from_utf16(*id_text) + " is taken");

    result.label = label_of(element);
    result.show_inline = show_inline(element);
    if (result.type == StepParameterType::Calculation) {
        result.data_type = data_type(element);
    } else {
        if (result.type == StepParameterType::List)
            list_values(element, result);
        default_of(element, result);
    }
    definition_.parameters.push_back(std::move(result));
}

CalcResult<StepDefinition> DefinitionReader::read(const XmlElement& root) {
    if (root.name != u"PluginStep")
        return Failure{CalcError{"the definition of a step is a <PluginStep>, not a <" +
                                     utf8_from_utf16(root.name) + ">",
                                 root.position, root.name.size() + 1}};
    for (const XmlElement& child : root.children) {
        if (child.name == u"Parameter")
            parameter(child);
        else
            ignore(child, "not a parameter");
    }
    return std::move(definition_);
}

CalcResult<Value> list_choice(const StepParameter& parameter, const StepArgument& argument) {
    const Value& value = *argument.value;
    const std::u16string text = value.as_text();
    for (const StepListValue& choice : parameter.values) {
        if (equal_ignoring_case(choice.label, text))
            return Value(Decimal(choice.id));
    }
    std::string known;
    for (const StepListValue& choice : parameter.values) {
        if (has_digit(text) && value.as_number() == Decimal(choice.id))
            return Value(Decimal(choice.id));
        known += (known.empty() ? "" : ", ") + std::to_string(choice.id) + " \"" +
                 utf8_from_utf16(choice.label) + "\"";
    }
    return Failure{CalcError{"the list \"" + utf8_from_utf16(parameter.label) + "\" has no value " +
                                 utf8_from_utf16(text) + "; it has " + known,
                             argument.position}};
}

CalcResult<Value> received(const StepParameter& parameter, const StepArgument& argument) {
    if (!argument.value)
        return parameter.type == StepParameterType::Calculation
                   ? Value()
                   : Value(Decimal(parameter.default_value));
    switch (parameter.type) {
    case StepParameterType::Boolean:
        return Value::boolean(argument.value->as_boolean());
    case StepParameterType::List:
        return list_choice(parameter, argument);
    case StepParameterType::Calculation:
        break;
    }
    return argument.value->converted_to(parameter.data_type);
}

} // namespace

std::string_view type_name(StepParameterType type) {
    switch (type) {
    case StepParameterType::Boolean:
        return "bool";
    case StepParameterType::List:
        return "list";
    case StepParameterType::Calculation:
        break;
    }
    return "calc";
}

CalcResult<StepDefinition> read_step_definition(std::u16string_view xml) {
    return DefinitionReader().read(VELL_TRY(read_xml(xml)));
}

CalcResult<std::vector<Value>> step_vector(const StepDefinition& definition,
                                           std::span<const StepArgument> arguments) {
    const std::size_t count = definition.parameters.size();
    if (arguments.size() > count)
        return Failure{CalcError{"the step has " + std::to_string(count) +
                                     (count == 1 ? " parameter, " : " parameters, ") +
                                     std::to_string(arguments.size()) + " are given",
                                 arguments[count].position}};
    std::vector<Value> vector;
    const StepArgument omitted;
    for (std::size_t i = 0; i < count; ++i) {
        const StepParameter& parameter = definition.parameters[i];
        const auto index = static_cast<std::size_t>(parameter.id);
        vector.resize(std::max(vector.size(), index + 1));
        vector[index] =
            VELL_TRY(received(parameter, i < arguments.size() ? arguments[i] : omitted));
    }
    return vector;
}

} // namespace vell::console
