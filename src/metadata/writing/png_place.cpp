#include "src/metadata/writing/png_place.h"

#include "src/base/ascii.h"
#include "src/base/inflate.h"
#include "src/base/utf8.h"
#include "src/formats/jpeg/segments.h"
#include "src/formats/photoshop.h"
#include "src/formats/png/chunks.h"
#include "src/formats/png/new_chunks.h"
#include "src/formats/recognition.h"
#include "src/formats/xmp.h"
#include "src/metadata/faults.h"
#include "src/metadata/writing/edited_place.h"
#include "src/metadata/writing/xmp_writer.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace vell::metadata {
namespace {

namespace png = formats::png;
using formats::Window;

constexpr std::string_view exif_chunk = "eXIf";
constexpr std::string_view comment_keyword = "Comment";
constexpr std::string_view iptc_profile = "iptc";
constexpr std::string_view resources_profile = "8bim";
constexpr std::size_t longest_keyword = 79;

std::string_view packet_keyword() {
    return formats::xmp::png_keyword.substr(0, formats::xmp::png_keyword.size() - 1);
}

// nullopt for a text with other characters, and with controls but the line feed.
std::optional<std::string> latin1_from_utf8(std::string_view text) {
    std::string bytes;
    for (const char16_t unit : utf16_from_utf8(text)) {
        const bool is_printable = (unit >= 0x20 && unit <= 0x7E) || (unit >= 0xA0 && unit <= 0xFF);
        if (!is_printable && unit != u'\n')
            return std::nullopt;
        bytes += static_cast<char>(unit);
    }
    return bytes;
}

// The lines of text chunks end with a line feed, and a zero byte is not part of a text.
std::string with_line_feeds(std::string_view text) {
    std::string lines;
    for (std::size_t at = 0; at < text.size() && text[at] != '\0'; ++at) {
        if (text[at] == '\r' && text.substr(at + 1).starts_with('\n'))
            continue;
        lines += text[at] == '\r' ? '\n' : text[at];
    }
    return lines;
}

void drop_prefix(std::string& text, std::string_view prefix) {
    if (text.starts_with(prefix))
        text.erase(0, prefix.size());
}

// A chunk that holds a block of the kind that is looked for.
struct FoundChunk {
    std::uint64_t start;
    std::uint64_t end;
    std::string keyword; // of a text chunk
    std::string content; // of the first one of its form
};

struct TextEntry {
    std::string keyword;
    std::string text; // UTF-8
};

// The end of a chunk's data, which gives its own memory for it, or what that end expands to.
std::optional<std::string> text_at_end(std::string& data, std::string_view text,
                                       bool is_compressed) {
    if (is_compressed) {
        auto expanded = inflate_within(text, longest_block);
        return expanded ? std::optional(*std::move(expanded)) : std::nullopt;
    }
    data.erase(0, data.size() - text.size());
    return std::move(data);
}

std::optional<TextEntry> read_international_text(std::string data) {
    const auto chunk = png::InternationalText::read(data);
    if (!chunk)
        return std::nullopt;
    std::string keyword(chunk->keyword);
    auto text = text_at_end(data, chunk->text, chunk->is_compressed);
    if (!text)
        return std::nullopt;
    return TextEntry{std::move(keyword), *std::move(text)};
}

// What a text chunk says; nullopt for one that cannot be read.
std::optional<TextEntry> read_text(std::string_view type, std::string data) {
    if (type == "iTXt")
        return read_international_text(std::move(data));
    const auto chunk = png::Text::read(data);
    if (!chunk)
        return std::nullopt;
    const bool is_compressed = type == "zTXt";
    if (is_compressed && !chunk->text.starts_with('\0'))
        return std::nullopt;
    std::string keyword(chunk->keyword);
    auto text = text_at_end(data, chunk->text.substr(is_compressed ? 1 : 0), is_compressed);
    if (!text)
        return std::nullopt;
    return TextEntry{std::move(keyword), png::utf8_from_latin_1(*std::move(text))};
}

// The block of that kind in a raw profile; nullopt for a profile of another one.
std::optional<std::string> block_of_profile(BlockKind kind, std::string_view name,
                                            std::string_view text) {
    const bool is_resources = name == iptc_profile || name == resources_profile;
    const bool is_segment = name == "APP1" || name == "app1";
    const bool fits = kind == BlockKind::Exif  ? name == "exif" || is_segment
                      : kind == BlockKind::Xmp ? name == "xmp" || is_segment
                                               : is_resources;
    auto profile = fits ? png::read_raw_profile(text) : std::nullopt;
    if (!profile)
        return std::nullopt;
    constexpr std::string_view exif_start = formats::jpeg::exif_identifier;
    const std::string packet_start = std::string(formats::xmp::packet_identifier) + '\0';
    if (kind == BlockKind::Exif || kind == BlockKind::Xmp) {
        const std::string_view identifier = kind == BlockKind::Exif ? exif_start : packet_start;
        if (is_segment && !profile->starts_with(identifier))
            return std::nullopt;
        drop_prefix(*profile, identifier);
        return profile;
    }
    if (!profile->starts_with('\x1C'))
        return profile;
    std::string resources; // the datasets stand there alone
    formats::photoshop::append_resource(resources, formats::photoshop::ResourceId::Iptc, *profile);
    return resources;
}

class PngPlace final : public EditedPlace {
  public:
    PngPlace(const Window& file, BlockKind kind) : EditedPlace(file.size()), kind_(kind) {}

