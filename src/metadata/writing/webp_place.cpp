#include "src/metadata/writing/webp_place.h"

#include "src/formats/jpeg/segments.h"
#include "src/formats/riff.h"
#include "src/formats/webp.h"
#include "src/metadata/faults.h"
#include "src/metadata/writing/edited_place.h"
#include "src/metadata/writing/xmp_writer.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

namespace vell::metadata {
namespace {

namespace riff = formats::riff;
namespace webp = formats::webp;
namespace chunk_type = webp::chunk_type;
using formats::Window;
using webp::Feature;

// What stands before the metadata.
constexpr std::string_view image_chunks[] = {
    chunk_type::extended, chunk_type::profile, "ANIM", chunk_type::frame, "ALPH", "VP8 ", "VP8L"};
constexpr std::uint64_t chunks_start = riff::ChunkHeader::size + riff::form_size;

std::string new_chunk(std::string_view id, std::string_view data) {
    std::string bytes;
    bytes.reserve(id.size() + sizeof(std::uint32_t) + data.size() + 1);
    bytes += id;
    append_integer<std::uint32_t>(bytes, static_cast<std::uint32_t>(data.size()),
                                  ByteOrder::Little);
    bytes += data;
    bytes.append(data.size() % 2, '\0');
    return bytes;
}

class WebpPlace final : public EditedPlace {
  public:
    WebpPlace(const Window& file, BlockKind kind)
        : EditedPlace(file.size()), is_exif_(kind == BlockKind::Exif) {}

    Result<void> find(const Window& file, std::uint32_t riff_size);

    BlockRules rules() const override { return {}; }

  protected:
    Result<void> edit(std::string block) override;

  private:
    struct Range {
        std::uint64_t start;
        std::uint64_t end;
    };

    Result<void> note(const riff::Chunk& chunk, Range place);
    Result<void> note_block(const riff::Chunk& chunk, Range place);
    Result<void> note_image(const riff::Chunk& chunk);
    Result<void> edit_features(bool is_there);
    void edit_chunks(std::string_view block);

