// Where the objects of a PDF file stand: classic cross-reference tables and their trailers (ISO
// 32000-1, 7.5.4 to 7.5.6). Cross-reference streams are recognised only.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

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

// The cross-reference tables that lead to a file's objects, newest first: that of a trailer, then
// those that "/Prev" leads to. They are read when they are first needed, each once.
class TableChain {
  public:
    explicit TableChain(files::BufferedReader& file) : file_(file) {}

    // From now on objects are looked for as this trailer's version of the file has them.
    void begin(const Trailer& trailer);

    // Moves the file behind the "obj" of an object, where the newest table that lists it says that
    // it stands. not_in_file, table_malformed, or BadArgument when another object, or none, stands
    // there.
    Result<void> go_to_object(ObjectId object);

  private:
    struct Subsection {
        std::uint64_t first;
        std::uint64_t count;
        std::uint64_t entries; // position in the file
    };

    Result<void> read_next();
    Result<std::optional<std::uint64_t>> read_table(std::uint64_t table);
    Result<std::uint64_t> look_up(std::uint64_t object);

    files::BufferedReader& file_;
    std::vector<std::uint64_t> tables_;   // that were read, so that loops end
    std::vector<Subsection> subsections_; // of them all, in their order
    std::optional<std::uint64_t> next_;   // table to read
    std::optional<std::uint64_t> behind_first_;
    ErrorCode end_ = not_in_file; // what ends the chain
    // More than anybody makes by updates. They count for all trailers together.
    int tables_left_ = 1000;
    int subsections_left_ = 2000;
};

} // namespace vell::documents
