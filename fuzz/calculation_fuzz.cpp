// Calculations and statements as a person may type them. Errors must lie within the text, and what
// can be read must evaluate to the same value twice.
#include "console/calc/evaluator.h"
#include "console/calc/parser.h"
#include "console/model/unicode.h"
#include "fuzz/input.h"
#include "src/base/utf8.h"

#include <string>
#include <vector>

namespace vell::calculation_fuzz {
namespace {

using namespace vell::console;

class Functions : public ExternalFunctions {
  public:
    std::span<const ExternalFunction> all() const override { return functions_; }
    Result<Value, std::string> call(const ExternalFunction& function,
                                    std::span<const Value> arguments) override {
        if (function.handle == 0)
            return Failure{std::string("refused")};
        return arguments.empty() ? Value() : arguments.back();
    }

  private:
    std::vector<ExternalFunction> functions_ = {
        {u"Refuse", u"Refuse( a )", 1, 1, 0},
        {u"Last", u"Last( a )", 0, 1, 1},
        {u"Last", u"Last( a ; b ; c … )", 3, -1, 2},
    };
};

class Services : public HostServices {
  public:
    Value get(GetItem item) override {
        switch (item) {
        case GetItem::CurrentDate:
            return Date{736'000};
        case GetItem::CurrentTime:
            return Time{Decimal(3661)};
        case GetItem::CurrentTimestamp:
            return Timestamp{Decimal(63'000'000'000)};
        default:
            return u"somewhere";
        }
    }
    Result<Value, std::string> container_from_file(std::u16string_view) override {
        return Failure{std::string("no files here")};
    }
};

// A page of replacements, each lengthening what the one before gave, fills any memory; the language
// does not forbid it.
bool may_grow_beyond_measure(std::u16string_view source) {
    const std::u16string text = lower_case(source);
    int replacements = 0;
    for (const std::u16string_view part : {u"substitute", u"["})
        for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
            ++replacements;
    return replacements > 3;
}

void check_error(std::u16string_view source, const CalcError& error) {
    FUZZ_CHECK(error.position <= source.size());
    FUZZ_CHECK(!error.message.empty());
    const SourcePlace place = locate(source, error.position);
    FUZZ_CHECK(place.line >= 1 && place.column >= 1);
    FUZZ_CHECK(place.offset_in_line <= place.line_text.size());
    FUZZ_CHECK(caret_display(source, error).find('^') != std::string::npos);
}

void check_evaluation(std::u16string_view source, const Node& calculation) {
    Functions functions;
    Services services;
    const Variables variables = {{u"$text", Value(u"a1\rb2")},
                                 {u"$number", Value(Decimal(-12))},
                                 {u"$$date", Value(Date{1})}};
    const EvaluationContext context{functions, services, variables};
    const auto value = evaluate(calculation, context);
    if (!value)
        return check_error(source, value.error());
    const auto again = evaluate(calculation, context);
    FUZZ_CHECK(again && again->type() == value->type());
    FUZZ_CHECK(again->as_text() == value->as_text());
    const Decimal number = value->as_number();
    FUZZ_CHECK(Decimal::parse(number.to_text()) == number);
}

} // namespace

FUZZ_TARGET(calculation) {
    const std::u16string source = utf16_from_utf8(fuzz::as_text(data, size));
    Functions functions;
    const auto calculation = parse_calculation(source, functions);
    if (!calculation)
        check_error(source, calculation.error());
    else if (!may_grow_beyond_measure(source))
        check_evaluation(source, **calculation);

    const auto statement = parse_statement(source, functions);
    if (!statement)
        check_error(source, statement.error());
    else if (const auto* step = std::get_if<StepStatement>(&*statement))
        FUZZ_CHECK(step->name_position + step->name_length <= source.size());
    return 0;
}

} // namespace vell::calculation_fuzz
