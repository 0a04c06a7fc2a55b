// Definitions of script steps as the host reads them, and the values that a step receives.
#include "console/calc/step_definition.h"
#include "console/model/unicode.h"
#include "console/calc/xml_reader.h"

#include <gtest/gtest.h>

namespace vell::console {
namespace {

std::string xml_error(std::u16string_view document) {
    const auto result = read_xml(document);
    return result ? "" : std::to_string(result.error().position) + ": " + result.error().message;
}

TEST(Xml, WellFormedDocumentsAreRead) {
    const auto root = read_xml(u"<?xml version=\"1.0\"?>\n<!-- a > b -->\n"
                               u"<a x='1 &lt; \"2\"' _y-z = \"&#x1F600;&#65;&apos;\">t&amp;"
                               u"<![CDATA[<raw>]]><!-- c --><b/><b:c ></b:c >u</a > ");
    ASSERT_TRUE(root) << root.error().message;
    EXPECT_EQ(root->name, u"a");
    EXPECT_EQ(*root->attribute(u"x"), u"1 < \"2\"");
    EXPECT_EQ(*root->attribute(u"_y-z"), u"😀A'");
    EXPECT_EQ(root->attribute(u"X"), nullptr);
    EXPECT_EQ(root->text, u"t&<raw>u");
    ASSERT_EQ(root->children.size(), 2U);
    EXPECT_EQ(root->children[1].name, u"b:c");
}

TEST(Xml, WhatIsNotWellFormedIsRefusedWithItsPlace) {
    EXPECT_EQ(xml_error(u""), "0: an element is expected here");
    EXPECT_EQ(xml_error(u"<a><b></a></b>"), "6: </a> closes <b>");
    EXPECT_EQ(xml_error(u"<a x=1/>"), "5: the attribute's value must stand in quotes");
    EXPECT_EQ(xml_error(u"<a x=\"1\"y=\"2\"/>"), "8: a blank is expected before an attribute");
    EXPECT_EQ(xml_error(u"<a x='1' x='2'/>"), "9: the attribute x stands here twice");
    EXPECT_EQ(xml_error(u"<a x='a & b'/>"),
              "8: a plain & is not allowed here, it is written &amp;");
    EXPECT_EQ(xml_error(u"<a>&#xD800;</a>"), "3: this is not a character by number");
    EXPECT_EQ(xml_error(u"<a>&#99999999999;</a>"), "3: this is not a character by number");
    EXPECT_EQ(xml_error(u"<a>\u0001</a>"), "3: this character is not allowed");
    EXPECT_EQ(xml_error(u"<a/><b/>"), "4: nothing may follow the end of <a>");
    std::u16string deep;
    for (int i = 0; i < 100'000; ++i)
        deep += u"<a>";
    EXPECT_NE(xml_error(deep).find("nested too deep"), std::string::npos);
}

StepDefinition read(std::u16string_view parameters) {
    auto result =
        read_step_definition(u"<PluginStep>" + std::u16string(parameters) + u"</PluginStep>");
    EXPECT_TRUE(result);
    return std::move(result).value();
}

TEST(StepDefinition, EveryAttributeIsReadAsTheHostReadsIt) {
    const StepDefinition step = read(
        u"<Parameter Type='TARGET' ID='1' Label='Result' DataType='container'/>"
        u"<Parameter Type='Calc' ID='1' Label='a &amp; b' DataType='Number' ShowInline='true'/>"
        u"<Parameter Type='list' ID='2' Default='1' ShowInLine='True'>"
        u"<Value>zero</Value><Value ID='4200'>bytes</Value><Value>next</Value></Parameter>"
        u"<Parameter Type='bool' ID='0' Default='True'/><Parameter Type='bool' ID='9'/>");
    ASSERT_TRUE(step.target);
    EXPECT_EQ(step.target->data_type, ValueType::Container);
    ASSERT_EQ(step.parameters.size(), 4U);
    EXPECT_TRUE(step.ignored.empty());
    const auto& [calculation, list, on, off] =
        std::tie(step.parameters[0], step.parameters[1], step.parameters[2], step.parameters[3]);
    EXPECT_EQ(calculation.label, u"a & b");
    EXPECT_EQ(calculation.data_type, ValueType::Number);
    EXPECT_TRUE(calculation.show_inline && list.show_inline && !off.show_inline);
    ASSERT_EQ(list.values.size(), 3U);
    EXPECT_EQ(list.values[0].id, 0);
    EXPECT_EQ(list.values[2].id, 4201);
    EXPECT_EQ(list.default_value, 4200);
    EXPECT_EQ(on.default_value, 1);
    EXPECT_EQ(off.default_value, 0);
}

TEST(StepDefinition, WhatTheHostIgnoresIsIgnoredAndNoted) {
    const StepDefinition step = read(
        u"<Parameter Type='calc' ID='1' Label='kept'/><Parameter Type='calc' ID='1'/>"
        u"<Parameter Type='calc' ID='10'/><Parameter Type='calc' ID='-1'/>"
        u"<Parameter Type='calc' ID='1x'/><Parameter Type='calc'/><Parameter Type='text' ID='2'/>"
        u"<Parameter ID='2'/><Other/><Parameter Type='target' Label='first'/>"
        u"<Parameter Type='target' Label='second'/>");
    ASSERT_EQ(step.parameters.size(), 1U);
    EXPECT_EQ(step.parameters[0].label, u"kept");
    EXPECT_EQ(step.target->label, u"first");
    EXPECT_EQ(step.ignored.size(), 9U);

    const StepDefinition list = read(u"<Parameter Type='list' ID='1' Default='5'>"
                                     u"<Value ID='3'>three</Value></Parameter>");
    EXPECT_EQ(list.parameters[0].default_value, 3);
    EXPECT_EQ(list.ignored.size(), 1U);
    EXPECT_FALSE(read_step_definition(u"<Step/>"));
}

// The vector as "type:text|…".
std::string received(const StepDefinition& step, std::initializer_list<StepArgument> arguments) {
    const auto vector = step_vector(step, std::span(arguments.begin(), arguments.size()));
    if (!vector)
        return "error@" + std::to_string(vector.error().position) + ": " + vector.error().message;
    std::string text;
    for (const Value& value : *vector)
        text += std::string(type_name(value.type())) + ":" + utf8_from_utf16(value.as_text()) + "|";
    return text;
}

TEST(StepVector, ValuesStandAtTheirIndexesAndDefaultsFillIn) {
    const StepDefinition step =
        read(u"<Parameter Type='bool' ID='4' Default='true'/><Parameter Type='calc' ID='1'/>"
             u"<Parameter Type='list' ID='2' Label='L' Default='1'>"
             u"<Value ID='5'>five</Value><Value ID='12'>5th</Value></Parameter>"
             u"<Parameter Type='calc' DataType='number' ID='6'/>");
    const StepArgument omitted;
    EXPECT_EQ(received(step, {}), "text:|text:|number:12|text:|number:1|text:|text:|");
    EXPECT_EQ(
        received(step, {{Value(u"no")}, {Value(Decimal(5))}, {Value(Decimal(5))}, {Value(u"x3")}}),
        "text:|text:5|number:5|text:|number:0|text:|number:3|");
    // A label goes before a number that it resembles.
    EXPECT_EQ(received(step, {omitted, omitted, {Value(u"5TH")}}),
              "text:|text:|number:12|text:|number:1|text:|text:|");
    EXPECT_EQ(received(step, {omitted, omitted, {Value(u"6"), 42}}),
              "error@42: the list \"L\" has no value 6; it has 5 \"five\", 12 \"5th\"");
    EXPECT_EQ(received(step, {omitted, omitted, omitted, omitted, {Value(), 9}}),
              "error@9: the step has 4 parameters, 5 are given");
    EXPECT_EQ(received(read(u"<Parameter Type='target'/>"), {}), "");
}

} // namespace
} // namespace vell::console
