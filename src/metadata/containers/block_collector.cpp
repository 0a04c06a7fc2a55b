#include "src/metadata/containers/block_collector.h"

#include "src/base/inflate.h"
#include "src/formats/jpeg/segments.h"
#include "src/formats/tiff/records.h"

#include <algorithm>
#include <utility>

namespace vell::metadata {
namespace {

using namespace formats;

// Bytes with the source that windows look at them through.
class KeptBytes final : public ByteSource {
  public:
    explicit KeptBytes(std::string bytes) : bytes_(std::move(bytes)), source_(bytes_) {}
    KeptBytes(const KeptBytes&) = delete;
    KeptBytes& operator=(const KeptBytes&) = delete;

    std::uint64_t size() const override { return source_.size(); }
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        return source_.read_at(position, bytes);
    }

  private:
    std::string bytes_;
    BytesInMemory source_;
};

void set_once(std::optional<std::string>& place, std::string value) {
    if (!place && !value.empty())
        place = std::move(value);
}

} // namespace

Read<std::string> BlockCollector::read(Window part) {
    if (part.announced() > room_)
        return fault(Damage::TooLarge);
    part.seek(0);
    return take(VELL_TRY(part.read_rest()));
}

Read<std::string> BlockCollector::take(std::string bytes) {
    if (bytes.size() > room_)
        return fault(Damage::TooLarge);
    room_ -= bytes.size();
    return bytes;
}

Read<std::string> BlockCollector::expand(std::string_view compressed) {
    // What compressed bytes may expand to at most (RFC 1951: 258 bytes for two bits).
    constexpr std::uint64_t highest_ratio = 1032;
    const std::uint64_t limit = std::min(room_, room_for_failures_);
    auto bytes = inflate_within(compressed, static_cast<std::size_t>(limit));
    if (!bytes)
        room_for_failures_ -= std::min(limit, compressed.size() * highest_ratio);
    if (!bytes)
        return fault(bytes.error() == ErrorCode::ResourceTooLarge ? Damage::TooLarge
                                                                  : Damage::Corrupt);
    return take(std::move(bytes).value());
}

Window BlockCollector::keep(std::string bytes) {
    blocks_.kept.push_back(std::make_unique<KeptBytes>(std::move(bytes)));
    return Window(*blocks_.kept.back());
}

Read<void> BlockCollector::add_tags(Window block, TagRoot root) {
    block.seek(0);
    const std::string start =
        VELL_TRY(block.read_bytes(jpeg::exif_identifier.size() + tiff::Header::size));
    const std::uint64_t skipped =
        start.starts_with(jpeg::exif_identifier) ? jpeg::exif_identifier.size() : 0;
    if (!tiff::Header::read(std::string_view(start).substr(skipped)))
        return fault(Damage::Absent);
    blocks_.tags.push_back({block.from(skipped), root});
    return {};
}

Read<void> BlockCollector::add_tags_behind_offset(Window block) {
    block.seek(0);
    const auto offset = VELL_TRY(block.read_integer<std::uint32_t>(ByteOrder::Big));
    return add_tags(block.from(sizeof offset + std::uint64_t{offset}));
}

void BlockCollector::set_iptc(std::string datasets) {
    set_once(blocks_.iptc, std::move(datasets));
}

void BlockCollector::set_xmp(std::string packet) {
    packet.resize(packet.find_last_not_of('\0') + 1);
    set_once(blocks_.xmp, std::move(packet));
}

void BlockCollector::set_icc(std::string profile) {
    set_once(blocks_.icc, std::move(profile));
}

void BlockCollector::set_image_url(std::string url) {
    set_once(blocks_.image_url, std::move(url));
}

} // namespace vell::metadata
