#include "src/formats/camera/mrw.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <tuple>

namespace vell::formats::mrw {
namespace {

using namespace std::string_view_literals;

// The file itself has one too, around all blocks.
struct BlockHeader {
    static constexpr std::size_t size = 8;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::array<char, 4> name{};
    std::uint32_t length = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &BlockHeader::name}, Field{4, &BlockHeader::length}};
    }
    std::string_view text() const { return {name.data(), name.size()}; }
};

} // namespace

Read<Window> find_tags(Window file) {
    file.seek(0);
    const auto around = VELL_TRY(file.read_record<BlockHeader>());
    if (around.text() != "\0MRM"sv)
        return fault(Damage::Absent);
    Window blocks = file.part(BlockHeader::size, around.length);
    for (int most_blocks = 64; most_blocks > 0; --most_blocks) {
        const auto block = VELL_TRY(blocks.read_record<BlockHeader>());
        if (block.text() == "\0TTW"sv)
            return blocks.part(blocks.position(), block.length);
        blocks.skip(block.length);
    }
    return fault(Damage::Absent);
}

} // namespace vell::formats::mrw
