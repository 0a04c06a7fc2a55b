// Files with pictures in them, made for tests: raw photographs of many makers, music, movies.
#pragma once

#include "camera_builder.h"
#include "container_builder.h"
#include "image_builder.h"
#include "movie_builder.h"
#include "tiff_builder.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace vell::test {

// Counts the bytes that are read.
class CountedBytes final : public ByteSource {
  public:
    explicit CountedBytes(std::string_view bytes) : memory_(bytes) {}
    std::uint64_t bytes_read = 0;

    std::uint64_t size() const override { return memory_.size(); }
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        const std::size_t count = *memory_.read_at(position, bytes);
        bytes_read += count;
        return count;
    }

  private:
    BytesInMemory memory_;
};

inline std::uint32_t length_of(const std::string& bytes) {
    return static_cast<std::uint32_t>(bytes.size());
}
// The bytes behind their number.
inline std::string big_sized(const std::string& bytes) {
    return big32(length_of(bytes)) + bytes;
}
inline std::string little_sized(const std::string& bytes) {
    return little32(length_of(bytes)) + bytes;
}

// Each read that fails is told: read(source), which gives a Result, as often as it reads.
template <typename Read>
void expect_that_failing_reads_are_told(const std::string& file, Read read) {
    WatchedSource watched(file);
    ASSERT_TRUE(read(watched));
    for (std::uint64_t failing = 0; failing < watched.reads; ++failing) {
        WatchedSource source(file);
        source.failing_read = failing;
        const auto found = read(source);
        ASSERT_FALSE(found) << failing;
        EXPECT_EQ(found.error(), WatchedSource::failure);
    }
}

// A JPEG file with tables and a frame, as far as it is looked at.
inline std::string small_jpeg(std::uint16_t width, std::uint16_t height,
                              SegmentMarker frame = SegmentMarker::Sof0, char precision = 8,
                              const std::string& before = {}) {
    return jpeg({before, segment(SegmentMarker::Dqt, std::string(65, '\1')),
                 segment(frame, precision + big16(height) + big16(width) + "\1\1\x11\1"),
                 segment(SegmentMarker::Dht, std::string(20, '\1'))});
}
inline std::string turned_jpeg(std::uint16_t width, std::uint16_t height, std::uint32_t turned) {
    return small_jpeg(
        width, height, SegmentMarker::Sof0, 8,
        exif_segment(build_tiff(ByteOrder::Big, {.first = {{274, FieldType::Short, {turned}}}})));
}
inline std::string small_png(std::uint32_t width, std::uint32_t height) {
    return "\x89PNG\r\n\x1A\n" +
           png_chunk("IHDR", big32(width) + big32(height) + std::string("\x08\2\0\0\0", 5)) +
           png_chunk("IDAT", "data") + png_chunk("IEND", "");
}

inline TiffFields operator+(TiffFields fields, const TiffFields& more) {
    fields.insert(fields.end(), more.begin(), more.end());
    return fields;
}

// A block of tags, laid down piece by piece; directories come behind what they refer to.
class TagFile {
  public:
    explicit TagFile(ByteOrder order, std::uint16_t magic = 42, const std::string& behind = {})
        : order_(order) {
        formats::tiff::Header{.order = order, .magic = magic}.write(bytes);
        bytes += behind;
    }

    std::string bytes;

    std::uint32_t add(const std::string& data) {
        bytes.append(bytes.size() % 2, '\0');
        bytes += data;
        return length_of(bytes) - length_of(data);
    }
    std::uint32_t directory(const TiffFields& fields, std::uint32_t next = 0) {
        return add(directory_bytes(fields, next));
    }
    // Without values that do not fit into entries, but for those whose offset is given.
    std::string directory_bytes(const TiffFields& fields, std::uint32_t next = 0) const {
        std::string table = integer<std::uint16_t>(fields.size());
        for (const TiffField& field : fields) {
            std::string value;
            for (const std::uint32_t number : field.numbers)
                value += formats::tiff::size_of(field.type) == 2 ? integer<std::uint16_t>(number)
                                                                 : integer<std::uint32_t>(number);
            if (field.offset)
                value = integer<std::uint32_t>(*field.offset);
            value.resize(4);
            table += integer<std::uint16_t>(field.tag) +
                     integer<std::uint16_t>(static_cast<std::size_t>(field.type)) +
                     integer<std::uint32_t>(field.count.value_or(field.numbers.size())) + value;
        }
        return table + integer<std::uint32_t>(next);
    }
    std::string finish(std::uint32_t first_directory) {
        return bytes.replace(4, 4, integer<std::uint32_t>(first_directory));
    }
    std::string finish(const TiffFields& fields, std::uint32_t next = 0) {
        return finish(directory(fields, next));
    }

