#include "src/formats/gif.h"
#include "src/metadata/containers/block_collector.h"

#include <string>
#include <string_view>

namespace vell::metadata {
namespace {

using namespace formats;
using namespace std::string_view_literals;

constexpr std::uint8_t comment_label = 0xFE;     // GIF89a, 24
constexpr std::uint8_t application_label = 0xFF; // 26

// The identifier of an application and its code.
constexpr std::string_view xmp_application = "XMP DataXMP";
constexpr std::string_view icc_application = "ICCRGBG1012";

// Behind a packet, which is no chain of sub-blocks itself: bytes that lead any reader of these to
// its end (XMP part 3, 1.1.2).
constexpr std::uint64_t trailer_size = 258;
constexpr std::string_view trailer_start = "\x01\xFF\xFE"sv;

class GifFinder {
  public:
    GifFinder(const Window& file, BlockCollector& found) : file_(file), found_(found) {}

    Read<void> run() {
        file_.seek(gif::LogicalScreen::start);
        gif::BlockWalk walk(file_, VELL_TRY(file_.read_record<gif::LogicalScreen>()));
        while (found_.wants_anything()) {
            const gif::Introducer introducer = VELL_TRY(walk.next());
            if (introducer == gif::Introducer::Trailer)
                return {};
            const std::uint64_t start = walk.position();
            VELL_TRY(walk.pass_data());
            if (introducer == gif::Introducer::Extension)
                VELL_TRY(if_sound(note(walk.label(), file_.part(start, walk.position() - start))));
        }
        return {};
    }

  private:
    Read<void> note(std::uint8_t label, Window data) {
        if (label == comment_label && found_.wants_comments())
            found_.add_comment(VELL_TRY(read_sub_blocks(data)));
        if (label != application_label || !(found_.wants_xmp() || found_.wants_icc()))
            return {};
        const auto size = VELL_TRY(data.read_integer<std::uint8_t>(ByteOrder::Little));
        const std::string application = VELL_TRY(data.read_bytes(size));
        if (application == xmp_application && found_.wants_xmp())
            return add_packet(data);
        if (application == icc_application && found_.wants_icc())
            found_.set_icc(VELL_TRY(read_sub_blocks(data)));
        return {};
    }

    // From the position on. The chain ends within the data, which have some room at hand.
    Read<std::string> read_sub_blocks(Window data) {
        if (data.remaining() > found_.room())
            return fault(Damage::TooLarge);
        std::string bytes;
        bytes.reserve(static_cast<std::size_t>(data.remaining()));
        while (const auto size = VELL_TRY(data.read_integer<std::uint8_t>(ByteOrder::Little)))
            bytes += VELL_TRY(data.read_bytes(size));
        return found_.take(std::move(bytes));
    }

    Read<void> add_packet(const Window& data) {
        if (data.remaining() < trailer_size)
            return fault(Damage::CutOff);
        const std::uint64_t length = data.remaining() - trailer_size;
        Window trailer = data.part(data.position() + length, trailer_size);
        if (VELL_TRY(trailer.read_bytes(trailer_start.size())) != trailer_start)
            return fault(Damage::Corrupt);
        found_.set_xmp(VELL_TRY(found_.read(data.part(data.position(), length))));
        return {};
    }

    Window file_;
    BlockCollector& found_;
};

} // namespace

Read<void> find_in_gif(const Window& file, BlockCollector& found) {
    return GifFinder(file, found).run();
}

} // namespace vell::metadata
