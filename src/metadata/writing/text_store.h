// The encoding of texts that go into metadata.
#pragma once

#include "src/base/result.h"
#include "src/params/call.h"

#include <optional>
#include <string>
#include <string_view>

namespace vell::metadata {

using params::TextEncoding;

class TextStore {
  public:
    // Without a chosen encoding a text is stored natively, and as UTF-8 where the native encoding
    // lacks a character of it.
    TextStore(params::Call& call, std::optional<TextEncoding> chosen)
        : call_(call), chosen_(chosen) {}

    std::optional<TextEncoding> chosen() const { return chosen_; }
    // The encoding to read in what is stored already.
    TextEncoding reading() const { return chosen_.value_or(TextEncoding::Native); }

    // Texts are given as UTF-8. ParameterUnreadable for characters that a chosen Mac Roman lacks;
    // other encodings get what the host puts in their place.
    Result<std::string> store(std::string_view text) const;
    Result<std::string> store_as(TextEncoding encoding, std::string_view text) const;
    // nullopt when the native encoding lacks one of the characters.
    std::optional<std::string> native(std::string_view text) const;
    // Whether those bytes read as the text, in the chosen encoding, or natively or as UTF-8 without
    // one. What is not UTF-8 reads as replacement characters, from which nobody can tell the bytes
    // that they stand for.
    Result<bool> reads_as(std::string_view bytes, std::string_view text) const;
    // At most that many bytes of the text, without a part of a character at their end.
    Result<std::string> store_beginning(std::string_view text, std::size_t most_bytes) const;

  private:
    params::Call& call_;
    std::optional<TextEncoding> chosen_;
};

} // namespace vell::metadata
