// What a movie is: its size, duration, tracks and codecs.
#pragma once

#include "src/base/json_writer.h"
#include "src/base/result.h"
#include "src/formats/isobmff/movie.h"
#include "src/movies/movie_request.h"
#include "src/params/composed_text.h"

#include <optional>
#include <string>

namespace vell::movies {

// Appends lines "\rName: value" on the movie, then on each track ("\rTrack 1 Name: value").
void describe_movie(const formats::isobmff::Movie& movie, std::uint64_t file_size,
                    params::ComposedText& text);

// The same as one object, the tracks as an array of objects in "Tracks". Names are those of the
// lines without blanks ("FrameRate").
void describe_movie(const formats::isobmff::Movie& movie, std::uint64_t file_size,
                    const params::TextDecoder& decode, JsonWriter& json);

// The track that is looked at: the first enabled one with pictures, else the first with pictures;
// nullptr when there is none.
const formats::isobmff::Track* picture_track(const formats::isobmff::Movie& movie);

// The answer to a selector below 500. NothingFound when the movie does not have it.
Result<std::string> movie_value(const formats::Window& file, const formats::isobmff::Movie& movie,
                                MovieSelector selector);

// Degrees, clockwise, by which a track's pictures are turned to be shown.
int rotation_of(const formats::isobmff::Track& track);

} // namespace vell::movies
