// The text that a command writes, decoded as it comes.
#pragma once

#include "src/base/utf8_stream.h"
#include "src/params/call.h"

#include <string>
#include <string_view>

namespace vell::files {

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
