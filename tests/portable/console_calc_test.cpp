// The calculation language: what a person writes, and what the host would answer.
#include "console/calc/evaluator.h"
#include "console/calc/parser.h"
#include "console/model/unicode.h"

#include <gtest/gtest.h>

#include <ctime>
#include <fstream>

namespace vell::console {
namespace {

class FileContainer : public Container {
  public:
    explicit FileContainer(std::u16string name) : name_(std::move(name)) {}
    std::u16string file_name() const override { return name_; }

  private:
    std::u16string name_;
};

// A world with a few plug-in functions: Join( … ) shows its arguments with their types, Count and
// Version have two entries each, Fail fails, Tick counts its calls.
class World : public ExternalFunctions, public HostServices {
  public:
    std::span<const ExternalFunction> all() const override { return functions_; }

    Result<Value, std::string> call(const ExternalFunction& function,
                                    std::span<const Value> arguments) override {
        ++calls;
        if (function.name == u"Fail")
            return Failure{std::string("it went wrong")};
        if (function.name == u"Same")
            return arguments[0];
        std::string shown = utf8_from_utf16(function.prototype);
        for (const Value& argument : arguments)
            shown += "|" + std::string(type_name(argument.type())) + ":" +
                     utf8_from_utf16(argument.as_text());
        return Value(utf16_from_utf8(shown));
    }

    Value get(GetItem item) override {
        return item == GetItem::CurrentDate ? Value(Date{day_number(2020, 2, 29)})
                                            : Value(u"other");
    }

    Result<Value, std::string> container_from_file(std::u16string_view path) override {
        if (path == u"missing")
            return Failure{std::string("there is no file missing")};
        return Value(ContainerPtr(std::make_shared<FileContainer>(std::u16string(path))));
    }

    Variables variables;
    int calls = 0;

