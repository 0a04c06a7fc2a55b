#include "src/base/inflate.h"
#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/formats/isobmff/metadata_items.h"
#include "src/formats/isobmff/movie.h"
#include "src/formats/isobmff/records.h"
#include "src/formats/isobmff/sample_entry.h"
#include "src/structure/parts.h"

#include <algorithm>
#include <iterator>

namespace vell::structure {
namespace {

using namespace formats;
using namespace formats::isobmff;
using params::TextEncoding;

// What stands before the boxes in a box.
enum class Inside : std::uint8_t {
    Data,      // no boxes
    FullData,  // a version, then data
    Boxes,     // boxes from the start on
    FullBoxes, // a version
    Counted,   // a version and how many boxes there are, in 32 bits
    CountedBy, // the same with 16 bits in version 0
    Entries,   // as Counted; the boxes are sample entries
    Skipped,   // nothing that is looked at
};

struct BoxKind {
    FourCc type;
    Inside inside;
};
constexpr BoxKind box_kinds[] = {
    {"moov"_4cc, Inside::Boxes},     {"trak"_4cc, Inside::Boxes},
    {"mdia"_4cc, Inside::Boxes},     {"minf"_4cc, Inside::Boxes},
    {"stbl"_4cc, Inside::Boxes},     {"dinf"_4cc, Inside::Boxes},
    {"edts"_4cc, Inside::Boxes},     {"udta"_4cc, Inside::Boxes},
    {"mvex"_4cc, Inside::Boxes},     {"moof"_4cc, Inside::Boxes},
    {"traf"_4cc, Inside::Boxes},     {"mfra"_4cc, Inside::Boxes},
    {"meco"_4cc, Inside::Boxes},     {"tref"_4cc, Inside::Boxes},
    {"sinf"_4cc, Inside::Boxes},     {"rinf"_4cc, Inside::Boxes},
    {"schi"_4cc, Inside::Boxes},     {"iprp"_4cc, Inside::Boxes},
    {"ipco"_4cc, Inside::Boxes},     {"wave"_4cc, Inside::Boxes},
    {"gmhd"_4cc, Inside::Boxes},     {"tapt"_4cc, Inside::Boxes},
    {"cmov"_4cc, Inside::Boxes},     {"rmra"_4cc, Inside::Boxes},
    {"rmda"_4cc, Inside::Boxes},     {"clip"_4cc, Inside::Boxes},
    {"matt"_4cc, Inside::Boxes},     {"strk"_4cc, Inside::Boxes},
    {"strd"_4cc, Inside::Boxes},     {"grpl"_4cc, Inside::Boxes},
    {"hnti"_4cc, Inside::Boxes},     {"hinf"_4cc, Inside::Boxes},
    {"vexu"_4cc, Inside::Boxes},     {"eyes"_4cc, Inside::Boxes},
    {"meta"_4cc, Inside::FullBoxes}, {"iref"_4cc, Inside::FullBoxes},
    {"trep"_4cc, Inside::FullBoxes}, {"dref"_4cc, Inside::Counted},
    {"keys"_4cc, Inside::Counted},   {"iinf"_4cc, Inside::CountedBy},
    {"stsd"_4cc, Inside::Entries},   {"ilst"_4cc, Inside::Boxes},
    {"mdat"_4cc, Inside::Skipped},   {"free"_4cc, Inside::Skipped},
    {"skip"_4cc, Inside::Skipped},   {"wide"_4cc, Inside::Skipped},
    {"idat"_4cc, Inside::Skipped},   {"mvhd"_4cc, Inside::FullData},
    {"tkhd"_4cc, Inside::FullData},  {"mdhd"_4cc, Inside::FullData},
    {"hdlr"_4cc, Inside::FullData},  {"vmhd"_4cc, Inside::FullData},
    {"smhd"_4cc, Inside::FullData},  {"hmhd"_4cc, Inside::FullData},
    {"nmhd"_4cc, Inside::FullData},  {"sthd"_4cc, Inside::FullData},
    {"gmin"_4cc, Inside::FullData},  {"url "_4cc, Inside::FullData},
    {"urn "_4cc, Inside::FullData},  {"alis"_4cc, Inside::FullData},
    {"stts"_4cc, Inside::FullData},  {"ctts"_4cc, Inside::FullData},
    {"cslg"_4cc, Inside::FullData},  {"stsc"_4cc, Inside::FullData},
    {"stsz"_4cc, Inside::FullData},  {"stz2"_4cc, Inside::FullData},
    {"stco"_4cc, Inside::FullData},  {"co64"_4cc, Inside::FullData},
    {"stss"_4cc, Inside::FullData},  {"stsh"_4cc, Inside::FullData},
    {"stps"_4cc, Inside::FullData},  {"padb"_4cc, Inside::FullData},
    {"sdtp"_4cc, Inside::FullData},  {"sbgp"_4cc, Inside::FullData},
    {"sgpd"_4cc, Inside::FullData},  {"subs"_4cc, Inside::FullData},
    {"saiz"_4cc, Inside::FullData},  {"saio"_4cc, Inside::FullData},
    {"senc"_4cc, Inside::FullData},  {"elst"_4cc, Inside::FullData},
    {"mehd"_4cc, Inside::FullData},  {"trex"_4cc, Inside::FullData},
    {"leva"_4cc, Inside::FullData},  {"mfhd"_4cc, Inside::FullData},
    {"tfhd"_4cc, Inside::FullData},  {"tfdt"_4cc, Inside::FullData},
    {"trun"_4cc, Inside::FullData},  {"tfra"_4cc, Inside::FullData},
    {"mfro"_4cc, Inside::FullData},  {"sidx"_4cc, Inside::FullData},
    {"ssix"_4cc, Inside::FullData},  {"prft"_4cc, Inside::FullData},
    {"pdin"_4cc, Inside::FullData},  {"emsg"_4cc, Inside::FullData},
    {"pssh"_4cc, Inside::FullData},  {"schm"_4cc, Inside::FullData},
    {"tenc"_4cc, Inside::FullData},  {"elng"_4cc, Inside::FullData},
    {"kind"_4cc, Inside::FullData},  {"tsel"_4cc, Inside::FullData},
    {"pitm"_4cc, Inside::FullData},  {"iloc"_4cc, Inside::FullData},
    {"ipma"_4cc, Inside::FullData},  {"ispe"_4cc, Inside::FullData},
    {"pixi"_4cc, Inside::FullData},  {"auxC"_4cc, Inside::FullData},
    {"esds"_4cc, Inside::FullData},  {"titl"_4cc, Inside::FullData},
    {"dscp"_4cc, Inside::FullData},  {"perf"_4cc, Inside::FullData},
    {"auth"_4cc, Inside::FullData},  {"gnre"_4cc, Inside::FullData},
    {"cprt"_4cc, Inside::FullData},  {"albm"_4cc, Inside::FullData},
    {"yrrc"_4cc, Inside::FullData},  {"rtng"_4cc, Inside::FullData},
    {"clsf"_4cc, Inside::FullData},  {"kywd"_4cc, Inside::FullData},
    {"loci"_4cc, Inside::FullData},  {"ID32"_4cc, Inside::FullData},
    {"mean"_4cc, Inside::FullData},  {"name"_4cc, Inside::FullData},
    {"clef"_4cc, Inside::FullData},  {"prof"_4cc, Inside::FullData},
    {"enof"_4cc, Inside::FullData},  {"chpl"_4cc, Inside::FullData},
};

// What a box is found in, which may change what its bytes mean.
struct Place {
    FourCc parent{};
    FourCc handler{};         // of the media around
    std::uint8_t version = 0; // of the box around
};

class BoxReport {
  public:
    explicit BoxReport(StructureReport& report) : report_(report) {}

