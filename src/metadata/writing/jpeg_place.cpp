#include "src/metadata/writing/jpeg_place.h"

#include "src/formats/xmp.h"
#include "src/metadata/writing/jpeg_rewriter.h"
#include "src/metadata/writing/xmp_writer.h"

#include <optional>
#include <utility>

namespace vell::metadata {
namespace {

namespace jpeg = formats::jpeg;

constexpr std::size_t longest_comment = 2000;

SegmentKind segment_of(const WantedBlock& wanted) {
    switch (wanted.kind) {
    case BlockKind::Exif:
        return {jpeg::SegmentMarker::App1, std::string(jpeg::exif_identifier), true};
    case BlockKind::Xmp:
        if (is_blank_xmp(wanted.text)) // extended XMP that would be left belongs to no packet
            return {jpeg::SegmentMarker::App1, std::string(formats::xmp::identifier_start), false};
        return {jpeg::SegmentMarker::App1,
                std::string(split_xmp_text(wanted.text).identifier) + '\0', true};
    case BlockKind::Comment:
        return {jpeg::SegmentMarker::Com, "", false};
    case BlockKind::Iptc:
    case BlockKind::ImageUrl:
        break;
    }
    return {jpeg::SegmentMarker::App13, std::string(jpeg::photoshop_identifier), true};
}

class JpegPlace final : public BlockPlace {
  public:
    JpegPlace(SegmentKind kind, SegmentPlace place)
        : rewrite_{std::move(kind), std::move(place), std::nullopt} {}

    BlockRules rules() const override {
        return {.most_bytes = jpeg::longest_payload - rewrite_.kind.identifier.size(),
                .in_resources = true,
                .most_of_comment = longest_comment};
    }
    std::string_view content() const override { return rewrite_.place.content; }
    bool is_there() const override { return rewrite_.place.is_there(); }

    Result<void> put(std::string block) override {
        auto segment = block.empty() ? std::nullopt : std::optional(std::move(block));
        rewrite_ = VELL_TRY(
            plan_rewrite(std::move(rewrite_.kind), std::move(rewrite_.place), std::move(segment)));
        return {};
    }
    Result<void> copy(files::File& from, files::File& to) const override {
        return copy_with_segment(from, to, rewrite_);
    }

  private:
    SegmentRewrite rewrite_;
};

} // namespace

Result<std::unique_ptr<BlockPlace>> find_jpeg_place(files::BufferedReader& file,
                                                    const WantedBlock& wanted) {
    SegmentKind kind = segment_of(wanted);
    if (kind.identifier.size() > jpeg::longest_payload)
        return Failure{ErrorCode::ResourceTooLarge};
    SegmentPlace place = VELL_TRY(find_segment_place(file, kind));
    return std::unique_ptr<BlockPlace>(
        std::make_unique<JpegPlace>(std::move(kind), std::move(place)));
}

} // namespace vell::metadata