  private:
    std::vector<ExternalFunction> functions_ = {
        {u"Join", u"Join( a { ; … } )", 1, -1, 0},
        {u"Version", u"Version", 0, 0, 1},
        {u"Version", u"Version( switches )", 1, 1, 2},
        {u"Fail", u"Fail", 0, 0, 4},
        {u"Tick", u"Tick", 0, 0, 5},
        {u"Same", u"Same( a )", 1, 1, 6},
    };
};

CalcResult<Value> evaluate_in(World& world, std::u16string_view source) {
    const NodePtr root = VELL_TRY(parse_calculation(source, world));
    return evaluate(*root, {world, world, world.variables});
}

// "number:3", or "error@7: message".
std::string answer(World& world, std::string_view source) {
    const auto result = evaluate_in(world, utf16_from_utf8(source));
    if (!result)
        return "error@" + std::to_string(result.error().position) + ": " + result.error().message;
    return std::string(result->is_invalid() ? "invalid" : type_name(result->type())) + ":" +
           utf8_from_utf16(result->as_text());
}

std::string answer(std::string_view source) {
    World world;
    return answer(world, source);
}

// Each line of the table is a calculation, " → " and its answer, with "␍" for carriage returns.
TEST(Calculation, GivesWhatTheTableSays) {
    std::ifstream table(VELL_TEST_DATA "/calculations.txt");
    int rows = 0;
    const std::string arrow = " → ";
    for (std::string line; std::getline(table, line);) {
        const std::size_t end = line.find(arrow);
        if (end == std::string::npos)
            continue;
        std::string expected = line.substr(end + arrow.size());
        for (std::size_t at; (at = expected.find("␍")) != std::string::npos;)
            expected.replace(at, std::string_view("␍").size(), "\r");
        EXPECT_EQ(answer(line.substr(0, end)), expected) << line;
        ++rows;
    }
    EXPECT_GT(rows, 70);
}

TEST(Calculation, ConditionsEvaluateOnlyWhatTheyNeed) {
    World world;
    EXPECT_EQ(answer(world, "If( 1 ; 5 ; Tick )"), "number:5");
    EXPECT_EQ(answer(world, "Case( 0 ; Tick ; \"\" ; Tick ; 1 ; 7 ; Tick )"), "number:7");
    EXPECT_EQ(answer(world, "0 and Tick or 1 or Tick"), "number:1");
    EXPECT_EQ(answer(world, "Tick & Join()"),
              "error@7: Join( a { ; … } ) takes at least 1 argument, none are given");
    EXPECT_EQ(world.calls, 0);
    EXPECT_EQ(answer(world, "1 and Tick"), "number:0");
    EXPECT_EQ(world.calls, 1);
}

TEST(Calculation, VariablesKeepContainersAndLinesMayEndInComments) {
    World world;
    const ContainerPtr container = std::make_shared<FileContainer>(u"f");
    world.variables.emplace(u"$c", Value(container));
    EXPECT_EQ(evaluate_in(world, u"Same( $C )")->container(), container);
    EXPECT_EQ(answer(world, "1 /* two * / */ + // three\n 4"), "number:5");
}

std::string repeated(int count, std::string_view text) {
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

TEST(Calculation, NestingIsBoundedAndLengthIsNot) {
    const auto nested = [](int depth, const std::string& open, const std::string& close) {
        return repeated(depth, open) + "1" + repeated(depth, close);
    };
    // One operator of each precedence before each parenthesis makes the deepest frames.
    const std::string all_levels = "0 or 1 and 1 = 1 & 1 + 1 * 1 ^ (";
    EXPECT_EQ(answer(nested(max_nesting, all_levels, ")")).substr(0, 7), "number:");
    for (const auto& [open, close] : {std::pair{"(", ")"},
                                      {"not - (", ")"},
                                      {"If( 1 ; ", ")"},
                                      {"Substitute( 1 ; [ ", " ; 2 ] )"}})
        EXPECT_EQ(answer(nested(100'000, open, close)).substr(0, 6), "error@") << open;
    EXPECT_NE(answer(nested(max_nesting + 1, "(", ")")).find("nested more than"),
              std::string::npos);

    // A long calculation of one level: quadratic work would take minutes.
    const std::clock_t start = std::clock(); // others may slow this machine down
    EXPECT_EQ(answer("0" + repeated(200'000, " + 1")), "number:200000");
    EXPECT_EQ(answer("\"\"" + repeated(200'000, " & \"x\"")).size(), 200'005U);
    EXPECT_EQ(answer(std::string(200'000, '-') + "1"), "number:1");
    EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, 20);
}

std::string display(std::string_view source, std::size_t position, std::size_t length) {
    return caret_display(utf16_from_utf8(source), {"", position, length});
}

TEST(CalculationError, CaretStandsUnderThePlace) {
    EXPECT_EQ(display("one\ntwo 😀xy\nthree", 10, 2), "    two 😀xy\n         ^^\n");
    EXPECT_EQ(display("\tx", 1, 1), "    \tx\n    \t^\n");
    const std::string shown = display(std::string(500, 'a') + "#" + std::string(500, 'b'), 500, 1);
    const std::size_t line_end = shown.find('\n');
    EXPECT_LT(line_end, 130U);
    // The ellipsis is one column of three bytes.
    EXPECT_EQ(shown.find('#') - 2, shown.find('^') - line_end - 1);

    const SourcePlace place = locate(u"a\r\nb\rcd", 6);
    EXPECT_EQ(place.line, 3U);
    EXPECT_EQ(place.column, 2U);
    EXPECT_EQ(place.line_text, u"cd");
}

TEST(Statement, KindsAreToldApart) {
    World world;
    auto parse = [&](std::u16string_view line) {
        return parse_statement(line, world).value();
    };
    EXPECT_TRUE(std::holds_alternative<EmptyStatement>(parse(u" // $x = 1")));
    EXPECT_EQ(std::get<AssignStatement>(parse(u"$Name = $a = 1")).variable, u"$name");
    EXPECT_TRUE(std::holds_alternative<EvaluateStatement>(parse(u"$x ≠ 1")));

    const Statement statement = parse(uR"(STEP "Copy \"it\"" [ 1 ; ; "a]" & Left( "b" ; 1 ) ; ])");
    const auto& step = std::get<StepStatement>(statement);
    EXPECT_EQ(step.name, uR"(Copy "it")");
    ASSERT_EQ(step.arguments.size(), 4U);
    EXPECT_TRUE(step.arguments[0].calculation && step.arguments[2].calculation);
    EXPECT_FALSE(step.arguments[1].calculation || step.arguments[3].calculation);
    EXPECT_EQ(std::get<StepStatement>(parse(uR"(step "x")")).arguments.size(), 0U);
}

TEST(Statement, ErrorsHavePlaces) {
    World world;
    auto error = [&](std::u16string_view line) {
        return parse_statement(line, world).error();
    };
    EXPECT_EQ(error(u"step Copy").position, 5U);
    EXPECT_EQ(error(uR"(step "x" [ 1)").message, "this [ is not closed");
    EXPECT_EQ(error(uR"(step "x" [ 1 ] 2)").position, 15U);
    EXPECT_EQ(error(u"$x = ").position, 5U);
}

TEST(Json, StringsAreValidWhateverTheText) {
    const std::u16string text = std::u16string(u"\"\\\r\n\t\u0001\u007F/é€😀") + char16_t{0xD83D} +
                                u"x" + char16_t{0xDE00} + std::u16string(1, u'\0');
    EXPECT_EQ(json_string(text), "\"\\\"\\\\\\r\\n\\t\\u0001\\u007f/é€😀\\ud83dx\\ude00\\u0000\"");
}

} // namespace
} // namespace vell::console