    Read<void> report_all(const Window& around, const Place& place) {
        BoxWalk walk(around);
        Place here = place;
        for (;;) {
            const std::uint64_t start = walk.position();
            const auto read = walk.next();
            if (!read && read.error().damage == Damage::Unreadable)
                return Failure{read.error()};
            const bool ends_list =
                read && *read && (*read)->runs_to_the_end && place.parent == "udta"_4cc;
            if (!read || !*read || ends_list)
                return report_rest(around, start);
            VELL_TRY(report_box(**read, here));
        }
    }

  private:
    // Bytes behind the last box: few that are no header, or a box that cannot be.
    Read<void> report_rest(const Window& around, std::uint64_t start) {
        const std::uint64_t end = around.start() + around.size();
        if (start < end) {
            const Part part(report_, "rest", "(no box)", start, end - start);
        }
        return {};
    }

    Inside inside_of(const Box& box, const Place& place) const {
        if (place.parent == "ilst"_4cc)
            return Inside::Boxes;
        if (place.parent == "keys"_4cc || place.parent == "iref"_4cc || place.parent == "tref"_4cc)
            return Inside::Data;
        // In "udta" of QuickTime names are plain text, and so are these in "ilst".
        if (place.parent == "udta"_4cc && box.type == "name"_4cc)
            return Inside::Data;
        const auto* const kind = std::ranges::find(box_kinds, box.type, &BoxKind::type);
        return kind == std::end(box_kinds) ? Inside::Data : kind->inside;
    }

