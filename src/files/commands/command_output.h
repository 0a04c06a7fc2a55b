// The text that a command writes, decoded as it comes.
#pragma once

#include "src/params/call.h"

#include <string>
#include <string_view>

namespace vell::files {

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

// Output in any encoding.
class CommandOutput {
  public:
    explicit CommandOutput(params::TextEncoding encoding) : encoding_(encoding) {}

    void append(std::string_view bytes);
    // Makes the text the call's result, with the host's line ends.
    void hand_over(params::Call& call);

  private:
    params::TextEncoding encoding_;
    Utf8Stream utf8_;
    std::string bytes_; // of every other encoding, which the host decodes as a whole
};

} // namespace vell::files
