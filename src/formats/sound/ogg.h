// The packets of Ogg files (RFC 3533), and the comments in them (Vorbis I, section 5; RFC 7845,
// section 5.2).
#pragma once

#include "src/formats/window.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vell::formats::ogg {

// Goes over the packets of the first stream, passing over the pages of others.
class PacketWalk {
  public:
    explicit PacketWalk(const Window& file) : file_(file) { file_.seek(0); }

    // nullopt where no page follows. TooLarge for a packet of more than `limit` bytes.
    Read<std::optional<std::string>> next(std::uint64_t limit);

  private:
    Read<bool> next_page();

    Window file_;
    std::optional<std::uint32_t> stream_;
    std::string lengths_; // of the page's segments
    std::size_t segment_ = 0;
};

// What is done with each comment, "NAME=text"; a fault ends the walk.
using CommentVisitor = std::function<Read<void>(std::string_view comment)>;

// Those in the bytes that a comment header has behind its name. CutOff where they end before.
Read<void> each_comment(std::string_view bytes, const CommentVisitor& visitor);

} // namespace vell::formats::ogg