    Read<void> report_box(const Box& box, Place& place) {
        const Part part(report_, "box", text_of(box.type), box.start, box.size());
        if (box.type == "uuid"_4cc)
            report_.field("type", hexadecimal({box.user_type.data(), box.user_type.size()}));
        if (!box.content.is_whole())
            report_.note("cut off");
        if (report_.depth() >= deepest)
            return {};
        return report_content(box, inside_of(box, place), place);
    }

    Read<void> report_content(const Box& box, Inside inside, Place& place) {
        Window content = box.content;
        const Place within{box.type, place.handler};
        if (place.parent == "stsd"_4cc)
            return report_entry(box, place);
        switch (inside) {
        case Inside::Skipped:
            return {};
        case Inside::Data:
            return if_sound(report_fields(box.type, content, 0, place));
        case Inside::Boxes:
            return report_all(content, within);
        default:
            break;
        }
        if (inside == Inside::FullBoxes && box.type == "meta"_4cc &&
            VELL_TRY(is_plain_meta(box.content)))
            return report_all(content, within);
        const auto header = VELL_TRY(if_sound(content.read_record<FullBoxHeader>()));
        if (!header)
            return {};
        if (header->is_too_high()) {
            report_.note("Moviebox version too high, skipped moviebox");
            return {};
        }
        if (report_.verbose()) {
            report_.field("version", std::uint64_t{header->version()});
            report_.field("flags", std::uint64_t{header->flags()});
        }
        if (inside == Inside::FullData)
            return if_sound(report_fields(box.type, content, header->version(), place));
        if (inside != Inside::FullBoxes) {
            const bool is_short = inside == Inside::CountedBy && header->version() == 0;
            content.skip(is_short ? sizeof(std::uint16_t) : sizeof(std::uint32_t));
        }
        return report_all(content.from(content.position()),
                          {box.type, place.handler, header->version()});
    }

    Read<void> report_entry(const Box& box, const Place& place) {
        constexpr std::uint64_t entry_header = 8;
        const EntryKind kind = entry_kind_of(place.handler);
        Window content = box.content;
        content.seek(entry_header);
        if (kind == EntryKind::Picture) {
            if (const auto record = VELL_TRY(if_sound(content.read_record<VisualEntryRecord>()))) {
                report_.field("width", std::uint64_t{record->width});
                report_.field("height", std::uint64_t{record->height});
            }
        } else if (kind == EntryKind::Sound) {
            if (const auto record = VELL_TRY(if_sound(content.read_record<AudioEntryRecord>()))) {
                report_.field("channels", std::uint64_t{record->channel_count});
                report_.field("sample rate", to_text(from_16_16(record->sample_rate), 10));
            }
        }
        const auto boxes = VELL_TRY(if_sound(boxes_of_entry(box.content, kind, place.version)));
        return boxes ? report_all(*boxes, Place{box.type, place.handler}) : Read<void>();
    }

