#include "src/formats/isobmff/movie.h"

#include "src/base/inflate.h"

#include <algorithm>
#include <limits>
#include <unordered_map>

namespace vell::formats::isobmff {
namespace {

// A duration of which all bits are set is not known.
template <typename Integer>
std::optional<std::uint64_t> known_duration(Integer duration) {
    return duration == std::numeric_limits<Integer>::max() ? std::nullopt
                                                           : std::optional<std::uint64_t>(duration);
}

template <typename Integer>
Read<Times> read_times_of(Window& content) {
    const auto record = VELL_TRY(content.read_record<TimesRecord<Integer>>());
    return Times{record.creation_time, record.modification_time, record.timescale,
                 known_duration(record.duration)};
}

// "mvhd" or "mdhd".
Read<Times> read_times(Window& content) {
    return VELL_TRY(read_full_box(content)).version() == 1 ? read_times_of<std::uint64_t>(content)
                                                           : read_times_of<std::uint32_t>(content);
}

template <typename Integer>
Read<void> read_track_times(Window& content, Track& track) {
    const auto record = VELL_TRY(content.read_record<TrackTimesRecord<Integer>>());
    track.id = record.track_id;
    track.duration = known_duration(record.duration);
    return {};
}

Read<void> read_track_header(Window content, Track& track) {
    const FullBoxHeader header = VELL_TRY(read_full_box(content));
    track.is_enabled = (header.flags() & track_enabled) != 0;
    VELL_TRY(header.version() == 1 ? read_track_times<std::uint64_t>(content, track)
                                   : read_track_times<std::uint32_t>(content, track));
    const auto shape = VELL_TRY(content.read_record<TrackShapeRecord>());
    track.matrix = shape.matrix;
    track.width = from_16_16(shape.width);
    track.height = from_16_16(shape.height);
    return {};
}

Read<void> read_media_header(Window content, Track& track) {
    track.media = VELL_TRY(read_times(content));
    track.language = VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big));
    return {};
}

// The name is counted when its first byte says just how many follow.
std::string handler_name(std::string_view bytes, bool is_quicktime) {
    if (is_quicktime && !bytes.empty() && static_cast<std::uint8_t>(bytes.front()) < bytes.size())
        return std::string(bytes.substr(1, static_cast<std::uint8_t>(bytes.front())));
    return std::string(bytes.substr(0, bytes.find('\0')));
}

Read<void> read_handler(Window content, Track& track) {
    constexpr std::size_t longest_name = 1024;
    VELL_TRY(read_full_box(content));
    const auto record = VELL_TRY(content.read_record<HandlerRecord>());
    track.handler = record.handler_type;
    std::array<char, longest_name> bytes{};
    const std::size_t size = VELL_TRY(content.read(bytes));
    track.handler_name = handler_name({bytes.data(), size}, record.component_type == "mhlr"_4cc);
    return {};
}

Read<void> read_sample_table(const Window& table, Track& track) {
    return each_box(table, [&](Box& box) -> Read<void> {
        switch (box.type) {
        case "stsd"_4cc:
            track.entry = VELL_TRY(if_sound(read_sample_entry(box.content, track.handler)));
            break;
        case "stts"_4cc:
            track.times = VELL_TRY(if_sound(read_time_to_sample(box.content)));
            break;
        case "stsz"_4cc:
        case "stz2"_4cc:
            track.sizes = VELL_TRY(if_sound(read_sample_sizes(box.content, box.type)));
            break;
        case "stco"_4cc:
        case "co64"_4cc:
            track.first_chunk = VELL_TRY(if_sound(read_first_chunk(box.content, box.type)));
            break;
        default:
            break;
        }
        return {};
    });
}

// The handler tells how the sample table is to be read, wherever it stands.
Read<void> read_media(const Window& media, Track& track) {
    VELL_TRY(each_box(media, [&](Box& box) -> Read<void> {
        if (box.type == "mdhd"_4cc)
            return if_sound(read_media_header(box.content, track));
        if (box.type == "hdlr"_4cc)
            return if_sound(read_handler(box.content, track));
        return {};
    }));
    return each_box(media, [&](Box& box) -> Read<void> {
        if (box.type != "minf"_4cc)
            return {};
        return each_box(box.content, [&](Box& inner) -> Read<void> {
            return inner.type == "stbl"_4cc ? read_sample_table(inner.content, track)
                                            : Read<void>();
        });
    });
}

