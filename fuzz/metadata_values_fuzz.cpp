// All metadata of a file as JSON, and some of its values.
#include "fuzz/input.h"
#include "src/base/utf8.h"
#include "src/metadata/values/file_values.h"
#include "src/metadata/values/tag_query.h"
#include "src/system/file_access.h"
#include "tests/portable/strict_json.h"

#include <vector>

namespace vell::metadata_values_fuzz {
namespace {

using namespace vell::metadata;

// As if all were ISO 8859-1.
std::string decoded(std::string_view bytes, TextEncoding encoding) {
    if (encoding == TextEncoding::Utf8)
        return std::string(bytes);
    std::u16string units;
    for (const char c : bytes)
        units += static_cast<char16_t>(static_cast<unsigned char>(c));
    return utf8_from_utf16(units);
}

} // namespace

FUZZ_TARGET(metadata_values) {
    const auto file = files::memory_file(std::string(fuzz::as_text(data, size)));
    auto reader = *files::BufferedReader::over(*file, 64);
    const auto values = read_values(reader, ValueKinds::all(), TextEncoding::Native, decoded);
    FUZZ_CHECK(values.has_value()); // memory does not fail

    JsonWriter json;
    json.begin_object();
    values->write_members(json);
    json.end_object();
    FUZZ_CHECK(test::is_strict_json(json.take()));

    std::vector<TagQuery> queries;
    for (const char* name : {"Latitude", "ExposureTime", "UserComment", "Keywords", "dc:title"})
        queries.push_back(*tag_query_of(name));
    const auto lines = readable_values(*values, queries);
    FUZZ_CHECK(!lines ||
               std::ranges::count(*lines, '\r') + 1 == static_cast<std::ptrdiff_t>(queries.size()));
    return 0;
}

} // namespace vell::metadata_values_fuzz
