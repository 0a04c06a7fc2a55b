// Files with pictures in them, made for tests: raw photographs of many makers, music, movies.
#pragma once

#include "image_builder.h"
#include "movie_builder.h"
#include "tiff_builder.h"

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
        return static_cast<std::uint32_t>(bytes.size() - data.size());
    }
    std::uint32_t directory(const TiffFields& fields, std::uint32_t next = 0) {
        return add(directory_bytes(fields, next));
    }
    // Without values that do not fit into entries, but for those whose offset is given.
    std::string directory_bytes(const TiffFields& fields, std::uint32_t next = 0) const {
        std::string table;
        append_integer<std::uint16_t>(table, static_cast<std::uint16_t>(fields.size()), order_);
        for (const TiffField& field : fields) {
            const std::size_t one = formats::tiff::size_of(field.type);
            std::string value;
            for (const std::uint32_t number : field.numbers)
                if (one == 2)
                    append_integer<std::uint16_t>(value, static_cast<std::uint16_t>(number),
                                                  order_);
                else
                    append_integer<std::uint32_t>(value, number, order_);
            if (field.offset) {
                value.clear();
                append_integer<std::uint32_t>(value, *field.offset, order_);
            }
            value.resize(4);
            append_integer<std::uint16_t>(table, field.tag, order_);
            append_integer<std::uint16_t>(table, static_cast<std::uint16_t>(field.type), order_);
            append_integer<std::uint32_t>(
                table, field.count.value_or(static_cast<std::uint32_t>(field.numbers.size())),
                order_);
            table += value;
        }
        append_integer<std::uint32_t>(table, next, order_);
        return table;
    }
    std::string finish(std::uint32_t first_directory) {
        std::string offset;
        append_integer<std::uint32_t>(offset, first_directory, order_);
        bytes.replace(4, 4, offset);
        return bytes;
    }

    static TiffField number(std::uint16_t tag, std::uint32_t value) {
        return {tag, FieldType::Long, {value}};
    }
    static TiffField data(std::uint16_t tag, std::uint32_t offset, std::size_t size) {
        return {tag, FieldType::Undefined, {}, {}, static_cast<std::uint32_t>(size), offset};
    }
    // The fields of a picture kept apart, and of one that is a strip.
    TiffFields jpeg_fields(const std::string& picture) {
        return {number(259, 6), number(513, add(picture)),
                number(514, static_cast<std::uint32_t>(picture.size()))};
    }
    TiffFields strip(std::uint32_t compression, const std::string& picture,
                     const TiffFields& more = {}) {
        TiffFields fields{number(259, compression), number(273, add(picture)),
                          number(279, static_cast<std::uint32_t>(picture.size()))};
        fields.insert(fields.end(), more.begin(), more.end());
        return fields;
    }

  private:
    ByteOrder order_;
};

inline TiffFields operator+(TiffFields fields, const TiffFields& more) {
    fields.insert(fields.end(), more.begin(), more.end());
    return fields;
}

// Two strips of one size: a table has offset and length for each, and is no picture in one piece.
inline std::string canon_cr2() {
    TagFile file(ByteOrder::Little, 42, std::string("CR\2\0\0\0\0\0", 8));
    const auto raw = file.directory(
        file.strip(6, small_jpeg(4000, 3000, SegmentMarker::Sof3, 14))); // lossless samples
    const auto rgb = file.directory(file.strip(1, std::string(60, 'r')), raw);
    const auto thumb = file.directory(file.jpeg_fields(small_jpeg(160, 120)), rgb);
    return file.finish(file.directory(
        file.strip(6, small_jpeg(1620, 1080), {{274, FieldType::Short, {6}}}), thumb));
}

inline std::string nikon_nef() {
    TagFile file(ByteOrder::Big);
    TagFile note(ByteOrder::Big);
    const auto preview = note.directory(note.jpeg_fields(small_jpeg(570, 375)));
    note.finish(note.directory({TagFile::number(17, preview)}));
    const std::string all = std::string("Nikon\0\2\x10\0\0", 10) + note.bytes;
    const auto exif =
        file.directory({TagFile::data(37500, file.add(all), all.size()), TagFile::number(1, 1)});
    const auto full = file.directory(file.jpeg_fields(small_jpeg(3008, 2000)) +
                                     TiffFields{{274, FieldType::Short, {1}}});
    const auto raw = file.directory({TagFile::number(259, 34713), TagFile::number(262, 32803)});
    const auto inner = file.add(big32(full) + big32(raw));
    return file.finish(file.directory(file.strip(1, std::string(60, 'r'),
                                                 {{274, FieldType::Short, {8}},
                                                  {330, FieldType::Long, {}, {}, 2, inner},
                                                  TagFile::number(34665, exif)})));
}

