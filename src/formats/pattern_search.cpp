#include "src/formats/pattern_search.h"

#include <algorithm>
#include <bit>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vell::formats {
namespace {

constexpr std::uint64_t most_held = 1 << 16;
static_assert(most_held >= 4 * PatternSearch::longest_look); // little is moved at each turn

#ifdef __SSE2__
__m128i load16(const char* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}
#endif

// Where the pattern first occurs. Sixteen places are looked at together, by the pattern's first and
// last byte; a search for the first byte alone is slow where that byte abounds.
std::size_t find_pattern(std::string_view block, std::string_view pattern) {
    std::size_t at = 0;
#ifdef __SSE2__
    constexpr std::size_t width = 16;
    const std::size_t last_offset = pattern.size() - 1;
    const __m128i first = _mm_set1_epi8(pattern.front());
    const __m128i last = _mm_set1_epi8(pattern.back());
    for (; at + last_offset + width <= block.size(); at += width) {
        const __m128i begins = _mm_cmpeq_epi8(load16(block.data() + at), first);
        const __m128i ends = _mm_cmpeq_epi8(load16(block.data() + at + last_offset), last);
        auto places = static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(begins, ends)));
        for (; places != 0; places &= places - 1) {
            const std::size_t place = at + static_cast<std::size_t>(std::countr_zero(places));
            if (block.substr(place, pattern.size()) == pattern)
                return place;
        }
    }
#endif
    return block.find(pattern, at);
}

} // namespace

PatternSearch::PatternSearch(const Window& file, std::string_view pattern)
    : file_(file), pattern_(pattern),
      held_bytes_(static_cast<std::size_t>(std::min(file.size(), most_held))) {}

// What is held from there on.
std::string_view PatternSearch::held(std::uint64_t position) const {
    if (position < held_start_ || position - held_start_ > filled_)
        return {};
    return std::string_view(held_bytes_.data(), filled_)
        .substr(static_cast<std::size_t>(position - held_start_));
}

Read<std::string_view> PatternSearch::bytes(std::uint64_t position, std::size_t count) {
    const std::uint64_t left = file_.size() - std::min(position, file_.size());
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, left));
    if (held(position).size() < wanted) {
        const std::string_view kept = held(position);
        std::copy(kept.begin(), kept.end(), held_bytes_.begin());
        held_start_ = position;
        filled_ = kept.size();
        file_.seek(position + filled_);
        filled_ += VELL_TRY(file_.read(std::span(held_bytes_).subspan(filled_)));
    }
    return held(position).substr(0, count);
}

Read<std::optional<std::uint64_t>> PatternSearch::next(std::uint64_t from) {
    for (;;) {
        const std::string_view block = held(from);
        const std::size_t at = find_pattern(block, pattern_);
        if (at != std::string_view::npos)
            return std::optional(from + at);
        if (block.size() >= pattern_.size())
            from += block.size() - pattern_.size() + 1;
        // What is held is used up; what comes next begins with what may be the start of an
        // occurrence.
        if (VELL_TRY(bytes(from, pattern_.size())).size() < pattern_.size())
            return std::optional<std::uint64_t>();
    }
}

} // namespace vell::formats
