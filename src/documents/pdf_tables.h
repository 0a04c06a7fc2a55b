// Where the objects of a PDF file stand: classic cross-reference tables and their trailers (ISO
// 32000-1, 7.5.4 to 7.5.6). Cross-reference streams are recognised only.
#pragma once

#include "src/base/result.h"
#include "src/files/buffered_reader.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace vell::documents {

// What ends a scan beside the codes of files. No caller sees them: the description tells them in
// words.
inline constexpr ErrorCode table_malformed{-5221};
inline constexpr ErrorCode cross_reference_stream{-4290};
// Something is missing: a keyword, or an object in the tables.
inline constexpr ErrorCode not_in_file = ErrorCode::BadParameter;

// The most that is read of a trailer, of a table's subsection headers, or of the file's end.
inline constexpr std::size_t table_read = 2000;

struct ObjectId {
    std::uint64_t number = 0;
    std::uint64_t generation = 0;
};

struct Trailer {
    std::uint64_t table = 0; // offset of its cross-reference table
    std::optional<std::uint64_t> previous_table;
    std::optional<ObjectId> information;
    bool encrypted = false;
};

// The last trailer before `end`, which becomes the offset of that trailer. not_in_file when there
// is none or one without its end, cross_reference_stream when such a stream stands in its place.
Result<Trailer> find_trailer(files::BufferedReader& file, std::uint64_t& end);

// The trailer behind the first-page table of a linearized file. `block` is the file's start, of
// which the table follows the first `searched` bytes.
Result<Trailer> first_page_trailer(files::BufferedReader& file, std::string_view block,
                                   std::size_t searched);

// Moves the file behind the "obj" of an object that the trailer's table or the one before lists.
// not_in_file, table_malformed, or BadArgument when another object, or none, stands there.
Result<void> go_to_object(files::BufferedReader& file, const Trailer& trailer, ObjectId object);

} // namespace vell::documents
