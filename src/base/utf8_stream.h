// UTF-8 that comes in pieces.
#pragma once

#include <string>
#include <string_view>

namespace vell {

// What stands for bytes that are not UTF-8.
inline constexpr std::string_view invalid_utf8 = "<INVALID UTF8>";

// Decodes UTF-8 that comes in pieces cut anywhere: the text does not depend on where. Each run of
// bytes that are not UTF-8 becomes one "<INVALID UTF8>".
class Utf8Stream {
  public:
    void append(std::string_view bytes);
    // The whole text. A sequence that the end cuts off is not UTF-8.
    std::u16string& finish();

  private:
    void append_whole(std::string_view bytes);
    void append_checked(std::string_view bytes);
    void append_note();

    std::u16string text_;
    std::string cut_; // the bytes of a sequence that the next piece goes on with; at most 3
    bool after_invalid_ = false;
};

} // namespace vell
