// The tables of functions and steps, and what users read of them.
#include "console/calc/step_definition.h"
#include "src/base/utf8.h"
#include "src/plugin/vocabulary/registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vell::plugin {
namespace {

TEST(Registry, RowsAreConsistent) {
    std::vector<std::int16_t> ids;
    for (const FunctionRow& row : function_rows()) {
        ids.push_back(row.registered_id());
        EXPECT_EQ(find_function(row.registered_id()), &row);
        EXPECT_EQ(function_prototype(row.id), row.prototype);
        EXPECT_TRUE(row.name().starts_with("VlFile_")) << row.prototype;
        EXPECT_LE(row.least_parameters.demanded, row.max_parameters) << row.prototype;
    }
    for (const StepRow& row : step_rows()) {
        ids.push_back(row.id);
        EXPECT_EQ(step_name(row.id), row.name);
        // A step serves its parameters where its function has them.
        const FunctionRow* function = find_function(static_cast<std::int16_t>(row.id - 3000));
        EXPECT_TRUE(!function || function->body == row.body) << row.name;
        const auto read =
            console::read_step_definition(utf16_from_utf8(step_definition(row.parameters)));
        ASSERT_TRUE(read && read->ignored.empty()) << row.name;
        std::size_t position = 0;
        for (const StepParameter& parameter : row.parameters) {
            if (parameter.type == ParameterType::Target)
                continue;
            const auto& seen = read->parameters.at(position++);
            EXPECT_EQ(seen.label, utf16_from_utf8(parameter.label)) << row.name;
            EXPECT_EQ(seen.values.size(), parameter.items.size()) << row.name;
            const bool is_list = parameter.type == ParameterType::List;
            EXPECT_EQ(seen.default_value, is_list ? parameter.items[parameter.default_index].value
                                                  : parameter.default_index);
        }
    }
    std::ranges::sort(ids);
    EXPECT_EQ(std::ranges::adjacent_find(ids), ids.end());
    EXPECT_EQ(function_prototype(4200), "VlFile__FUNCTION_NAME_NOT_SET");
    EXPECT_EQ(step_name(7200), "VlFile_STEP_NAME_NOT_SET");
}

TEST(Registry, RowsCarryWhatUsersSee) {
    const auto function = [](std::string_view name) -> const FunctionRow& {
        return *std::ranges::find(function_rows(), name, &FunctionRow::name);
    };
    EXPECT_EQ(
        function_description(function("VlFile_GetDataSize")),
        "VlFile Get Data Size GetDataSize|Returns the size of the data for the file specified "
        "by the filePath.");
    EXPECT_TRUE(function_description(function("VlFile_ConvertFromFMText"))
                    .starts_with("VlFile Convert From FM Text|"));
    EXPECT_EQ(function("VlFile_GetDataSize").flags, 0xff00u);
    EXPECT_EQ(function("VlFile_ContentsDialog").flags, 0xe900u);
    EXPECT_EQ(step_definition(find_step(7290)->parameters),
              "<PluginStep><Parameter Type=\"target\" DataType=\"text\" ShowInLine=\"true\" "
              "Label=\"Result (error)\"/><Parameter Type=\"calc\" DataType=\"text\" "
              "ShowInLine=\"true\" Label=\"Disk name\" ID=\"1\"/></PluginStep>");
}

std::string text_of(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The README's list of what is not built is that of the registry.
TEST(Registry, ReadmeListsWhatIsNotBuilt) {
    const std::string readme = text_of(VELL_README);
    const std::size_t start = readme.find("<!-- not built: begin -->");
    const std::size_t end = readme.find("<!-- not built: end -->");
    ASSERT_NE(start, std::string::npos);
    ASSERT_NE(end, std::string::npos);
    const std::string list = readme.substr(start, end - start);
    for (const FunctionRow& row : function_rows())
        EXPECT_EQ(list.find("`" + std::string(row.name()) + "`") != std::string::npos,
                  row.body == params::not_available)
            << row.name();
}

} // namespace
} // namespace vell::plugin