Read<Track> read_track(const Window& content) {
    Track track;
    VELL_TRY(each_box(content, [&](Box& box) -> Read<void> {
        if (box.type == "tkhd"_4cc)
            return if_sound(read_track_header(box.content, track));
        if (box.type == "mdia"_4cc)
            return read_media(box.content, track);
        return {};
    }));
    return track;
}

Read<FileType> read_file_type(Window content) {
    constexpr std::uint64_t most_brands = 256;
    const auto record = VELL_TRY(content.read_record<FileTypeRecord>());
    FileType type{record.major_brand, record.minor_version, {}};
    const std::string brands = VELL_TRY(content.read_bytes(most_brands * sizeof(FourCc)));
    for (std::size_t at = 0; const auto brand = load<std::uint32_t>(brands, at, ByteOrder::Big);
         at += sizeof(FourCc))
        if (*brand != 0)
            type.compatible_brands.push_back(FourCc{*brand});
    return type;
}

// Reads the boxes of a movie, then those of the file around it.
class MovieReader {
  public:
    Read<Movie> read(const Window& file, const Window& movie_box) {
        VELL_TRY(each_box(movie_box, [&](Box& box) { return read_part(box); }));
        for (std::size_t i = 0; i < movie_.tracks.size(); ++i) {
            Track& track = movie_.tracks[i];
            track_of_id_.try_emplace(track.id, i);
            const auto defaults = defaults_of_id_.find(track.id);
            if (defaults != defaults_of_id_.end())
                track.fragment_defaults = defaults->second;
        }
        VELL_TRY(each_box(file, [&](Box& box) { return read_around(box); }));
        return std::move(movie_);
    }

  private:
    Read<void> read_part(Box& box) {
        switch (box.type) {
        case "mvhd"_4cc:
            if (const auto times = VELL_TRY(if_sound(read_times(box.content))))
                movie_.header = *times;
            break;
        case "trak"_4cc:
            if (++movie_.track_count <= most_tracks)
                movie_.tracks.push_back(VELL_TRY(read_track(box.content)));
            break;
        case "mvex"_4cc:
            movie_.may_be_fragmented = true;
            return each_box(box.content, [&](Box& inner) { return read_extension(inner); });
        default:
            break;
        }
        return {};
    }

    Read<void> read_extension(Box& box) {
        if (box.type == "mehd"_4cc) {
            const auto header = VELL_TRY(if_sound(read_full_box(box.content)));
            if (!header)
                return {};
            if (header->version() == 1)
                movie_.fragmented_duration =
                    VELL_TRY(if_sound(box.content.read_integer<std::uint64_t>(ByteOrder::Big)));
            else
                movie_.fragmented_duration =
                    VELL_TRY(if_sound(box.content.read_integer<std::uint32_t>(ByteOrder::Big)));
        } else if (box.type == "trex"_4cc && defaults_of_id_.size() < most_tracks) {
            return if_sound(read_defaults(box.content));
        }
        return {};
    }

    Read<void> read_defaults(Window content) {
        VELL_TRY(read_full_box(content));
        const auto record = VELL_TRY(content.read_record<TrackExtendsRecord>());
        defaults_of_id_[record.track_id] = {record.default_sample_duration,
                                            record.default_sample_size};
        return {};
    }

    Read<void> read_around(Box& box) {
        switch (box.type) {
        case "ftyp"_4cc:
            if (!movie_.file_type)
                movie_.file_type = VELL_TRY(if_sound(read_file_type(box.content)));
            break;
        case "mdat"_4cc:
            has_media_ = true;
            break;
        case "moov"_4cc:
            if (!has_movie_)
                movie_.is_before_its_media = !has_media_;
            has_movie_ = true;
            break;
        case "moof"_4cc:
            ++movie_.fragment_count;
            return each_box(box.content, [&](Box& inner) -> Read<void> {
                return inner.type == "traf"_4cc ? read_fragment(inner.content) : Read<void>();
            });
        default:
            break;
        }
        return {};
    }

    // Runs before the header of their fragment belong to no track.
    Read<void> read_fragment(const Window& fragment) {
        Track* track = nullptr;
        SampleDefaults defaults;
        return each_box(fragment, [&](Box& box) -> Read<void> {
            if (box.type == "tfhd"_4cc) {
                const auto header = VELL_TRY(if_sound(read_fragment_header(box.content)));
                const auto found =
                    header ? track_of_id_.find(header->track_id) : track_of_id_.end();
                track = found == track_of_id_.end() ? nullptr : &movie_.tracks[found->second];
                if (track != nullptr)
                    defaults = {
                        header->default_duration.value_or(track->fragment_defaults.duration),
                        header->default_size.value_or(track->fragment_defaults.size)};
            } else if (box.type == "trun"_4cc && track != nullptr) {
                if (const auto run = VELL_TRY(if_sound(read_track_run(box.content, defaults))))
                    track->fragments.add(*run);
            }
            return {};
        });
    }