    static TiffField number(std::uint16_t tag, std::uint32_t value) {
        return {tag, FieldType::Long, {value}};
    }
    static TiffField data(std::uint16_t tag, std::uint32_t offset, std::size_t size) {
        return {tag, FieldType::Undefined, {}, {}, static_cast<std::uint32_t>(size), offset};
    }
    // Where a picture is that is kept apart: its offset and its size.
    TiffFields place(std::uint16_t offset_tag, std::uint16_t size_tag, const std::string& picture) {
        return {number(offset_tag, add(picture)), number(size_tag, length_of(picture))};
    }
    TiffFields jpeg_fields(const std::string& picture) {
        return TiffFields{number(259, 6)} + place(513, 514, picture);
    }
    TiffFields strip(std::uint32_t compression, const std::string& picture,
                     const TiffFields& more = {}) {
        return TiffFields{number(259, compression)} + place(273, 279, picture) + more;
    }

  private:
    template <typename Integer>
    std::string integer(std::size_t value) const {
        std::string stored;
        append_integer<Integer>(stored, static_cast<Integer>(value), order_);
        return stored;
    }

    ByteOrder order_;
};

// Two strips of one size: a table has offset and length for each, and is no picture in one piece.
inline std::string canon_cr2() {
    TagFile file(ByteOrder::Little, 42, std::string("CR\2\0\0\0\0\0", 8));
    const auto raw = file.directory(
        file.strip(6, small_jpeg(4000, 3000, SegmentMarker::Sof3, 14))); // lossless samples
    const auto rgb = file.directory(file.strip(1, std::string(60, 'r')), raw);
    const auto thumb = file.directory(file.jpeg_fields(small_jpeg(160, 120)), rgb);
    return file.finish(file.strip(6, small_jpeg(1620, 1080), {{274, FieldType::Short, {6}}}),
                       thumb);
}

inline std::string nikon_nef() {
    TagFile file(ByteOrder::Big);
    TagFile note(ByteOrder::Big);
    const auto preview = note.directory(note.jpeg_fields(small_jpeg(570, 375)));
    note.finish({TagFile::number(17, preview)});
    const std::string all = std::string("Nikon\0\2\x10\0\0", 10) + note.bytes;
    const auto exif =
        file.directory({TagFile::data(37500, file.add(all), all.size()), TagFile::number(1, 1)});
    const auto full = file.directory(file.jpeg_fields(small_jpeg(3008, 2000)) +
                                     TiffFields{{274, FieldType::Short, {1}}});
    const auto raw = file.directory({TagFile::number(259, 34713), TagFile::number(262, 32803)});
    const auto inner = file.add(big32(full) + big32(raw));
    return file.finish(file.strip(1, std::string(60, 'r'),
                                  {{274, FieldType::Short, {8}},
                                   {330, FieldType::Long, {}, {}, 2, inner},
                                   TagFile::number(34665, exif)}));
}

// Previews as strip and as tile; samples that are JPEG, too, but no picture.
inline std::string dng() {
    TagFile file(ByteOrder::Little);
    const auto samples =
        file.directory(file.strip(7, small_jpeg(5000, 3000), {TagFile::number(262, 34892)}));
    const auto strip = file.directory(file.strip(7, small_jpeg(256, 171)));
    const auto tile =
        file.directory(TiffFields{TagFile::number(254, 1), TagFile::number(259, 7)} +
                       file.place(324, 325, small_jpeg(1024, 683, SegmentMarker::Sof2)));
    const auto inner = file.add(little32(samples) + little32(strip) + little32(tile));
    return file.finish({{330, formats::tiff::ifd_offset, {}, {}, 3, inner},
                        {50706, FieldType::Byte, {}, {}, 4, 0x00000401}});
}

