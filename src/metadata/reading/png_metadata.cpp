#include "src/metadata/reading/png_metadata.h"

#include "src/base/inflate.h"
#include "src/formats/png/chunks.h"
#include "src/formats/recognition.h"
#include "src/formats/xmp.h"
#include "src/metadata/faults.h"
#include "src/metadata/reading/tag_reader.h"
#include "src/metadata/reading/xmp.h"

#include <optional>
#include <string>
#include <string_view>

namespace vell::metadata {
namespace {

using files::BufferedReader;

using formats::Window;
namespace png = formats::png;

// The walk behind the first chunk, which is the header or, in a file with Apple's extension, stands
// before it.
Result<png::ChunkWalk> chunks_of(const Window& file) {
    constexpr std::size_t first_read = 1024;
    constexpr std::size_t least_bytes = 30;
    constexpr Failure not_png{ErrorCode::WrongImageKind};
    Window start = file.part(0, first_read);
    const std::string bytes = VELL_TRY(coded(start.read_bytes(first_read)));
    if (bytes.size() < least_bytes || formats::format_of(bytes) != formats::Format::Png)
        return not_png;
    png::ChunkWalk walk(file);
    const auto first = VELL_TRY(coded(walk.next()));
    if (first->type() == "IHDR")
        return walk;
    png::ChunkWalk first_chunks(start);
    VELL_TRY(coded(first_chunks.next()));
    const auto second = VELL_TRY(coded(first_chunks.next()));
    if (first->type() != "CgBI" || !second || second->type() != "IHDR")
        return not_png;
    return walk;
}

// The next chunk of that type; nullopt at the end of the file.
Result<std::optional<png::Chunk>> next_chunk(png::ChunkWalk& walk, std::string_view type) {
    for (;;) {
        const auto chunk = VELL_TRY(coded(walk.next()));
        if (!chunk || chunk->type() == type)
            return chunk;
    }
}

Result<std::string> expanded_text(const png::InternationalText& chunk) {
    constexpr std::size_t largest_packet = 16 << 20;
    constexpr std::uint8_t deflate = 0;
    if (chunk.method != deflate)
        return Failure{ErrorCode::CompressedDataDamaged};
    return inflate_within(chunk.text, largest_packet);
}

// What is to be there as a whole, although it is not read at once.
Result<void> check_block(const Window& block) {
    if (!block.is_whole())
        return Failure{ErrorCode::ShortRead};
    if (block.size() > formats::longest_block)
        return Failure{ErrorCode::ResourceTooLarge};
    return {};
}

} // namespace

Result<void> read_png_exif(BufferedReader& file, const MetadataRequest& request,
                           MetadataText& text) {
    const std::uint64_t before = text.size();
    png::ChunkWalk walk = VELL_TRY(chunks_of(Window(file)));
    // A file has one such chunk; more would multiply what it holds.
    if (auto chunk = VELL_TRY(next_chunk(walk, "eXIf"))) {
        VELL_TRY(check_block(chunk->data));
        VELL_TRY(read_tags(chunk->data, TagRoot::Image, request.exif, request.source, text));
    }
    if (text.size() == before)
        return Failure{ErrorCode::NothingFound};
    return {};
}

Result<void> read_png_text(BufferedReader& file, MetadataText& text) {
    png::ChunkWalk walk = VELL_TRY(chunks_of(Window(file)));
    while (auto chunk = VELL_TRY(next_chunk(walk, "tEXt"))) {
        if (chunk->header.length == 0)
            return Failure{ErrorCode::BadArgument};
        if (text.size() + chunk->data.size() > formats::longest_block)
            return Failure{ErrorCode::ResourceTooLarge};
        std::string data = VELL_TRY(coded(chunk->data.read_rest(), ErrorCode::ShortRead));
        const auto entry = png::Text::read(data);
        if (!entry || entry->text.empty())
            continue;
        text.append(entry->keyword, TextEncoding::Iso8859_1);
        text.append(": ");
        data.erase(0, entry->keyword.size() + 1);
        text.take(std::move(data), TextEncoding::Iso8859_1);
        text.append("\r");
    }
    return {};
}

Result<void> read_png_xmp(BufferedReader& file, TextEncoding source, MetadataText& text) {
    constexpr std::string_view keyword = formats::xmp::png_keyword;
    png::ChunkWalk walk = VELL_TRY(chunks_of(Window(file)));
    while (auto chunk = VELL_TRY(next_chunk(walk, "iTXt"))) {
        if (VELL_TRY(coded(chunk->data.read_bytes(keyword.size()))) != keyword)
            continue;
        chunk->data.seek(0);
        std::string data = VELL_TRY(coded(chunk->data.read_rest(), ErrorCode::ShortRead));
        const auto packet =
            VELL_TRY(coded(png::InternationalText::read(data), ErrorCode::ShortRead));
        if (packet.is_compressed)
            data = VELL_TRY(expanded_text(packet));
        else
            data.erase(0, data.size() - packet.text.size());
        append_xmp_packet(data, source, text);
        return {};
    }
    return Failure{ErrorCode::NothingFound};
}

} // namespace vell::metadata
