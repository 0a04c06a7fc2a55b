// Blocks of metadata in whatever container: they lie within the file or are kept in memory, within
// their limit, and finding them fails on no input.
#include "fuzz/input.h"
#include "src/metadata/containers/metadata_blocks.h"

#include <optional>
#include <string>

namespace vell::containers_fuzz {
namespace {

std::uint64_t size_of(const std::optional<std::string>& block) {
    return block ? block->size() : 0;
}

// A little of it, and its end.
void read(formats::Window place, std::size_t size_of_file) {
    FUZZ_CHECK(place.size() <= metadata::longest_blocks || place.size() <= size_of_file);
    const auto start = place.read_bytes(64);
    FUZZ_CHECK(start && start->size() == (place.size() < 64 ? place.size() : 64));
    place.seek(place.size() - (place.size() > 0 ? 1 : 0));
    const auto end = place.read_bytes(2);
    FUZZ_CHECK(end && end->size() <= 1);
}

} // namespace

FUZZ_TARGET(containers) {
    BytesInMemory source(fuzz::as_text(data, size));
    const auto blocks =
        metadata::find_blocks(formats::Window(source), {true, true, true, true, true, true, true});
    FUZZ_CHECK(blocks); // memory does not fail
    for (const metadata::TagBlock& block : blocks->tags)
        read(block.place, size);
    std::uint64_t held = size_of(blocks->iptc) + size_of(blocks->xmp) + size_of(blocks->icc) +
                         size_of(blocks->image_url);
    for (const std::string& comment : blocks->comments)
        held += comment.size();
    for (const metadata::TextEntry& entry : blocks->texts)
        held += entry.text.size();
    FUZZ_CHECK(held <= 2 * metadata::longest_blocks); // texts grow when they become UTF-8
    const auto none = metadata::find_blocks(formats::Window(source), {});
    FUZZ_CHECK(none && none->tags.empty() && !none->xmp && none->texts.empty());
    return 0;
}

} // namespace vell::containers_fuzz