inline std::string panasonic_rw2() {
    TagFile file(ByteOrder::Little, 85);
    const std::string picture = turned_jpeg(1920, 1440, 3);
    return file.finish(
        {TagFile::data(46, file.add(picture), picture.size()), {274, FieldType::Short, {1}}});
}

inline std::string olympus_orf() {
    TagFile file(ByteOrder::Little, 0x4F52);
    TagFile note(ByteOrder::Little);
    const std::string start = std::string("OLYMPUS\0II\3\0", 12);
    note.bytes.clear();
    const std::string picture = small_jpeg(1600, 1200);
    // The directory, that of the settings, the picture: each where its offset from the note says.
    const auto settings = length_of(start) + 2 + 12 + 4;
    const std::uint32_t picture_at = settings + 2 + 2 * 12 + 4;
    const std::string all =
        start + note.directory_bytes({{0x2020, formats::tiff::ifd_offset, {settings}}}) +
        note.directory_bytes(
            {TagFile::number(0x101, picture_at), TagFile::number(0x102, length_of(picture))}) +
        picture;
    const auto exif = file.directory({TagFile::data(37500, file.add(all), all.size())});
    return file.finish({TagFile::number(34665, exif)});
}

inline std::string minolta_mrw() {
    TagFile file(ByteOrder::Big);
    const std::string note = file.directory_bytes(file.place(0x88, 0x89, small_jpeg(640, 480)));
    const auto exif = file.directory({TagFile::data(37500, file.add(note), note.size())});
    return mrw(file.finish({{274, FieldType::Short, {6}}, TagFile::number(34665, exif)}));
}

inline std::string fujifilm_raf(const std::string& picture) {
    return "FUJIFILMCCD-RAW 0201FF000000" + std::string(56, ' ') + big32(92) + big_sized(picture);
}

inline std::string canon_crw() {
    const std::string picture = small_jpeg(2048, 1536);
    const std::string thumb = small_jpeg(160, 120);
    const auto entry = [](const std::string& type, const std::string& data, std::size_t offset) {
        return type + little32(length_of(data)) + little32(static_cast<std::uint32_t>(offset));
    };
    const std::string information =
        little32(2048) + little32(1536) + little32(0) + little32(270) + std::string(12, '\0');
    const std::string inner = information + std::string("\1\0", 2) +
                              entry("\x10\x18", information, 0) + little32(length_of(information));
    const std::string data = picture + thumb + inner;
    return std::string("II\x1A\0\0\0HEAPCCDR", 14) + std::string(12, '\0') + data +
           std::string("\3\0", 2) + entry("\x07\x20", picture, 0) +
           entry("\x08\x20", thumb, picture.size()) +
           entry("\x0A\x30", inner, picture.size() + thumb.size()) + little32(length_of(data));
}

inline std::string sigma_x3f() {
    const auto section = [](std::uint32_t type, std::uint32_t format, const std::string& data) {
        return "SECi" + little32(0x20000) + little32(type) + little32(format) + little32(2000) +
               little32(1300) + little32(0) + data;
    };
    const std::string raw = section(1, 18, small_jpeg(9, 9));
    const std::string preview = section(2, 18, small_jpeg(2000, 1300));
    std::string file = "FOVb" + little32(0x20002) + std::string(28, '\0') + little32(180);
    const auto start = length_of(file);
    const auto entry = [](std::uint32_t offset, const std::string& data) {
        return little32(offset) + little32(length_of(data)) + "IMA2";
    };
    const auto second = start + length_of(raw);
    file += raw + preview;
    return file + "SECd" + little32(0x20000) + little32(2) + entry(start, raw) +
           entry(second, preview) + little32(second + length_of(preview));
}

