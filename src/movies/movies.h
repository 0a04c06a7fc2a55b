// The answers to questions on movies: VlFile_GetMetaData with one of the movie switches.
#pragma once

#include "src/base/byte_source.h"
#include "src/base/json_writer.h"
#include "src/base/result.h"
#include "src/movies/movie_request.h"
#include "src/params/composed_text.h"

namespace vell::movies {

// Appends what is asked for; each answer begins with a carriage return. NotAMovie for a file
// without a movie header, NothingFound for a movie that lacks what is asked for.
Result<void> read_movie(ByteSource& file, const MovieRequest& request, params::ComposedText& text);

// Adds what is asked for to the object that is open: the description as "Movie", all metadata as
// "MovieMetadata". The same codes.
Result<void> read_movie(ByteSource& file, const MovieRequest& request,
                        const params::TextDecoder& decode, JsonWriter& json);

} // namespace vell::movies
