#include "src/formats/jpeg/segments.h"
#include "src/formats/png/chunks.h"
#include "src/formats/xmp.h"
#include "src/metadata/containers/block_collector.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vell::metadata {
namespace {

using namespace formats;

// Keywords of profiles in hexadecimal digits begin with this, behind which their kind stands.
constexpr std::string_view raw_profile = "Raw profile type ";

std::optional<unsigned> digit_of(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return std::nullopt;
}

// A raw profile: a line with its kind, one with its length, lines of digits. Its bytes take the
// place of the text; false for anything else, or fewer digits than the length says.
bool decode_profile(std::string& bytes) {
    std::string_view text = bytes;
    const auto take_line = [&] {
        text.remove_prefix(std::min(text.find_first_not_of("\n "), text.size()));
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(line.size());
        return line;
    };
    take_line(); // the kind again
    std::size_t length = 0;
    for (const char digit : take_line()) {
        if (digit < '0' || digit > '9' || length > longest_blocks)
            return false;
        length = 10 * length + static_cast<std::size_t>(digit - '0');
    }
    if (length > text.size() / 2)
        return false;
    std::size_t decoded = 0;
    std::optional<unsigned> first;
    for (const char c : text) {
        const auto digit = digit_of(c);
        if (!digit || decoded == length)
            continue;
        if (first)
            bytes[decoded++] = static_cast<char>(*first << 4U | *digit);
        first = first ? std::nullopt : digit;
    }
    bytes.resize(decoded);
    bytes.shrink_to_fit();
    return decoded == length;
}

class PngFinder {
  public:
    explicit PngFinder(BlockCollector& found) : found_(found) {}

    Read<void> run(const Window& file) {
        png::ChunkWalk walk(file);
        while (found_.wants_anything()) {
            const auto chunk = VELL_TRY(walk.next());
            if (!chunk || chunk->type() == "IEND")
                break;
            VELL_TRY(if_sound(note(*chunk)));
        }
        return add_raw_profiles();
    }

  private:
    // A profile of a kind that has a place of its own in other files. The places of PNG itself,
    // wherever they stand, come before these.
    struct RawProfile {
        std::string kind;
        std::string bytes;
    };

    Read<void> note(const png::Chunk& chunk) {
        const std::string_view type = chunk.type();
        if (type == "eXIf" && found_.wants_tags())
            return found_.add_tags(chunk.data);
        if (type == "iCCP" && found_.wants_icc())
            return note_profile(chunk.data);
        if (type == "iTXt" && (found_.wants_xmp() || found_.wants_texts()))
            return note_international_text(chunk.data);
        if (type == "tEXt" || type == "zTXt")
            return note_text(chunk.data, type == "zTXt");
        return {};
    }

    // iCCP (11.3.2.3): a name, the method, the compressed profile.
    Read<void> note_profile(const Window& data) {
        const std::string bytes = VELL_TRY(found_.read(data));
        const auto profile = png::Text::read(bytes);
        if (!profile || profile->text.empty())
            return fault(Damage::CutOff);
        found_.set_icc(VELL_TRY(found_.expand(profile->text.substr(1))));
        return {};
    }

    Read<void> note_international_text(const Window& data) {
        const bool is_packet = VELL_TRY(begins_with(data, xmp::png_keyword));
        if (is_packet ? !found_.wants_xmp() : !found_.wants_texts())
            return {};
        std::string bytes = VELL_TRY(found_.read(data));
        const auto entry = VELL_TRY(png::InternationalText::read(bytes));
        std::string keyword = png::utf8_from_latin_1(std::string(entry.keyword));
        if (entry.is_compressed)
            bytes = VELL_TRY(found_.expand(entry.text));
        else
            bytes.erase(0, bytes.size() - entry.text.size());
        if (is_packet)
            found_.set_xmp(std::move(bytes));
        else
            found_.add_text({std::move(keyword), std::move(bytes)});
        return {};
    }

    // tEXt, or zTXt (11.3.3.3), which has a method before its compressed text. The text takes the
    // place of the chunk: a long one is there once.
    Read<void> note_text(const Window& data, bool is_compressed) {
        const bool is_profile = VELL_TRY(begins_with(data, raw_profile));
        if (is_profile ? !wants_profiles() : !found_.wants_texts())
            return {};
        std::string bytes = VELL_TRY(found_.read(data));
        const auto entry = png::Text::read(bytes);
        if (!entry || (is_compressed && entry->text.empty()))
            return fault(Damage::CutOff);
        std::string keyword(entry->keyword);
        if (is_compressed)
            bytes = VELL_TRY(found_.expand(entry->text.substr(1)));
        else
            bytes.erase(0, bytes.size() - entry->text.size());
        if (!is_profile) {
            found_.add_text({png::utf8_from_latin_1(std::move(keyword)),
                             png::utf8_from_latin_1(std::move(bytes))});
            return {};
        }
        if (!decode_profile(bytes))
            return fault(Damage::Corrupt);
        profiles_.push_back({keyword.substr(raw_profile.size()), std::move(bytes)});
        return {};
    }

    static Read<bool> begins_with(Window data, std::string_view keyword) {
        return VELL_TRY(data.read_bytes(keyword.size())) == keyword;
    }

    bool wants_profiles() const {
        return found_.wants_tags() || found_.wants_xmp() || found_.wants_icc() ||
               found_.wants_resources();
    }

    Read<void> add_raw_profiles() {
        for (RawProfile& profile : profiles_)
            VELL_TRY(if_sound(add_raw_profile(profile)));
        return {};
    }

    Read<void> add_raw_profile(RawProfile& profile) {
        std::string& bytes = profile.bytes;
        const bool is_segment = profile.kind == "APP1";
        if (profile.kind == "iptc" || profile.kind == "8bim")
            return add_resources(profile);
        if (profile.kind == "icc" || profile.kind == "icm") {
            if (found_.wants_icc())
                found_.set_icc(std::move(bytes));
        } else if (profile.kind == "xmp" ||
                   (is_segment && bytes.starts_with(xmp::packet_segment))) {
            if (found_.wants_xmp())
                found_.set_xmp(is_segment ? bytes.substr(xmp::packet_segment.size())
                                          : std::move(bytes));
        } else if ((profile.kind == "exif" || is_segment) && found_.wants_tags()) {
            return found_.add_tags(found_.keep(std::move(bytes)));
        }
        return {};
    }

    // Some writers leave out what stands around the datasets.
    Read<void> add_resources(RawProfile& profile) {
        constexpr char dataset_mark = '\x1C';
        if (profile.bytes.starts_with(dataset_mark)) {
            if (found_.wants_iptc())
                found_.set_iptc(std::move(profile.bytes));
            return {};
        }
        BytesInMemory source(profile.bytes);
        return find_in_resources(Window(source), found_);
    }

    BlockCollector& found_;
    std::vector<RawProfile> profiles_;
};

} // namespace

Read<void> find_in_png(const Window& file, BlockCollector& found) {
    return PngFinder(found).run(file);
}

} // namespace vell::metadata