inline std::string canon_cr3() {
    const std::string thumb = small_jpeg(160, 120);
    const std::string preview = small_jpeg(1620, 1080);
    const std::string full = small_jpeg(6000, 4000);
    const std::string tags =
        build_tiff(ByteOrder::Little, {.first = {{274, FieldType::Short, {8}}}});
    const std::string of_canon =
        canon_box(box("CNCV", "CanonCR3_001/00.09.00/00.00.00") + box("CMT1", tags) +
                  box("THMB", big32(0) + big16(160) + big16(120) + big32(length_of(thumb)) +
                                  big16(1) + big16(0) + thumb));
    const std::string of_preview =
        box("uuid", "\xEA\xF4\x2B\x5E\x1C\x98\x4B\x88\xB9\xFB\xB7\xDC\x40\x6E\x4D\x16" + big32(0) +
                        big32(1) +
                        box("PRVW", big32(0) + big16(1) + big16(1620) + big16(1080) + big16(1) +
                                        big_sized(preview)));
    const auto with = [&](std::size_t chunk) {
        TrackMade made;
        made.entry = picture_entry("CRAW", box("JPEG", big32(0)));
        made.tables = full_box("stts", big32(1) + big32(1) + big32(1)) +
                      full_box("stsc", big32(1) + big32(1) + big32(1) + big32(1)) +
                      full_box("stsz", big32(length_of(full)) + big32(1)) +
                      full_box("co64", big32(1) + big64(chunk));
        return box("ftyp", "crx " + big32(1) + "crx isom") +
               box("moov", of_canon + movie_header() + track(made)) + of_preview;
    };
    return with(with(0).size() + 8) + box("mdat", full);
}

// An image made of HEVC, with thumbnails: in one piece, in two, beside the list of items.
inline std::string heif() {
    const std::string thumb = small_jpeg(320, 240);
    const std::string divided = small_jpeg(160, 120);
    const std::string inner = small_jpeg(80, 60);
    const auto entry = [](std::uint16_t id, const std::string& type) {
        return full_box("infe", big16(id) + big16(0) + type + '\0', 2);
    };
    const auto place = [](std::uint16_t id, std::uint16_t method,
                          const std::vector<std::pair<std::size_t, std::size_t>>& extents) {
        std::string all = big16(id) + big16(method) + big16(0) +
                          big16(static_cast<std::uint16_t>(extents.size()));
        for (const auto& [offset, length] : extents)
            all += big32(static_cast<std::uint32_t>(offset)) +
                   big32(static_cast<std::uint32_t>(length));
        return all;
    };
    const auto with = [&](std::size_t data) {
        const std::size_t second = data + thumb.size();
        const std::string places =
            full_box("iloc",
                     big16(0x4400) + big16(4) + place(1, 0, {{data, 1}}) +
                         place(2, 0, {{data, thumb.size()}}) +
                         place(3, 0, {{second, 20}, {second + 25, divided.size() - 20}}) +
                         place(4, 1, {{3, inner.size()}}),
                     1);
        const std::string thumbnails = box("thmb", big16(2) + big16(1) + big16(1)) +
                                       box("thmb", big16(3) + big16(1) + big16(1)) +
                                       box("thmb", big16(4) + big16(1) + big16(1));
        const std::string properties =
            box("iprp", box("ipco", full_box("ispe", big32(320) + big32(240)) + box("irot", "\3")) +
                            full_box("ipma", big32(1) + big16(2) + "\2\1\2"));
        return box("ftyp", "heic" + big32(0) + "mif1heic") +
               full_box("meta",
                        full_box("hdlr", big32(0) + "pict" + std::string(13, '\0')) +
                            full_box("pitm", big16(1)) +
                            full_box("iinf", big16(4) + entry(1, "hvc1") + entry(2, "jpeg") +
                                                 entry(3, "jpeg") + entry(4, "jpeg")) +
                            places + full_box("iref", thumbnails) + properties +
                            box("idat", "abc" + inner));
    };
    return with(with(0).size() + 8) +
           box("mdat", thumb + divided.substr(0, 20) + "-----" + divided.substr(20));
}

