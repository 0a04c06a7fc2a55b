// What people and programs wrote about a movie.
#pragma once

#include "src/base/json_writer.h"
#include "src/base/result.h"
#include "src/formats/isobmff/movie.h"
#include "src/movies/movie_request.h"
#include "src/params/composed_text.h"

namespace vell::movies {

// Appends all items: "\rTitle: value" for each, with "Track 1 " before those of a track, and with
// where it comes from when the request is verbose; or as one XML document.
Result<void> list_metadata(const formats::isobmff::MovieFile& movie, const MovieRequest& request,
                           params::ComposedText& text);

// All items as one array of objects: "Name", "Key", "Source", "Track" and "Language" where there
// are any, "Value".
Result<void> list_metadata(const formats::isobmff::MovieFile& movie,
                           const params::TextDecoder& decode, JsonWriter& json);

// Appends the value of a selector from 600 on. NothingFound when the movie does not have it.
Result<void> answer_from_metadata(const formats::isobmff::MovieFile& movie,
                                  const MovieRequest& request, params::ComposedText& text);

} // namespace vell::movies