    Movie movie_;
    std::unordered_map<std::uint32_t, std::size_t> track_of_id_;
    std::unordered_map<std::uint32_t, SampleDefaults> defaults_of_id_;
    bool has_media_ = false;
    bool has_movie_ = false;
};

} // namespace

std::optional<double> Times::seconds() const {
    if (!duration || timescale == 0)
        return std::nullopt;
    return static_cast<double>(*duration) / timescale;
}

std::uint64_t Track::sample_count() const {
    SampleTotals all = fragments;
    if (sizes || times)
        all.add(sizes ? *sizes : *times);
    return all.samples;
}

std::optional<double> Track::seconds() const {
    SampleTotals all = fragments;
    if (times)
        all.add(*times);
    if (all.duration == 0 || media.timescale == 0)
        return media.seconds();
    return static_cast<double>(all.duration) / media.timescale;
}

std::optional<std::uint64_t> Track::bytes() const {
    SampleTotals all = fragments;
    if (sizes)
        all.add(*sizes);
    return all.bytes_are_known ? std::optional(all.bytes) : std::nullopt;
}

std::optional<double> Movie::seconds() const {
    if (const auto whole = header.seconds(); whole && *whole > 0)
        return whole;
    std::optional<double> longest;
    for (const Track& track : tracks)
        longest = std::max(longest, track.seconds());
    const bool has_samples = longest && *longest > 0;
    if (!has_samples && fragmented_duration && *fragmented_duration > 0 && header.timescale > 0)
        return static_cast<double>(*fragmented_duration) / header.timescale;
    return longest;
}

struct MovieFile::Expanded {
    std::string bytes;
    BytesInMemory source;

    explicit Expanded(std::string expanded) : bytes(std::move(expanded)), source(bytes) {}
    Expanded(const Expanded&) = delete;
    Expanded& operator=(const Expanded&) = delete;
};

// "cmov": the method in "dcom", the expanded size and the data in "cmvd" (QuickTime File Format,
// "Compressed Movie Resources"). The data are a whole "moov" box.
Read<void> MovieFile::expand(const Window& compressed) {
    auto method = VELL_TRY(find_box(compressed, "dcom"_4cc));
    auto data = VELL_TRY(find_box(compressed, "cmvd"_4cc));
    if (!method || !data)
        return fault(Damage::Absent);
    if (FourCc{VELL_TRY(method->content.read_integer<std::uint32_t>(ByteOrder::Big))} != "zlib"_4cc)
        return fault(Damage::Absent);
    data->content.skip(sizeof(std::uint32_t));
    if (data->content.size() > longest_movie_header)
        return fault(Damage::TooLarge);
    const std::string bytes = VELL_TRY(data->content.read_rest());
    auto expanded = inflate_within(bytes, longest_movie_header);
    if (!expanded)
        return fault(Damage::Corrupt);
    expanded_ = std::make_shared<Expanded>(std::move(expanded).value());
    const auto box = VELL_TRY(find_box(Window(expanded_->source), "moov"_4cc));
    if (!box)
        return fault(Damage::Absent);
    movie_box_ = box->content;
    return {};
}

Read<MovieFile> MovieFile::open(const Window& file) {
    MovieFile movie(file);
    const auto box = VELL_TRY(find_box(file, "moov"_4cc));
    if (!box)
        return fault(Damage::Absent);
    movie.movie_box_ = box->content;
    if (const auto compressed = VELL_TRY(find_box(box->content, "cmov"_4cc)))
        VELL_TRY(movie.expand(compressed->content));
    auto header = VELL_TRY(find_box(movie.movie_box_, "mvhd"_4cc));
    if (!header || !VELL_TRY(if_sound(read_times(header->content))))
        return fault(Damage::Absent);
    return movie;
}

Read<Movie> MovieFile::read() const {
    auto movie = MovieReader().read(file_, movie_box_);
    if (movie)
        movie->header_is_compressed = was_compressed();
    return movie;
}

} // namespace vell::formats::isobmff
