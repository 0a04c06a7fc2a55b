// The parts of JPEG, PNG, GIF, TIFF and RIFF files.
#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/formats/gif.h"
#include "src/formats/jpeg/segments.h"
#include "src/formats/photoshop.h"
#include "src/formats/png/chunks.h"
#include "src/formats/riff.h"
#include "src/formats/tiff/directory.h"
#include "src/formats/webp.h"
#include "src/formats/xmp.h"
#include "src/structure/parts.h"

#include <algorithm>
#include <array>
#include <set>

namespace vell::structure {
namespace {

using namespace formats;
using params::TextEncoding;

// Up to `longest` bytes of a text, or what stands before its first zero byte.
std::string beginning_of(std::string_view bytes, std::size_t longest = 80) {
    bytes = bytes.substr(0, std::min(bytes.find('\0'), longest));
    return std::string(bytes.substr(0, bytes.size() - cut_sequence_at_end(bytes)));
}

bool is_application_segment(jpeg::SegmentMarker marker) {
    return static_cast<std::uint8_t>(marker) >> 4 == 0xE;
}

// T.81, table B.1.
std::string marker_name(jpeg::SegmentMarker marker) {
    using jpeg::SegmentMarker;
    const auto code = static_cast<std::uint8_t>(marker);
    switch (marker) {
    case SegmentMarker::Soi:
        return "SOI";
    case SegmentMarker::Eoi:
        return "EOI";
    case SegmentMarker::Sos:
        return "SOS";
    case SegmentMarker::Dqt:
        return "DQT";
    case SegmentMarker::Dht:
        return "DHT";
    case SegmentMarker::Dac:
        return "DAC";
    case SegmentMarker::Dnl:
        return "DNL";
    case SegmentMarker::Dri:
        return "DRI";
    case SegmentMarker::Com:
        return "COM";
    default:
        break;
    }
    if (jpeg::is_start_of_frame(marker))
        return "SOF" + to_text(std::uint64_t{code & 15U});
    if (is_application_segment(marker))
        return "APP" + to_text(std::uint64_t{code & 15U});
    if (code >= 0xD0 && code <= 0xD7)
        return "RST" + to_text(std::uint64_t{code & 7U});
    return "0xFF" + hexadecimal(std::string(1, static_cast<char>(code)));
}

// The resources behind "Photoshop 3.0"; `position` is that of the first byte in the file.
void report_resources(std::string_view block, std::uint64_t position, StructureReport& report) {
    while (const auto read = photoshop::ImageResource::read(block)) {
        const Part part(report, "resource", to_text(std::uint64_t{read->id}), position,
                        read->bytes.size());
        if (read->signature != photoshop::own_signature)
            report.field("signature", read->signature, TextEncoding::AsciiMac);
        report.field("data size", std::uint64_t{read->data.size()});
        block.remove_prefix(read->bytes.size());
        position += read->bytes.size();
    }
}

Read<void> report_application_segment(jpeg::Segment& segment, StructureReport& report) {
    const std::string content = VELL_TRY(segment.content.read_bytes(jpeg::longest_payload));
    const std::string_view bytes = content;
    report.field("identifier", beginning_of(bytes, 32), TextEncoding::AsciiMac);
    if (bytes.starts_with(jpeg::exif_identifier))
        return report_tiff(segment.content.from(jpeg::exif_identifier.size()), report);
    if (bytes.starts_with(jpeg::multi_picture_identifier))
        return report_tiff(segment.content.from(jpeg::multi_picture_identifier.size()), report);
    if (bytes.starts_with(jpeg::photoshop_identifier))
        report_resources(bytes.substr(jpeg::photoshop_identifier.size()),
                         segment.content_start + jpeg::photoshop_identifier.size(), report);
    return {};
}

Read<void> report_segment(jpeg::Segment& segment, StructureReport& report) {
    const Part part(report, "segment", marker_name(segment.marker), segment.start,
                    segment.end() - segment.start);
    if (segment.is_too_short() || !segment.content.is_whole())
        report.note("cut off");
    if (jpeg::is_start_of_frame(segment.marker)) {
        const auto frame = VELL_TRY(segment.content.read_record<jpeg::FrameHeader>());
        report.field("width", std::uint64_t{frame.samples_per_line});
        report.field("height", std::uint64_t{frame.lines});
        report.field("bits", std::uint64_t{frame.sample_precision});
        report.field("components", std::uint64_t{frame.components});
    } else if (segment.marker == jpeg::SegmentMarker::Com && report.verbose()) {
        report.field("comment", beginning_of(VELL_TRY(segment.content.read_bytes(256))),
                     TextEncoding::Utf8);
    } else if (is_application_segment(segment.marker)) {
        return report_application_segment(segment, report);
    }
    return {};
}

Read<void> report_segments(const Window& file, StructureReport& report) {
    { const Part part(report, "segment", "SOI", 0, jpeg::marker_size); }
    jpeg::SegmentWalk walk(file);
    for (;;) {
        const jpeg::Marker marker = VELL_TRY(walk.next());
        if (jpeg::stands_alone(marker.code)) {
            {
                const Part part(report, "segment", marker_name(marker.code), marker.start,
                                walk.position() - marker.start);
            }
            if (jpeg::ends_segments(marker.code))
                return {};
            continue;
        }
        jpeg::Segment segment = VELL_TRY(walk.segment_of(marker));
        VELL_TRY(if_sound(report_segment(segment, report)));
        if (marker.code == jpeg::SegmentMarker::Sos) {
            const Part part(report, "data", "(scan)", segment.end(),
                            file.size() - std::min(segment.end(), file.size()));
            return {};
        }
    }
}

Read<void> report_chunk(png::Chunk& chunk, StructureReport& report) {
    constexpr std::uint64_t longest_text = 1024;
    const Part part(report, "chunk", beginning_of(chunk.type()),
                    chunk.data_start - png::ChunkHeader::size,
                    png::ChunkHeader::size + chunk.data.announced() + png::checksum_size);
    if (!chunk.data.is_whole())
        report.note("cut off");
    if (chunk.type() == "IHDR") {
        const auto header = VELL_TRY(chunk.data.read_record<png::ImageHeader>());
        report.field("width", std::uint64_t{header.width});
        report.field("height", std::uint64_t{header.height});
        report.field("bits", std::uint64_t{header.bit_depth});
        report.field("colour type", std::uint64_t{header.colour_type});
    } else if (chunk.type() == "eXIf") {
        return report_tiff(chunk.data, report);
    } else if (chunk.type() == "tEXt" || chunk.type() == "zTXt" || chunk.type() == "iTXt" ||
               chunk.type() == "iCCP") {
        report.field("keyword", beginning_of(VELL_TRY(chunk.data.read_bytes(longest_text))),
                     TextEncoding::Iso8859_1);
    }
    return {};
}

Read<void> report_blocks(Window file, StructureReport& report) {
    file.seek(gif::LogicalScreen::start);
    const auto screen = VELL_TRY(file.read_record<gif::LogicalScreen>());
    gif::BlockWalk walk(file, screen);
    {
        const Part part(report, "block", "Header", 0, walk.position());
        report.field("width", std::uint64_t{screen.width});
        report.field("height", std::uint64_t{screen.height});
    }
    for (;;) {
        const std::uint64_t start = walk.position();
        const gif::Introducer introducer = VELL_TRY(walk.next());
        if (introducer == gif::Introducer::Trailer) {
            const Part part(report, "block", "Trailer", start, walk.position() - start);
            return {};
        }
        const auto passed = walk.pass_data();
        const Part part(report, "block",
                        introducer == gif::Introducer::Image ? "Image" : "Extension", start,
                        walk.position() - start);
        if (introducer == gif::Introducer::Extension)
            report.field("label",
                         "0x" + hexadecimal(std::string(1, static_cast<char>(walk.label()))));
        if (!passed) {
            report.note("cut off");
            return passed;
        }
    }
}

std::string_view type_name(tiff::FieldType type) {
    constexpr std::array<std::string_view, 13> names{
        "",          "BYTE",   "ASCII", "SHORT",     "LONG",  "RATIONAL", "SBYTE",
        "UNDEFINED", "SSHORT", "SLONG", "SRATIONAL", "FLOAT", "DOUBLE"};
    const auto number = static_cast<std::size_t>(type);
    return number < names.size() ? names[number] : std::string_view();
}

// The directories of a block of tags. Each is told once, whatever leads to it.
class DirectoryReport {
  public:
    DirectoryReport(const Window& block, ByteOrder order, StructureReport& report)
        : block_(block), order_(order), report_(report) {}

