#include "src/metadata/png_chunks.h"

#include "src/metadata/inflate.h"
#include "src/metadata/read_whole.h"
#include "src/metadata/tag_reader.h"
#include "src/metadata/xmp.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace vell::metadata {
namespace {

using files::BufferedReader;

constexpr std::string_view signature = "\x89PNG\r\n\x1A\n";
constexpr std::size_t type_size = 4;
constexpr std::size_t checksum_size = 4;

struct ChunkHeader {
    static constexpr std::size_t size = 8;

    std::uint32_t length;
    std::string_view type; // within the bytes given to read

    static std::optional<ChunkHeader> read(std::string_view bytes, std::uint64_t at) {
        if (at > bytes.size() || bytes.size() - at < size)
            return std::nullopt;
        const auto offset = static_cast<std::size_t>(at);
        return ChunkHeader{*load<std::uint32_t>(bytes, offset, ByteOrder::Big),
                           bytes.substr(offset + 4, type_size)};
    }
    std::uint64_t whole_size() const { return std::uint64_t{size} + length + checksum_size; }
};

// Where the walk begins: behind the first chunk.
Result<std::uint64_t> behind_first_chunk(BufferedReader& file) {
    constexpr std::size_t first_read = 1024;
    constexpr std::size_t least_bytes = 30;
    file.seek(0);
    const std::string start = VELL_TRY(file.read_bytes(first_read));
    if (start.size() < least_bytes || !has_png_signature(start))
        return Failure{ErrorCode::WrongImageKind};
    const auto first = ChunkHeader::read(start, signature.size());
    const std::uint64_t end = signature.size() + first->whole_size();
    if (first->type == "CgBI") {
        const auto second = ChunkHeader::read(start, end);
        if (!second || second->type != "IHDR")
            return Failure{ErrorCode::WrongImageKind};
    } else if (first->type != "IHDR") {
        return Failure{ErrorCode::WrongImageKind};
    }
    return end;
}

// The text of an international text chunk whose keyword has been taken off.
Result<std::string> international_text(std::string_view chunk) {
    constexpr std::size_t largest_packet = 16 << 20;
    constexpr char deflate = 0;
    if (chunk.size() < 2)
        return Failure{ErrorCode::ShortRead};
    const bool compressed = chunk[0] != 0;
    const char method = chunk[1];
    chunk.remove_prefix(2);
    for (int field = 0; field < 2; ++field) { // language tag, translated keyword
        const std::size_t zero = chunk.find('\0');
        if (zero == std::string_view::npos)
            return Failure{ErrorCode::ShortRead};
        chunk.remove_prefix(zero + 1);
    }
    if (!compressed)
        return std::string(chunk);
    if (method != deflate)
        return Failure{ErrorCode::CompressedDataDamaged};
    return inflate_within(chunk, largest_packet);
}

} // namespace

bool has_png_signature(std::string_view first_bytes) {
    return first_bytes.starts_with(signature);
}

Result<void> walk_png_chunks(BufferedReader& file, std::string_view type,
                             const ChunkHandler& handler) {
    std::uint64_t at = VELL_TRY(behind_first_chunk(file));
    for (;;) {
        file.seek(at);
        char bytes[ChunkHeader::size];
        const std::size_t count = VELL_TRY(file.read(bytes));
        const auto chunk = ChunkHeader::read(std::string_view(bytes, count), 0);
        if (!chunk)
            return {};
        if (chunk->type == type)
            VELL_TRY(handler(chunk->length));
        at += chunk->whole_size();
    }
}

Result<void> read_png_exif(BufferedReader& file, const MetadataRequest& request,
                           MetadataText& text) {
    const std::uint64_t before = text.size();
    bool taken = false;
    const auto read_block = [&](std::uint32_t length) -> Result<void> {
        if (std::exchange(taken, true))
            return {}; // a file has one such chunk; more would multiply what it holds
        const std::string block = VELL_TRY(read_whole(file, length));
        return read_tags(block, request.exif, request.source, text);
    };
    VELL_TRY(walk_png_chunks(file, "eXIf", read_block));
    if (text.size() == before)
        return Failure{ErrorCode::NothingFound};
    return {};
}

Result<void> read_png_text(BufferedReader& file, MetadataText& text) {
    return walk_png_chunks(file, "tEXt", [&](std::uint32_t length) -> Result<void> {
        if (length == 0)
            return Failure{ErrorCode::BadArgument};
        const std::string bytes = VELL_TRY(read_whole(file, length));
        const std::string_view chunk = bytes;
        const std::size_t zero = chunk.find('\0');
        if (zero == std::string_view::npos || zero + 1 == chunk.size())
            return {};
        text.append(chunk.substr(0, zero), TextEncoding::Iso8859_1);
        text.append(": ");
        text.append(chunk.substr(zero + 1), TextEncoding::Iso8859_1);
        text.append("\r");
        return {};
    });
}

Result<void> read_png_xmp(BufferedReader& file, TextEncoding source, MetadataText& text) {
    constexpr std::string_view keyword{"XML:com.adobe.xmp\0", 18};
    bool found = false;
    const auto read_packet = [&](std::uint32_t length) -> Result<void> {
        if (found || length < keyword.size() ||
            VELL_TRY(file.read_bytes(keyword.size())) != keyword)
            return {};
        // Not moved out of its result: GCC 12 takes a short string's bytes for uninitialised then.
        const Result<std::string> chunk = read_whole(file, length - keyword.size());
        if (!chunk)
            return Failure{chunk.error()};
        append_xmp_packet(VELL_TRY(international_text(*chunk)), source, text);
        found = true;
        return {};
    };
    VELL_TRY(walk_png_chunks(file, "iTXt", read_packet));
    if (!found)
        return Failure{ErrorCode::NothingFound};
    return {};
}

} // namespace vell::metadata