    Result<void> find(const Window& file);

    BlockRules rules() const override { return {.in_resources = true, .is_utf8 = true}; }

  protected:
    Result<void> edit(std::string block) override;

  private:
    Result<void> note(const png::Chunk& chunk);
    Result<void> note_text(const png::Chunk& chunk);
    std::optional<std::string> block_in(TextEntry entry) const;
    bool has_found(bool is_profile) const;
    void choose();
    std::string chunk_of(std::string_view block) const;

    BlockKind kind_;
    std::optional<std::uint64_t> image_start_; // where new chunks are put
    std::vector<FoundChunk> found_;
};

// The file begins with IHDR, or with Apple's CgBI before it.
Result<void> check_start(const Window& file) {
    Window start = file.part(0, png::signature_size);
    const std::string signature = VELL_TRY(coded(start.read_bytes(png::signature_size)));
    png::ChunkWalk walk(file);
    auto chunk = VELL_TRY(coded(walk.next()));
    if (chunk && chunk->type() == "CgBI")
        chunk = VELL_TRY(coded(walk.next()));
    if (formats::format_of(signature) != formats::Format::Png || !chunk || chunk->type() != "IHDR")
        return Failure{ErrorCode::WrongImageKind};
    return {};
}

bool is_text(const png::Chunk& chunk) {
    return chunk.type() == "tEXt" || chunk.type() == "zTXt" || chunk.type() == "iTXt";
}

std::uint64_t start_of(const png::Chunk& chunk) {
    return chunk.data_start - png::ChunkHeader::size;
}

std::uint64_t end_of(const png::Chunk& chunk) {
    return chunk.data_start + chunk.header.length + png::checksum_size;
}

Result<void> PngPlace::find(const Window& file) {
    VELL_TRY(check_start(file));
    png::ChunkWalk walk(file);
    while (const auto chunk = VELL_TRY(coded(walk.next()))) {
        if (end_of(*chunk) > file.size())
            break;
        const std::string_view type = chunk->type();
        // The control of the first frame of an animation belongs to the image data behind it.
        if (!image_start_ && (type == "IDAT" || type == "fcTL" || type == "IEND"))
            image_start_ = start_of(*chunk);
        if (type == "IEND")
            break;
        VELL_TRY(note(*chunk));
    }
    if (!image_start_)
        return Failure{ErrorCode::EndOfFile};
    choose();
    return {};
}

Result<void> PngPlace::note(const png::Chunk& chunk) {
    const bool is_exif = kind_ == BlockKind::Exif && chunk.type() == exif_chunk;
    if (!is_exif)
        return is_text(chunk) ? note_text(chunk) : Result<void>();
    std::string content;
    if (!has_found(false)) {
        if (chunk.header.length > longest_block)
            return Failure{ErrorCode::ResourceTooLarge};
        Window data = chunk.data;
        content = VELL_TRY(coded(data.read_rest()));
        drop_prefix(content, formats::jpeg::exif_identifier);
    }
    found_.push_back({start_of(chunk), end_of(chunk), "", std::move(content)});
    return {};
}

Result<void> PngPlace::note_text(const png::Chunk& chunk) {
    Window data = chunk.data;
    const std::string start = VELL_TRY(coded(data.read_bytes(longest_keyword + 1)));
    const std::string_view keyword = std::string_view(start).substr(0, start.find('\0'));
    const bool is_profile = keyword.starts_with(png::raw_profile_keyword);
    const bool may_hold_it =
        (is_profile && kind_ != BlockKind::Comment) ||
        (kind_ == BlockKind::Comment && equal_ignoring_case(keyword, comment_keyword)) ||
        (kind_ == BlockKind::Xmp && keyword == packet_keyword());
    if (!may_hold_it)
        return {};
    FoundChunk found{start_of(chunk), end_of(chunk), std::string(keyword), ""};
    const bool is_another = has_found(is_profile);
    if (is_another && !is_profile) {
        found_.push_back(std::move(found));
        return {};
    }
    if (chunk.header.length > longest_block)
        return Failure{ErrorCode::ResourceTooLarge};
    data.seek(0);
    auto entry = read_text(chunk.type(), VELL_TRY(coded(data.read_rest())));
    auto block = entry ? block_in(*std::move(entry)) : std::nullopt;
    if (!block && is_profile)
        return {};
    if (!is_another)
        found.content = std::move(block).value_or(std::string());
    found_.push_back(std::move(found));
    return {};
}

std::optional<std::string> PngPlace::block_in(TextEntry entry) const {
    if (!entry.keyword.starts_with(png::raw_profile_keyword))
        return std::move(entry.text);
    return block_of_profile(kind_, entry.keyword.substr(png::raw_profile_keyword.size()),
                            entry.text);
}

// Only the first one of either form is read: no more than two blocks are held.
bool PngPlace::has_found(bool is_profile) const {
    return std::ranges::any_of(found_, [&](const FoundChunk& chunk) {
        return chunk.keyword.starts_with(png::raw_profile_keyword) == is_profile;
    });
}

// The chunk that the readers look at comes first: that of the standard before a profile.
void PngPlace::choose() {
    std::stable_partition(found_.begin(), found_.end(), [](const FoundChunk& chunk) {
        return !chunk.keyword.starts_with(png::raw_profile_keyword);
    });
    // Readers join what several profiles of image resources say; the others stay as they are.
    if (kind_ == BlockKind::Iptc || kind_ == BlockKind::ImageUrl)
        found_.resize(std::min<std::size_t>(found_.size(), 1));
    is_there_ = !found_.empty();
    if (is_there_)
        content_ = std::move(found_.front().content);
}

std::string PngPlace::chunk_of(std::string_view block) const {
    switch (kind_) {
    case BlockKind::Exif:
        return png::new_chunk(exif_chunk, block);
    case BlockKind::Xmp:
        return png::new_international_text_chunk(packet_keyword(), block);
    case BlockKind::Comment:
        if (const auto latin1 = latin1_from_utf8(block))
            return png::new_text_chunk(comment_keyword, *latin1);
        return png::new_international_text_chunk(comment_keyword, block);
    case BlockKind::Iptc:
    case BlockKind::ImageUrl:
        break;
    }
    const std::string keyword = found_.empty()
                                    ? std::string(png::raw_profile_keyword).append(iptc_profile)
                                    : found_.front().keyword;
    const std::string_view name = std::string_view(keyword).substr(png::raw_profile_keyword.size());
    return png::new_text_chunk(keyword, png::raw_profile_text(name, block));
}

Result<void> PngPlace::edit(std::string block) {
    if (kind_ == BlockKind::Comment)
        block = with_line_feeds(block);
    for (const FoundChunk& chunk : found_)
        edits_.drop(chunk.start, chunk.end);
    if (block.empty())
        return {};
    // Tags behind the image data are not found by all readers.
    const bool stays = is_there_ && (kind_ != BlockKind::Exif || found_[0].start < *image_start_);
    const std::uint64_t start = stays ? found_[0].start : *image_start_;
    edits_.put(start, start, chunk_of(block));
    return {};
}

} // namespace

Result<std::unique_ptr<BlockPlace>> find_png_place(files::BufferedReader& file,
                                                   const WantedBlock& wanted) {
    if (wanted.kind == BlockKind::Xmp && !split_xmp_text(wanted.text).is_packet_segment())
        return Failure{ErrorCode::NotSupported};
    const Window window(file);
    auto place = std::make_unique<PngPlace>(window, wanted.kind);
    VELL_TRY(place->find(window));
    return std::unique_ptr<BlockPlace>(std::move(place));
}

} // namespace vell::metadata
