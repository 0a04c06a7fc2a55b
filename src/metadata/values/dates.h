// Dates as ISO 8601 writes them, from the forms that metadata has.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vell::metadata {

// "2024:05:06 07:08:09" (Exif 3.0, DateTime) with the fraction of a second and the offset that
// stand in tags of their own: "2024-05-06T07:08:09.12+02:00". Either of the two may be empty, and
// is left out where it is none. A date may stand alone. nullopt for what is no date.
std::optional<std::string> exif_date(std::string_view text, std::string_view fraction = {},
                                     std::string_view offset = {});

// "20240506" as "2024-05-06", "070809+0200" as "07:08:09+02:00" (IIM 4.2, DateCreated and
// TimeCreated). A day or month that is not known is "00" there, and left out here.
std::optional<std::string> iptc_date(std::string_view text);
std::optional<std::string> iptc_time(std::string_view text);

} // namespace vell::metadata