inline std::string photoshop_file() {
    const std::string picture = small_jpeg(160, 107);
    const std::string thumbnail = big32(1) + big32(160) + big32(107) + big32(480) +
                                  big32(480 * 107) + big32(length_of(picture)) + big16(24) +
                                  big16(1) + picture;
    const std::string resources = resource(1005, std::string(16, 'r'), "even") +
                                  resource(1036, thumbnail, "odd") + resource(1060, "xmp.");
    return "8BPS" + big16(1) + std::string(6, '\0') + big16(3) + big32(107) + big32(160) +
           big16(8) + big16(3) + big32(2) + "cc" + big_sized(resources) + "layers";
}

// Tags of ID3 and what stands in them.
inline std::string seven_bits(std::uint32_t value) {
    return big32((value & 0x7F) | (value << 1 & 0x7F00) | (value << 2 & 0x7F0000) |
                 (value << 3 & 0x7F000000));
}
inline std::string id3_tag(char version, const std::string& body, char flags = 0) {
    return std::string("ID3") + version + '\0' + flags + seven_bits(length_of(body)) + body;
}
inline std::string id3_frame(const std::string& id, const std::string& data,
                             std::uint16_t flags = 0, bool has_seven_bits = false) {
    return id + (has_seven_bits ? seven_bits(length_of(data)) : big32(length_of(data))) +
           big16(flags) + data;
}
inline std::string attached(const std::string& picture, char type = 3,
                            const std::string& description = "Cover") {
    return std::string("\0image/jpeg\0", 12) + type + description + '\0' + picture;
}
inline std::string unsynchronised(const std::string& bytes) {
    std::string all;
    for (const char byte : bytes) {
        if (!all.empty() && all.back() == '\xFF' &&
            (byte == '\0' || static_cast<unsigned char>(byte) >= 0xE0))
            all += '\0';
        all += byte;
    }
    return all;
}

inline std::string flac_block(unsigned type, const std::string& data, bool is_last = false) {
    return big32((is_last ? 0x80000000U : 0U) | type << 24U | length_of(data)) + data;
}
inline std::string flac_picture(const std::string& picture, std::uint32_t type = 3) {
    return big32(type) + big_sized("image/jpeg") + big_sized("K\xC3\xA4se") +
           std::string(16, '\0') + big_sized(picture);
}
inline std::string flac_file() {
    return "fLaC" + flac_block(0, std::string(34, 's')) +
           flac_block(6, flac_picture(small_jpeg(32, 32), 1)) +
           flac_block(6, flac_picture(small_jpeg(500, 480)), true) + "\xFF\xF8sound";
}

inline std::string base64(const std::string& bytes) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i)
            bits = bits << 8 |
                   (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U);
        for (std::size_t i = 0; i < 4; ++i)
            text += at + i <= bytes.size() ? alphabet[bits >> (18 - 6 * i) & 63U] : '=';
    }
    return text;
}
// Pages of at most two segments, those of another stream between them.
inline std::string ogg_file(const std::vector<std::string>& packets) {
    const auto page = [](std::uint32_t stream, const std::string& lengths,
                         const std::string& data) {
        return "OggS" + std::string(10, '\0') + little32(stream) + std::string(8, '\0') +
               static_cast<char>(lengths.size()) + lengths + data;
    };
    std::string file;
    for (const std::string& packet : packets)
        for (std::size_t at = 0; at <= packet.size(); at += 510) {
            std::string lengths;
            const std::string data = packet.substr(at, 510);
            lengths += static_cast<char>(std::min<std::size_t>(data.size(), 255));
            if (data.size() >= 255)
                lengths += static_cast<char>(data.size() - 255);
            file += page(7, lengths, data) + page(8, "\3", "abc");
        }
    return file;
}
inline std::string vorbis_comments(const std::vector<std::string>& comments) {
    std::string all = little_sized("maker") + little32(static_cast<std::uint32_t>(comments.size()));
    for (const std::string& comment : comments)
        all += little_sized(comment);
    return all;
}

} // namespace vell::test