// Previews as strip and as tile; samples that are JPEG, too, but no picture.
inline std::string dng() {
    TagFile file(ByteOrder::Little);
    const auto samples =
        file.directory(file.strip(7, small_jpeg(5000, 3000), {TagFile::number(262, 34892)}));
    const auto strip = file.directory(file.strip(7, small_jpeg(256, 171)));
    const std::string picture = small_jpeg(1024, 683, SegmentMarker::Sof2);
    const auto tile = file.directory(
        {TagFile::number(254, 1), TagFile::number(259, 7), TagFile::number(324, file.add(picture)),
         TagFile::number(325, static_cast<std::uint32_t>(picture.size()))});
    const auto inner = file.add(little32(samples) + little32(strip) + little32(tile));
    return file.finish(file.directory({{330, formats::tiff::ifd_offset, {}, {}, 3, inner},
                                       {50706, FieldType::Byte, {}, {}, 4, 0x00000401}}));
}

inline std::string panasonic_rw2() {
    TagFile file(ByteOrder::Little, 85);
    const std::string picture = turned_jpeg(1920, 1440, 3);
    return file.finish(file.directory(
        {TagFile::data(46, file.add(picture), picture.size()), {274, FieldType::Short, {1}}}));
}

inline std::string olympus_orf() {
    TagFile file(ByteOrder::Little, 0x4F52);
    TagFile note(ByteOrder::Little);
    const std::string start = std::string("OLYMPUS\0II\3\0", 12);
    note.bytes.clear();
    const std::string picture = small_jpeg(1600, 1200);
    const auto length = static_cast<std::uint32_t>(picture.size());
    // The directory, that of the settings, the picture: each where its offset from the note says.
    const auto settings = static_cast<std::uint32_t>(start.size()) + 2 + 12 + 4;
    const std::uint32_t picture_at = settings + 2 + 2 * 12 + 4;
    const std::string all =
        start + note.directory_bytes({{0x2020, formats::tiff::ifd_offset, {settings}}}) +
        note.directory_bytes({TagFile::number(0x101, picture_at), TagFile::number(0x102, length)}) +
        picture;
    const auto exif = file.directory({TagFile::data(37500, file.add(all), all.size())});
    return file.finish(file.directory({TagFile::number(34665, exif)}));
}

inline std::string minolta_mrw() {
    TagFile file(ByteOrder::Big);
    const std::string picture = small_jpeg(640, 480);
    const auto at = file.add(picture);
    const std::string note =
        file.directory_bytes({TagFile::number(0x88, at),
                              TagFile::number(0x89, static_cast<std::uint32_t>(picture.size()))});
    const auto exif = file.directory({TagFile::data(37500, file.add(note), note.size())});
    file.finish(file.directory({{274, FieldType::Short, {6}}, TagFile::number(34665, exif)}));
    const std::string blocks = std::string("\0PRD", 4) + big32(3) + "abc" +
                               std::string("\0TTW", 4) +
                               big32(static_cast<std::uint32_t>(file.bytes.size())) + file.bytes;
    return std::string("\0MRM", 4) + big32(static_cast<std::uint32_t>(blocks.size())) + blocks;
}

inline std::string fujifilm_raf() {
    const std::string picture = turned_jpeg(1920, 1280, 6);
    return "FUJIFILMCCD-RAW 0201FF000000" + std::string(56, ' ') + big32(92) +
           big32(static_cast<std::uint32_t>(picture.size())) + picture;
}

inline std::string canon_crw() {
    const std::string picture = small_jpeg(2048, 1536);
    const std::string thumb = small_jpeg(160, 120);
    const auto entry = [](const std::string& type, std::size_t size, std::size_t offset) {
        return type + little32(static_cast<std::uint32_t>(size)) +
               little32(static_cast<std::uint32_t>(offset));
    };
    const std::string information =
        little32(2048) + little32(1536) + little32(0) + little32(270) + std::string(12, '\0');
    const std::string inner = information + std::string("\1\0", 2) +
                              entry("\x10\x18", information.size(), 0) +
                              little32(static_cast<std::uint32_t>(information.size()));
    const std::string data = picture + thumb + inner;
    return std::string("II\x1A\0\0\0HEAPCCDR", 14) + std::string(12, '\0') + data +
           std::string("\3\0", 2) + entry("\x07\x20", picture.size(), 0) +
           entry("\x08\x20", thumb.size(), picture.size()) +
           entry("\x0A\x30", inner.size(), picture.size() + thumb.size()) +
           little32(static_cast<std::uint32_t>(data.size()));
}

