// The texts in the tags of an ICC profile (ICC.1:2010, profile version 4; ICC.1:2001, version 2).
#pragma once

#include "src/base/result.h"
#include "src/formats/icc/tag_types.h"
#include "src/params/encodings.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace vell::metadata::icc {

using namespace formats::icc;

// As text without trailing blanks: "(none)" for 0, as hexadecimal digits where a character is not
// to be printed.
std::string signature_text(std::uint32_t signature);
std::string date_text(const DateTime& date);

// How many bytes of tags may still be shown: tags and their texts may share their bytes, and a
// description must not grow with the square of the profile's size.
class Allowance {
  public:
    explicit Allowance(std::size_t profile_size) : left_(4 * profile_size + 4096) {}
    // What is refused once stays refused.
    bool take(std::size_t bytes) {
        const bool enough = bytes < left_;
        left_ = enough ? left_ - bytes : 0;
        return enough;
    }
    bool is_used_up() const { return left_ == 0; }

  private:
    std::size_t left_;
};

struct LocalizedText {
    std::string language; // such as "en-US"; what the text is of, or empty, in version 2
    std::string bytes;    // without the zero at their end
    params::TextEncoding encoding;
};

// Gets one text after the other; `false` ends the giving.
using TextSink = std::function<bool(const LocalizedText&)>;

// The texts of a tag of type 'text', 'desc' or 'mluc' that are not empty; `source` is the encoding
// of what should be ASCII and is not. CorruptStructure for other types, and when the tag's bytes
// end too early; what stands before that is given.
Result<void> give_texts(std::string_view data, params::TextEncoding source, Allowance& allowance,
                        const TextSink& sink);

} // namespace vell::metadata::icc
