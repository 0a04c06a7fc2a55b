#include "src/base/utf8_stream.h"

#include "src/base/utf8.h"
#include "src/base/utf8_sequence.h"

namespace vell {

void Utf8Stream::append_whole(std::string_view bytes) {
    if (bytes.empty())
        return;
    const std::size_t start = text_.size();
    const std::size_t units = utf16_size(bytes);
    text_.resize(start + units);
    decode_utf8(bytes, text_.data() + start);
    after_invalid_ = false;
}

void Utf8Stream::append_note() {
    if (!after_invalid_)
        text_.append(invalid_utf8.begin(), invalid_utf8.end());
    after_invalid_ = true;
}

void Utf8Stream::append_checked(std::string_view bytes) {
    if (is_valid_utf8(bytes))
        return append_whole(bytes);
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    std::size_t valid_from = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        const Utf8Sequence sequence = read_utf8(data + at, data + bytes.size());
        if (!sequence.valid) {
            append_whole(bytes.substr(valid_from, at - valid_from));
            append_note();
            valid_from = at + sequence.length;
        }
        at += sequence.length;
    }
    append_whole(bytes.substr(valid_from));
}

void Utf8Stream::append(std::string_view bytes) {
    std::string joined;
    if (!cut_.empty()) {
        joined = std::move(cut_).append(bytes);
        bytes = joined;
    }
    const std::size_t cut = cut_sequence_at_end(bytes);
    append_checked(bytes.substr(0, bytes.size() - cut));
    cut_ = bytes.substr(bytes.size() - cut);
}

std::u16string& Utf8Stream::finish() {
    append_checked(cut_);
    cut_.clear();
    return text_;
}

} // namespace vell
