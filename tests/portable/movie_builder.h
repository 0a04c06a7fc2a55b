// Movies made for tests, box by box.
#pragma once

#include "integers.h"
#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/movies/movies.h"

#include <array>
#include <string>
#include <string_view>

namespace vell::test {

inline std::string big64(std::uint64_t value) {
    return big32(static_cast<std::uint32_t>(value >> 32)) +
           big32(static_cast<std::uint32_t>(value));
}

inline std::string box(std::string_view type, std::string_view content = {}) {
    return big32(static_cast<std::uint32_t>(8 + content.size())) + std::string(type) +
           std::string(content);
}
inline std::string full_box(std::string_view type, std::string_view content, unsigned version = 0,
                            std::uint32_t flags = 0) {
    return box(type, big32(version << 24 | flags) + std::string(content));
}

inline std::string movie_header(std::uint32_t created = 0, std::uint32_t timescale = 600,
                                std::uint32_t duration = 1200) {
    return full_box("mvhd", big32(created) + big32(0) + big32(timescale) + big32(duration) +
                                std::string(80, '\0'));
}

using Matrix = std::array<std::int32_t, 4>; // a, b, c, d, whole numbers

inline std::string picture_entry(std::string_view type = "avc1", std::string_view boxes = {}) {
    return box(type, std::string(24, '\0') + big16(640) + big16(480) + std::string(46, '\0') +
                         big16(24) + big16(0xFFFF) + std::string(boxes));
}
inline std::string sound_entry(std::string_view type, std::string_view boxes) {
    return box(type, std::string(16, '\0') + big16(2) + big16(16) + big32(0) + big32(0xAC440000) +
                         std::string(boxes));
}

struct TrackMade {
    std::string handler = "vide";
    std::string entry = picture_entry();
    std::uint32_t samples = 50; // of 24 units each, at 600 units a second
    std::uint32_t chunk = 0;    // where the first one is
    Matrix matrix = {1, 0, 0, 1};
    std::uint32_t id = 1;
    std::uint32_t flags = 1; // enabled
    std::string tables = {}; // instead of those for the samples
    std::string more = {};   // boxes behind the media
};

inline std::string track(const TrackMade& made = {}) {
    const auto [a, b, c, d] = made.matrix;
    std::string matrix;
    for (const std::int32_t number : {a, b, 0, c, d, 0, 0, 0, 0})
        matrix += big32(static_cast<std::uint32_t>(number) << 16);
    const std::string header =
        full_box("tkhd",
                 big32(0) + big32(0) + big32(made.id) + big32(0) + big32(1200) +
                     std::string(16, '\0') + matrix + big32(640U << 16) + big32(480U << 16),
                 0, made.flags);
    const std::string tables = full_box("stts", big32(1) + big32(made.samples) + big32(24)) +
                               full_box("stsz", big32(100) + big32(made.samples)) +
                               full_box("stco", big32(1) + big32(made.chunk));
    return box(
        "trak",
        header +
            box("mdia",
                full_box("mdhd", big32(0) + big32(0) + big32(600) + big32(1200) + big16(0x55C4) +
                                     big16(0)) +
                    full_box("hdlr", big32(0) + made.handler + std::string(12, '\0') + "Maker") +
                    box("minf", box("stbl", full_box("stsd", big32(1) + made.entry) +
                                                (made.tables.empty() ? tables : made.tables)))) +
            made.more);
}

inline const std::string file_type = box("ftyp", "isom" + big32(512) + "isomavc1");

// A file with a movie: its header, a track with pictures, and what is given.
inline std::string movie_with(std::string_view boxes) {
    return file_type + box("moov", movie_header() + track() + std::string(boxes));
}

inline std::string key_item(std::string_view type, std::uint32_t value_type, std::string_view value,
                            std::uint32_t locale = 0) {
    return box(type, box("data", big32(value_type) + big32(locale) + std::string(value)));
}
inline std::string itunes(std::string_view items) {
    return box("udta",
               full_box("meta", full_box("hdlr", big32(0) + "mdir" + std::string(13, '\0')) +
                                    box("ilst", items)));
}
// As QuickTime has them: "meta" without a version, the names apart from the items.
inline std::string quicktime_key(std::string_view key, std::string_view value) {
    return box("meta", full_box("hdlr", big32(0) + "mdta" + std::string(13, '\0')) +
                           full_box("keys", big32(1) + box("mdta", key)) +
                           box("ilst", key_item(big32(1), 1, value)));
}
inline std::string user_text(std::string_view type, std::string_view text, std::uint16_t language) {
    return box("\xA9" + std::string(type), big16(static_cast<std::uint16_t>(text.size())) +
                                               big16(language) + std::string(text));
}

// The answer, a number for a code; bytes that are not UTF-8 stand behind their encoding's number.
inline std::string answer(ByteSource& file, std::string_view switches) {
    params::ComposedText text;
    const auto done =
        movies::read_movie(file, movies::movie_request_of(params::SwitchSet(switches)), text);
    if (!done)
        return to_text(std::int64_t{number(done.error())});
    text.drop_leading_line_end();
    std::string all;
    for (const params::ComposedText::Piece& piece : text.pieces()) {
        if (piece.encoding != params::TextEncoding::Utf8)
            all += "{" + to_text(static_cast<std::int64_t>(piece.encoding)) + "}";
        all += piece.bytes;
    }
    return all;
}
inline std::string answer(std::string_view file, std::string_view switches) {
    BytesInMemory source(file);
    return answer(source, switches);
}

// The object that JSON gives; texts in other encodings than UTF-8 with the number of theirs in
// front.
inline std::string json_answer(std::string_view file, std::string_view switches) {
    BytesInMemory source(file);
    JsonWriter json;
    json.begin_object();
    const auto decode = [](std::string_view bytes, params::TextEncoding encoding) {
        if (encoding == params::TextEncoding::Utf8)
            return utf16_from_utf8(bytes);
        return utf16_from_utf8("{" + to_text(static_cast<std::int64_t>(encoding)) + "}") +
               std::u16string(bytes.size(), u'?');
    };
    const auto request = movies::movie_request_of(params::SwitchSet(switches));
    if (const auto done = movies::read_movie(source, request, decode, json); !done)
        return to_text(std::int64_t{number(done.error())});
    json.end_object();
    return json.take();
}

// Counts the reads; fails at one of them, or within a part of the file.
class WatchedSource final : public ByteSource {
  public:
    static constexpr ErrorCode failure = ErrorCode::DiskError;

    explicit WatchedSource(std::string_view bytes) : bytes_(bytes), memory_(bytes) {}

    std::uint64_t reads = 0;
    std::uint64_t failing_read = ~0ULL;
    std::uint64_t forbidden_start = 0;
    std::uint64_t forbidden_end = 0;

    std::uint64_t size() const override { return bytes_.size(); }
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        if (reads++ == failing_read ||
            (position < forbidden_end && position + bytes.size() > forbidden_start))
            return Failure{failure};
        return memory_.read_at(position, bytes);
    }

  private:
    std::string_view bytes_;
    BytesInMemory memory_;
};

} // namespace vell::test
