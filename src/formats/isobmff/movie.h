// The movie of an ISO base media or QuickTime file: its header, its tracks and what its fragments
// add (ISO/IEC 14496-12, section 8). Media data are not read.
#pragma once

#include "src/formats/isobmff/boxes.h"
#include "src/formats/isobmff/records.h"
#include "src/formats/isobmff/sample_entry.h"
#include "src/formats/isobmff/sample_tables.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vell::formats::isobmff {

struct FileType {
    FourCc major_brand{};
    std::uint32_t minor_version = 0;
    std::vector<FourCc> compatible_brands;
};

// Times in seconds since 1904 in UTC, as the file has them; 0 for none.
struct Times {
    std::uint64_t creation_time = 0;
    std::uint64_t modification_time = 0;
    std::uint32_t timescale = 0;           // units of a second
    std::optional<std::uint64_t> duration; // in those units, where it is known

    // In seconds.
    std::optional<double> seconds() const;
};

struct Track {
    std::uint32_t id = 0;
    bool is_enabled = false;
    std::optional<std::uint64_t> duration; // in units of the movie's time scale
    std::array<std::int32_t, 9> matrix{};
    double width = 0; // as it is presented
    double height = 0;
    Times media;
    std::uint16_t language = 0; // see language_of
    FourCc handler{};
    std::string handler_name; // the bytes that the file has
    std::optional<SampleEntry> entry;
    std::optional<SampleTotals> times; // samples and duration, of "stts"
    std::optional<SampleTotals> sizes; // samples and bytes, of "stsz" or "stz2"
    std::optional<std::uint64_t> first_chunk;
    SampleDefaults fragment_defaults;
    SampleTotals fragments; // what they add

    std::uint64_t sample_count() const;
    // Of the samples, in seconds: that of the tables and the fragments, or what the header says.
    std::optional<double> seconds() const;
    std::optional<std::uint64_t> bytes() const;
};

struct Movie {
    std::optional<FileType> file_type;
    Times header;
    std::optional<std::uint64_t> fragmented_duration; // "mehd"
    std::vector<Track> tracks;                        // the first ones, at most most_tracks
    std::uint64_t track_count = 0;
    std::uint64_t fragment_count = 0;
    bool may_be_fragmented = false;  // "mvex" announces fragments
    bool is_before_its_media = true; // so that it can be played before all of it is loaded
    bool header_is_compressed = false;

    // What the header says; else the longest of the tracks, with the fragments that are there; else
    // what is said of fragments that are not.
    std::optional<double> seconds() const;
};

inline constexpr std::size_t most_tracks = 4096;
// Of the bytes that a compressed movie header may expand to.
inline constexpr std::size_t longest_movie_header = 16U << 20U;

// The movie of a file, with the boxes around it.
class MovieFile {
  public:
    // Walks over the boxes of the file, and no further than their headers. The source outlives it.
    // Absent when none of them is a movie with a whole header.
    static Read<MovieFile> open(const Window& file);

    const Window& file() const { return file_; }
    // What "moov" holds, expanded where it was compressed.
    const Window& movie_box() const { return movie_box_; }
    bool was_compressed() const { return expanded_ != nullptr; }
    Read<Movie> read() const;

  private:
    explicit MovieFile(const Window& file) : file_(file), movie_box_(file.part(0, 0)) {}
    Read<void> expand(const Window& compressed);

    struct Expanded;
    Window file_;
    Window movie_box_;
    std::shared_ptr<Expanded> expanded_; // what the box was expanded to
};

} // namespace vell::formats::isobmff