    template <typename Integer>
    Read<void> report_times(Window& content) {
        const auto record = VELL_TRY(content.read_record<TimesRecord<Integer>>());
        report_.field("time scale", std::uint64_t{record.timescale});
        report_.field("duration", std::uint64_t{record.duration});
        return {};
    }
    template <typename Integer>
    Read<void> report_track_times(Window& content) {
        const auto record = VELL_TRY(content.read_record<TrackTimesRecord<Integer>>());
        report_.field("track", std::uint64_t{record.track_id});
        report_.field("duration", std::uint64_t{record.duration});
        return {};
    }

    Read<void> report_integer(std::string_view name, Window& content, bool is_wide = false) {
        if (is_wide)
            report_.field(name, VELL_TRY(content.read_integer<std::uint64_t>(ByteOrder::Big)));
        else
            report_.field(
                name, std::uint64_t{VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big))});
        return {};
    }
    Read<void> report_short(std::string_view name, Window& content) {
        report_.field(name,
                      std::uint64_t{VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big))});
        return {};
    }
    Read<void> report_four_cc(std::string_view name, Window& content) {
        report_.field(
            name, text_of(FourCc{VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big))}));
        return {};
    }

    // The first bytes of a text.
    Read<void> report_text(std::string_view name, Window& content) {
        constexpr std::uint64_t longest_text = 256;
        std::string text = VELL_TRY(content.read_bytes(longest_text));
        text.resize(std::min(text.find('\0'), text.size()));
        text.resize(text.size() - cut_sequence_at_end(text));
        report_.field(name, text,
                      is_valid_utf8(text) ? TextEncoding::Utf8 : TextEncoding::AsciiMac);
        return {};
    }

    // The handler of a media says how its samples are described.
    Read<void> report_handler(Window& content, Place& place) {
        const auto record = VELL_TRY(content.read_record<HandlerRecord>());
        if (record.component_type != "dhlr"_4cc)
            place.handler = record.handler_type;
        report_.field("handler", text_of(record.handler_type));
        return {};
    }

    Read<void> report_file_type(Window& content) {
        const auto record = VELL_TRY(content.read_record<FileTypeRecord>());
        report_.field("brand", text_of(record.major_brand));
        report_.field("version", std::uint64_t{record.minor_version});
        std::string brands;
        constexpr std::size_t most_brands = 64;
        for (std::size_t i = 0; i < most_brands && content.remaining() >= sizeof(FourCc); ++i)
            brands +=
                (i > 0 ? " " : "") +
                text_of(FourCc{VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big))});
        report_.field("compatible", brands);
        return {};
    }

    Read<void> report_item_entry(Window& content) {
        const auto header = VELL_TRY(content.read_record<FullBoxHeader>());
        if (header.version() > 2)
            VELL_TRY(report_integer("item", content));
        else
            VELL_TRY(report_short("item", content));
        content.skip(sizeof(std::uint16_t));
        if (header.version() < 2)
            return report_text("item name", content);
        VELL_TRY(report_four_cc("type", content));
        return {};
    }

    // From which item to which, or to which tracks.
    Read<void> report_reference(Window& content, const Place& place) {
        constexpr std::uint64_t most_targets = 64;
        const bool is_of_items = place.parent == "iref"_4cc;
        const bool is_wide = !is_of_items || place.version > 0;
        const auto next_number = [&]() -> Read<std::uint64_t> {
            if (is_wide)
                return std::uint64_t{VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big))};
            return std::uint64_t{VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big))};
        };
        std::uint64_t count = content.remaining() / sizeof(std::uint32_t);
        if (is_of_items) {
            report_.field("from", VELL_TRY(next_number()));
            count = VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big));
        }
        std::string targets;
        for (std::uint64_t i = 0; i < std::min(count, most_targets); ++i)
            targets += (i > 0 ? " " : "") + to_text(VELL_TRY(next_number()));
        report_.field("to", targets);
        return {};
    }

    // "cmvd": the boxes that it expands to count from its own first byte.
    Read<void> report_compressed(Window& content, const Place& place) {
        VELL_TRY(report_integer("expanded size", content));
        if (content.remaining() > longest_movie_header || place.parent != "cmov"_4cc)
            return {};
        const std::string bytes = VELL_TRY(content.read_rest());
        const auto expanded = inflate_within(bytes, longest_movie_header);
        if (!expanded)
            return fault(Damage::Corrupt);
        BytesInMemory source(*expanded);
        return report_all(Window(source), Place{"cmvd"_4cc, {}});
    }

    // "data" in a list of items: its type and, when a text is asked for, its value.
    Read<void> report_value(Window& content) {
        const auto type = VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big));
        report_.field("type", std::uint64_t{type});
        content.skip(sizeof(std::uint32_t));
        if (type == static_cast<std::uint32_t>(ValueType::Utf8) && report_.verbose())
            return report_text("value", content);
        return {};
    }

    Read<void> report_fields(FourCc type, Window& content, unsigned version, Place& place) {
        if (place.parent == "keys"_4cc)
            return report_text("key", content);
        if (place.parent == "iref"_4cc || place.parent == "tref"_4cc)
            return report_reference(content, place);
        if (static_cast<std::uint32_t>(type) >> 24 == 0xA9) {
            if (!report_.verbose())
                return {};
            content.skip(sizeof(std::uint32_t)); // size and language
            return report_text("value", content);
        }
        switch (type) {
        case "ftyp"_4cc:
        case "styp"_4cc:
            return report_file_type(content);
        case "mvhd"_4cc:
        case "mdhd"_4cc:
            VELL_TRY(version == 1 ? report_times<std::uint64_t>(content)
                                  : report_times<std::uint32_t>(content));
            if (type == "mdhd"_4cc)
                report_.field(
                    "language",
                    language_of(VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big))));
            return {};
        case "tkhd"_4cc: {
            VELL_TRY(version == 1 ? report_track_times<std::uint64_t>(content)
                                  : report_track_times<std::uint32_t>(content));
            const auto shape = VELL_TRY(content.read_record<TrackShapeRecord>());
            report_.field("width", to_text(from_16_16(shape.width), 10));
            report_.field("height", to_text(from_16_16(shape.height), 10));
            return {};
        }
        case "hdlr"_4cc:
            return report_handler(content, place);
        case "stts"_4cc:
        case "ctts"_4cc:
        case "stsc"_4cc:
        case "stco"_4cc:
        case "co64"_4cc:
        case "stss"_4cc:
        case "elst"_4cc:
            return report_integer("entries", content);
        case "stsz"_4cc:
        case "stz2"_4cc:
            VELL_TRY(report_integer("sample size", content));
            return report_integer("samples", content);
        case "mehd"_4cc:
            return report_integer("duration", content, version == 1);
        case "trex"_4cc:
        case "tfhd"_4cc:
            return report_integer("track", content);
        case "mfhd"_4cc:
            return report_integer("sequence", content);
        case "tfdt"_4cc:
            return report_integer("time", content, version == 1);
        case "trun"_4cc:
            return report_integer("samples", content);
        case "pitm"_4cc:
            return version > 0 ? report_integer("item", content) : report_short("item", content);
        case "infe"_4cc:
            return report_item_entry(content);
        case "ispe"_4cc:
            VELL_TRY(report_integer("width", content));
            return report_integer("height", content);
        case "pasp"_4cc:
            VELL_TRY(report_integer("horizontal", content));
            return report_integer("vertical", content);
        case "frma"_4cc:
            return report_four_cc("format", content);
        case "schm"_4cc:
            return report_four_cc("scheme", content);
        case "colr"_4cc:
            return report_four_cc("type", content);
        case "dcom"_4cc:
            return report_four_cc("method", content);
        case "cmvd"_4cc:
            return report_compressed(content, place);
        case "data"_4cc:
            return report_value(content);
        case "mean"_4cc:
        case "name"_4cc:
            return report_text("text", content);
        default:
            return {};
        }
    }

    StructureReport& report_;
};

} // namespace

Read<void> report_boxes(const Window& file, StructureReport& report) {
    return BoxReport(report).report_all(file, {});
}

} // namespace vell::structure