    Read<void> report_chain(std::string_view name, std::uint32_t offset) {
        for (std::uint64_t number = 0; offset != 0 && told_.insert(offset).second; ++number) {
            if (told_.size() > most_directories)
                return {};
            offset = VELL_TRY(report_directory(
                number == 0 ? std::string(name) : std::string(name) + "+" + to_text(number),
                offset));
        }
        return {};
    }

  private:
    static constexpr std::size_t most_directories = 1024;

    // The offset of the next one.
    Read<std::uint32_t> report_directory(const std::string& name, std::uint32_t offset) {
        const auto directory = tiff::Directory::at(block_, offset, order_);
        if (!directory && directory.error().damage != Damage::Unreadable)
            return std::uint32_t{0};
        VELL_TRY(directory);
        const Part part(report_, "directory", name, block_.start() + offset,
                        directory->end_of(directory->announced()) + tiff::Directory::next_size -
                            offset);
        report_.field("entries", std::uint64_t{directory->announced()});
        const std::vector<tiff::Entry> entries = VELL_TRY(directory->entries());
        std::uint64_t position = block_.start() + offset + tiff::Directory::count_size;
        for (const tiff::Entry& entry : entries) {
            VELL_TRY(report_entry(entry, position));
            position += tiff::Entry::size;
        }
        const auto next = directory->next();
        return next ? static_cast<std::uint32_t>(*next) : 0;
    }

