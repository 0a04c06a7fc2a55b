// Movies, against a native reader that bench/run has timed on the same files.
#include "bench/function_call.h"
#include "bench/harness.h"
#include "bench/peers.h"
#include "src/windows/text.h"

#include <memory>
#include <string>
#include <vector>

namespace vell::bench {
namespace {

// All keys and the description of every movie; what is none answers with a code.
Row movies_row() {
    const std::vector<std::wstring> paths = sample_files(L"movies", L"*");
    std::vector<std::unique_ptr<FunctionCall>> calls;
    for (const std::wstring& path : paths)
        for (const std::u16string_view switches : {u"-GetMovieMetadata", u"-GetMovieDescription"})
            calls.push_back(std::make_unique<FunctionCall>(
                get_metadata,
                std::initializer_list<std::u16string_view>{switches, to_utf16(path)}));
    const double ours = time_of([&] {
        for (const auto& call : calls)
            call->dispatch();
    });
    return {"VlFile_GetMetaData, keys and description of " + std::to_string(paths.size()) +
                " movies",
            ours, native_ns(L"VELL_MEDIAINFO"), 0.2, "peer: mediainfo, native, without its start"};
}

Row large_movie_row() {
    FunctionCall large(get_metadata,
                       {u"-GetMovieDescription", to_utf16(sample_path(L"large.mp4"))});
    FunctionCall small(get_metadata,
                       {u"-GetMovieDescription", to_utf16(sample_path(L"small.mp4"))});
    const Timing timing = compare([&] { large.run(); }, [&] { small.run(); });
    return {"VlFile_GetMetaData, a movie header behind 4 GiB of media", timing.ours_ns,
            timing.peer_ns, 1.2, "peer: itself with 1 KiB of media"};
}

} // namespace

std::vector<Row> movie_rows() {
    if (!has_sample_files() || native_ns(L"VELL_MEDIAINFO") == 0)
        return {}; // no movies, or started without bench/run
    return {movies_row(), large_movie_row()};
}

} // namespace vell::bench
