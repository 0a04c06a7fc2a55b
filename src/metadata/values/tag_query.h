// Single values by their names.
#pragma once

#include "src/base/result.h"
#include "src/metadata/values/file_values.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vell::metadata {

// A value of one kind, such as "Headline" of "IPTC"; of XMP the prefix and the name.
struct ValuePlace {
    std::string_view kind; // the member
    std::string name;
};

struct TagQuery {
    std::string asked;              // as it was written
    std::vector<ValuePlace> places; // the first that the file has counts
};

// "DateTimeOriginal", "Headline", "dc:title"; "Exif.…", "GPS.…", "IPTC.…", "XMP.…", "ICC.…" and
// "Image.…" where several kinds have the name; the number of an Exif tag, decimal or "0x…".
// BadParameter for a name that nothing has.
Result<TagQuery> tag_query_of(std::string_view text);

ValueKinds kinds_of(const std::vector<TagQuery>& queries);

// Null where the file has none.
const Value* find_value(const Members& values, const TagQuery& query);

// A line for each query, empty for an absent value; the values of an array stand in one line, and
// line ends in texts become blanks. A single query has its array in lines of their own and its text
// as it is. NothingFound where no value is there.
Result<std::string> readable_values(const Members& values, const std::vector<TagQuery>& queries);

// An object with a member for each query, null for an absent value.
Result<Members> queried_members(const Members& values, const std::vector<TagQuery>& queries);

} // namespace vell::metadata