    Read<void> report_entry(const tiff::Entry& entry, std::uint64_t position) {
        const Part part(report_, "tag", to_text(std::uint64_t{entry.tag}), position,
                        tiff::Entry::size);
        const std::string_view type = type_name(entry.type);
        if (type.empty())
            report_.field("type", std::uint64_t{static_cast<std::uint16_t>(entry.type)});
        else
            report_.field("type", type);
        report_.field("count", std::uint64_t{entry.count});
        if (!entry.is_inline())
            report_.field("value at", block_.start() + entry.offset(order_));
        if (report_.depth() >= deepest)
            return {};
        switch (entry.tag) {
        case tiff::tag::exif_directory:
            return report_chain("Exif", entry.offset(order_));
        case tiff::tag::gps_directory:
            return report_chain("GPS", entry.offset(order_));
        case tiff::tag::interoperability_directory:
            return report_chain("Interoperability", entry.offset(order_));
        case tiff::tag::sub_directories:
            return report_sub_directories(entry);
        default:
            return {};
        }
    }

    Read<void> report_sub_directories(const tiff::Entry& entry) {
        constexpr std::uint64_t most_bytes = 4 * most_directories;
        const auto value = tiff::read_value(block_, entry, order_, most_bytes);
        if (!value)
            return if_sound(Read<void>(Failure{value.error()}));
        for (std::size_t at = 0; const auto offset = load<std::uint32_t>(*value, at, order_);
             at += sizeof(std::uint32_t))
            VELL_TRY(report_chain("Sub", *offset));
        return {};
    }

    Window block_;
    ByteOrder order_;
    StructureReport& report_;
    std::set<std::uint32_t> told_;
};

Read<void> report_riff_chunks(const Window& around, StructureReport& report) {
    riff::ChunkWalk walk(around);
    for (;;) {
        const auto chunk = VELL_TRY(walk.next());
        if (!chunk)
            return {};
        const Part part(report, "chunk", beginning_of(chunk->type()), chunk->start,
                        riff::ChunkHeader::size + chunk->data.announced());
        if (!chunk->data.is_whole())
            report.note("cut off");
        Window data = chunk->data;
        if (chunk->holds_chunks()) {
            report.field("form", beginning_of(VELL_TRY(data.read_bytes(riff::form_size))));
            if (report.depth() < deepest)
                VELL_TRY(report_riff_chunks(data.from(riff::form_size), report));
        } else if (chunk->type() == formats::webp::chunk_type::exif) {
            VELL_TRY(report_tiff(data, report));
        }
    }
}

} // namespace

Read<void> report_jpeg(const Window& file, StructureReport& report) {
    return if_sound(report_segments(file, report));
}

Read<void> report_png(const Window& file, StructureReport& report) {
    png::ChunkWalk walk(file);
    for (;;) {
        auto chunk = walk.next();
        if (!chunk)
            return if_sound(Read<void>(Failure{chunk.error()}));
        if (!*chunk)
            return {};
        VELL_TRY(if_sound(report_chunk(**chunk, report)));
    }
}

Read<void> report_gif(const Window& file, StructureReport& report) {
    return if_sound(report_blocks(file, report));
}

Read<void> report_tiff(const Window& block, StructureReport& report) {
    Window start = block;
    start.seek(0);
    const auto header = tiff::Header::read(VELL_TRY(start.read_bytes(tiff::Header::size)));
    if (!header)
        return {};
    return DirectoryReport(block, header->order, report)
        .report_chain("IFD", header->first_directory);
}

Read<void> report_riff(const Window& file, StructureReport& report) {
    return if_sound(report_riff_chunks(file, report));
}

} // namespace vell::structure