    bool is_exif_;
    std::uint32_t riff_size_ = 0;
    std::uint64_t riff_end_ = 0;
    std::uint64_t images_end_ = chunks_start;
    std::uint64_t tags_end_ = 0; // behind the last EXIF chunk
    std::vector<Range> found_;
    std::optional<std::uint64_t> extended_; // where the data of VP8X stand
    std::uint8_t features_ = 0;             // that VP8X says, or that other chunks show
    std::optional<webp::Canvas> canvas_;
};

Result<void> WebpPlace::find(const Window& file, std::uint32_t riff_size) {
    riff_size_ = riff_size;
    riff_end_ = riff::ChunkHeader::size + std::uint64_t{riff_size};
    if (riff_end_ > file.size())
        return Failure{ErrorCode::EndOfFile};
    const Window chunks = file.part(chunks_start, riff_end_ - chunks_start);
    riff::ChunkWalk walk(chunks);
    while (const auto chunk = VELL_TRY(coded(walk.next()))) {
        if (!chunk->data.is_whole())
            return Failure{ErrorCode::EndOfFile};
        const std::uint64_t data_end =
            chunk->start + riff::ChunkHeader::size + chunk->header.data_size;
        const std::uint64_t end = data_end + chunk->header.data_size % 2;
        VELL_TRY(note(*chunk, {chunk->start, std::min(end, riff_end_)}));
    }
    if (!extended_ && !canvas_)
        return Failure{ErrorCode::CorruptStructure};
    return {};
}

Result<void> WebpPlace::note(const riff::Chunk& chunk, Range place) {
    const std::string_view type = chunk.type();
    if (std::ranges::count(image_chunks, type) > 0) {
        images_end_ = place.end;
        return note_image(chunk);
    }
    if (type == chunk_type::exif)
        tags_end_ = place.end;
    if (!extended_ && type == chunk_type::exif)
        features_ |= bit(Feature::Exif);
    else if (!extended_ && type == chunk_type::xmp)
        features_ |= bit(Feature::Xmp);
    if (type == (is_exif_ ? chunk_type::exif : chunk_type::xmp))
        return note_block(chunk, place);
    return {};
}

Result<void> WebpPlace::note_block(const riff::Chunk& chunk, Range place) {
    if (!is_there_) {
        if (chunk.header.data_size > longest_block)
            return Failure{ErrorCode::ResourceTooLarge};
        Window data = chunk.data;
        content_ = VELL_TRY(coded(data.read_rest()));
        // Some programs put the identifier of JPEG files before the tags.
        if (is_exif_ && content_.starts_with(formats::jpeg::exif_identifier))
            content_.erase(0, formats::jpeg::exif_identifier.size());
    }
    is_there_ = true;
    found_.push_back(place);
    return {};
}

Result<void> WebpPlace::note_image(const riff::Chunk& chunk) {
    const std::string_view type = chunk.type();
    Window data = chunk.data;
    const std::string start = VELL_TRY(coded(data.read_bytes(webp::extended_header_size)));
    if (type == chunk_type::extended) {
        if (start.size() < webp::extended_header_size)
            return Failure{ErrorCode::CorruptStructure};
        extended_ = chunk.start + riff::ChunkHeader::size;
        features_ = static_cast<std::uint8_t>(start[0]);
    } else if (!extended_) {
        if (type == chunk_type::profile)
            features_ |= bit(Feature::Profile);
        else if (type == "ALPH")
            features_ |= bit(Feature::Alpha);
        if (auto canvas = webp::frame_canvas(chunk); canvas && !canvas_)
            canvas_ = *canvas;
    }
    return {};
}

// VP8X says which of the two there are, and is put first where a file has none.
Result<void> WebpPlace::edit_features(bool is_there) {
    const std::uint8_t own = bit(is_exif_ ? Feature::Exif : Feature::Xmp);
    auto features = static_cast<std::uint8_t>(is_there ? features_ | own : features_ & ~own);
    if (extended_) {
        if (features != features_)
            edits_.put(*extended_, *extended_ + 1, std::string(1, static_cast<char>(features)));
    } else if (is_there) {
        if (canvas_->has_alpha)
            features |= bit(Feature::Alpha);
        edits_.put(chunks_start, chunks_start,
                   new_chunk(chunk_type::extended, webp::extended_header(*canvas_, features)));
    }
    return {};
}

void WebpPlace::edit_chunks(std::string_view block) {
    for (const Range& place : found_)
        edits_.drop(place.start, place.end);
    if (block.empty())
        return;
    const std::uint64_t place = is_exif_ ? images_end_ : std::max(images_end_, tags_end_);
    // The last chunk of a file may lack the byte that pads it.
    if (place % 2 != 0)
        edits_.put(place, place, std::string(1, '\0'));
    edits_.put(place, place, new_chunk(is_exif_ ? chunk_type::exif : chunk_type::xmp, block));
}

Result<void> WebpPlace::edit(std::string block) {
    if (block.empty() && !is_there_)
        return {};
    VELL_TRY(edit_features(!block.empty()));
    edit_chunks(block);
    const std::int64_t size = std::int64_t{riff_size_} + edits_.growth();
    constexpr std::int64_t most = std::numeric_limits<std::uint32_t>::max() - 1;
    if (size > most)
        return Failure{ErrorCode::ResourceTooLarge};
    std::string bytes;
    append_integer<std::uint32_t>(bytes, static_cast<std::uint32_t>(size), ByteOrder::Little);
    constexpr std::uint64_t size_start = 4;
    edits_.put(size_start, riff::ChunkHeader::size, std::move(bytes));
    return {};
}

} // namespace

Result<std::unique_ptr<BlockPlace>> find_webp_place(files::BufferedReader& file,
                                                    const WantedBlock& wanted) {
    const Window window(file);
    Window start = window;
    const auto header = VELL_TRY(coded(start.read_record<riff::ChunkHeader>()));
    if (VELL_TRY(coded(start.read_bytes(riff::form_size))) != webp::form ||
        header.data_size < riff::form_size)
        return Failure{ErrorCode::NotAJpeg};
    const bool is_packet =
        wanted.kind == BlockKind::Xmp && split_xmp_text(wanted.text).is_packet_segment();
    if (wanted.kind != BlockKind::Exif && !is_packet)
        return Failure{ErrorCode::NotSupported};
    auto place = std::make_unique<WebpPlace>(window, wanted.kind);
    VELL_TRY(place->find(window, header.data_size));
    return std::unique_ptr<BlockPlace>(std::move(place));
}

} // namespace vell::metadata