inline std::string sigma_x3f() {
    const auto section = [](std::uint32_t type, std::uint32_t format, const std::string& data) {
        return "SECi" + little32(0x20000) + little32(type) + little32(format) + little32(2000) +
               little32(1300) + little32(0) + data;
    };
    const std::string raw = section(1, 18, small_jpeg(9, 9));
    const std::string preview = section(2, 18, small_jpeg(2000, 1300));
    std::string file = "FOVb" + little32(0x20002) + std::string(28, '\0') + little32(180);
    const auto start = static_cast<std::uint32_t>(file.size());
    const auto entry = [](std::uint32_t offset, const std::string& data) {
        return little32(offset) + little32(static_cast<std::uint32_t>(data.size())) + "IMA2";
    };
    const auto second = start + static_cast<std::uint32_t>(raw.size());
    file += raw + preview;
    return file + "SECd" + little32(0x20000) + little32(2) + entry(start, raw) +
           entry(second, preview) + little32(second + static_cast<std::uint32_t>(preview.size()));
}

inline std::string canon_cr3() {
    const std::string thumb = small_jpeg(160, 120);
    const std::string preview = small_jpeg(1620, 1080);
    const std::string full = small_jpeg(6000, 4000);
    const auto size = [](const std::string& picture) {
        return big32(static_cast<std::uint32_t>(picture.size()));
    };
    const std::string tags =
        build_tiff(ByteOrder::Little, {.first = {{274, FieldType::Short, {8}}}});
    const std::string of_canon =
        box("uuid", "\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48" +
                        box("CNCV", "CanonCR3_001/00.09.00/00.00.00") + box("CMT1", tags) +
                        box("THMB", big32(0) + big16(160) + big16(120) + size(thumb) + big16(1) +
                                        big16(0) + thumb));
    const std::string of_preview =
        box("uuid", "\xEA\xF4\x2B\x5E\x1C\x98\x4B\x88\xB9\xFB\xB7\xDC\x40\x6E\x4D\x16" + big32(0) +
                        big32(1) +
                        box("PRVW", big32(0) + big16(1) + big16(1620) + big16(1080) + big16(1) +
                                        size(preview) + preview));
    const auto with = [&](std::size_t chunk) {
        TrackMade made;
        made.entry = picture_entry("CRAW", box("JPEG", big32(0)));
        made.tables = full_box("stts", big32(1) + big32(1) + big32(1)) +
                      full_box("stsc", big32(1) + big32(1) + big32(1) + big32(1)) +
                      full_box("stsz", big32(static_cast<std::uint32_t>(full.size())) + big32(1)) +
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
    const auto size = static_cast<std::uint32_t>(picture.size());
    const std::string thumbnail = big32(1) + big32(160) + big32(107) + big32(480) +
                                  big32(480 * 107) + big32(size) + big16(24) + big16(1) + picture;
    const std::string resources = resource(1005, std::string(16, 'r'), "even") +
                                  resource(1036, thumbnail, "odd") + resource(1060, "xmp.");
    return "8BPS" + big16(1) + std::string(6, '\0') + big16(3) + big32(107) + big32(160) +
           big16(8) + big16(3) + big32(2) + "cc" +
           big32(static_cast<std::uint32_t>(resources.size())) + resources + "layers";
}

// Tags of ID3 and what stands in them.
inline std::string seven_bits(std::uint32_t value) {
    return big32((value & 0x7F) | (value << 1 & 0x7F00) | (value << 2 & 0x7F0000) |
                 (value << 3 & 0x7F000000));
}
inline std::string id3_tag(char version, const std::string& body, char flags = 0) {
    return std::string("ID3") + version + '\0' + flags +
           seven_bits(static_cast<std::uint32_t>(body.size())) + body;
}
inline std::string id3_frame(const std::string& id, const std::string& data,
                             std::uint16_t flags = 0, bool has_seven_bits = false) {
    const auto size = static_cast<std::uint32_t>(data.size());
    return id + (has_seven_bits ? seven_bits(size) : big32(size)) + big16(flags) + data;
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
    return big32((is_last ? 0x80000000U : 0U) | type << 24U |
                 static_cast<std::uint32_t>(data.size())) +
           data;
}
inline std::string flac_picture(const std::string& picture, std::uint32_t type = 3) {
    return big32(type) + big32(10) + "image/jpeg" + big32(5) + "K\xC3\xA4se" +
           std::string(16, '\0') + big32(static_cast<std::uint32_t>(picture.size())) + picture;
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
    std::string all = little32(5) + "maker" + little32(static_cast<std::uint32_t>(comments.size()));
    for (const std::string& comment : comments)
        all += little32(static_cast<std::uint32_t>(comment.size())) + comment;
    return all;
}

} // namespace vell::test
