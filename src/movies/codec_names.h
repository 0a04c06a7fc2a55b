// Names of what movies are coded in, for people.
#pragma once

#include "src/formats/isobmff/sample_entry.h"

#include <string_view>

namespace vell::movies {

using formats::isobmff::FourCc;

// Of the codec that the entry names; empty when it is not known.
std::string_view codec_name(const formats::isobmff::SampleEntry& entry);
// What a track with that handler holds; "Other" for handlers that are not known.
std::string_view kind_name(FourCc handler);
// The family of files that a major brand stands for; empty when it is not known.
std::string_view brand_name(FourCc brand);

} // namespace vell::movies
