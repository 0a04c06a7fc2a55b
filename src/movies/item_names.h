// What a movie's metadata items mean.
#pragma once

#include "src/formats/isobmff/metadata_items.h"

#include <string>
#include <string_view>

namespace vell::movies {

using formats::isobmff::MetadataItem;

// The name for people, such as "Title"; the item's own where it is not known.
std::string item_name(const MetadataItem& item);
// The item's own: "©nam", "com.apple.quicktime.title", "com.apple.iTunes:iTunNORM".
std::string item_key(const MetadataItem& item);
// The kind of metadata that it belongs to, such as "iTunes".
std::string_view source_name(formats::isobmff::ItemSource source);

// Names that the selectors look for.
namespace item {
inline constexpr std::string_view title = "Title";
inline constexpr std::string_view comment = "Comment";
inline constexpr std::string_view copyright = "Copyright";
inline constexpr std::string_view description = "Description";
inline constexpr std::string_view long_description = "Long description";
inline constexpr std::string_view information = "Information";
inline constexpr std::string_view keywords = "Keywords";
inline constexpr std::string_view software = "Software";
inline constexpr std::string_view encoder = "Encoder";
inline constexpr std::string_view encoded_by = "Encoded by";
inline constexpr std::string_view director = "Director";
inline constexpr std::string_view year = "Year";
inline constexpr std::string_view date = "Date";
inline constexpr std::string_view creation_date = "Creation date";
inline constexpr std::string_view location = "Location";
inline constexpr std::string_view loop = "Loop";
inline constexpr std::string_view display_name = "Display name";
} // namespace item

} // namespace vell::movies
