#include "src/movies/movies.h"

#include "src/formats/isobmff/movie.h"
#include "src/movies/faults.h"
#include "src/movies/movie_description.h"
#include "src/movies/movie_metadata.h"

namespace vell::movies {
namespace {

using formats::isobmff::MovieFile;

Result<void> append_answer(const MovieFile& file, const MovieRequest& request,
                           params::ComposedText& text) {
    if (request.selector >= MovieSelector::Gps)
        return answer_from_metadata(file, request, text);
    if (request.selector == MovieSelector::AllMetadata)
        return list_metadata(file, request, text);
    return {};
}

} // namespace

Result<void> read_movie(ByteSource& source, const MovieRequest& request,
                        params::ComposedText& text) {
    const formats::Window window(source);
    const auto file = MovieFile::open(window);
    if (!file)
        return Failure{code_of(file.error(), ErrorCode::NotAMovie)};
    VELL_TRY(append_answer(*file, request, text));
    const bool asks_for_value =
        request.selector != MovieSelector::None && request.selector < MovieSelector::AllMetadata;
    if (!asks_for_value && !request.description)
        return {};
    const auto movie = file->read();
    if (!movie)
        return Failure{code_of(movie.error(), ErrorCode::NotAMovie)};
    if (asks_for_value)
        text.append("\r" + VELL_TRY(movie_value(window, *movie, request.selector)));
    if (request.description)
        describe_movie(*movie, source.size(), text);
    return {};
}

Result<void> read_movie(ByteSource& source, const MovieRequest& request,
                        const params::TextDecoder& decode, JsonWriter& json) {
    const auto file = MovieFile::open(formats::Window(source));
    if (!file)
        return Failure{code_of(file.error(), ErrorCode::NotAMovie)};
    if (request.description) {
        const auto movie = file->read();
        if (!movie)
            return Failure{code_of(movie.error(), ErrorCode::NotAMovie)};
        json.key("Movie");
        describe_movie(*movie, source.size(), decode, json);
    }
    if (request.selector == MovieSelector::AllMetadata) {
        json.key("MovieMetadata");
        VELL_TRY(list_metadata(*file, decode, json));
    }
    return {};
}

} // namespace vell::movies
