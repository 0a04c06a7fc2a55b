#include "src/files/contents/substituter.h"

#include "src/base/ascii.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vell::files {
namespace {

constexpr std::size_t width = 16; // places that are looked at together

// The scan pays for wasted comparisons out of what it gains by going on.
constexpr std::int64_t credit_per_byte = 4;
constexpr std::int64_t most_credit = 16'384;
constexpr std::size_t automaton_stretch = 4'096;

// How often a byte is to be expected in texts and other files; only speed depends on it.
constexpr int commonness(char byte) {
    constexpr std::string_view by_frequency = " etaoinsrhldcu\nmf\rpg,.wybvk0-1";
    const std::size_t rank = by_frequency.find(fold_ascii(byte));
    if (byte == '\0')
        return static_cast<int>(by_frequency.size());
    if (rank == std::string_view::npos)
        return 0;
    const int common = static_cast<int>(by_frequency.size() - rank);
    return byte >= 'A' && byte <= 'Z' ? common / 4 : common;
}

#ifdef __SSE2__
__m128i load(const char* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

// One bit for each of the sixteen bytes: whether it equals `wanted` with the case bits added.
unsigned equal_bits(__m128i bytes, __m128i case_bits, __m128i wanted) {
    const __m128i equal = _mm_cmpeq_epi8(_mm_or_si128(bytes, case_bits), wanted);
    return static_cast<unsigned>(_mm_movemask_epi8(equal));
}
#endif

} // namespace

Substituter::Substituter(std::string_view search, std::string replacement, LetterCase letter_case,
                         params::ByteSink sink)
    : search_(search), case_bits_(search.size(), '\0'), borders_(search.size() + 1, 0),
      replacement_(std::move(replacement)), sink_(std::move(sink)), credit_(most_credit),
      bytes_unscanned_(0) {
    if (letter_case == LetterCase::Ignore) {
        std::ranges::transform(search_, search_.begin(), fold_ascii<char>);
        std::ranges::transform(search_, case_bits_.begin(),
                               [](char c) { return c >= 'a' && c <= 'z' ? ' ' : '\0'; });
    }
    for (std::size_t length = 2; length <= search_.size(); ++length) {
        const char byte = search_[length - 1];
        std::size_t border = borders_[length - 1];
        while (border > 0 && search_[border] != byte)
            border = borders_[border];
        borders_[length] = border + (search_[border] == byte ? 1 : 0);
    }
    choose_probes();
}

// The two rarest bytes, as far apart as they happen to be.
void Substituter::choose_probes() {
    constexpr std::size_t searched_length = 256; // far enough for two rare ones
    int first = std::numeric_limits<int>::max();
    int second = first;
    for (std::size_t i = 0; i < std::min(search_.size(), searched_length); ++i) {
        const int common = commonness(search_[i]);
        if (common < first) {
            second = first;
            second_probe_ = first_probe_;
            first = common;
            first_probe_ = i;
        } else if (common < second) {
            second = common;
            second_probe_ = i;
        }
    }
}

// Whether the search text stands at `place`, with all of its length to read there.
bool Substituter::is_at(const char* place) {
    std::size_t i = 0;
#ifdef __SSE2__
    constexpr unsigned all = 0xFFFF;
    while (i + width <= search_.size() && equal_bits(load(place + i), load(case_bits_.data() + i),
                                                     load(search_.data() + i)) == all)
        i += width;
#endif
    while (i < search_.size() && equals(place[i], i))
        ++i;
    credit_ -= static_cast<std::int64_t>(i + 1);
    return i == search_.size();
}

// The places from `place` on where both probes hold, as bits; none beyond `last_place`.
unsigned Substituter::probe(std::string_view block, std::size_t place,
                            std::size_t last_place) const {
    const std::size_t places = std::min(width, last_place - place + 1);
#ifdef __SSE2__
    if (place + std::max(first_probe_, second_probe_) + width <= block.size()) {
        const auto bits = [&](std::size_t index) {
            return equal_bits(load(block.data() + place + index), _mm_set1_epi8(case_bits_[index]),
                              _mm_set1_epi8(search_[index]));
        };
        return bits(first_probe_) & bits(second_probe_) & ((1U << places) - 1);
    }
#endif
    unsigned found = 0;
    for (std::size_t i = 0; i < places; ++i)
        if (equals(block[place + i + first_probe_], first_probe_) &&
            equals(block[place + i + second_probe_], second_probe_))
            found |= 1U << i;
    return found;
}

// Looks for an occurrence that lies in the block as a whole and begins at `from` or later.
Substituter::Stop Substituter::scan(std::string_view block, std::size_t from) {
    const std::size_t last_place = block.size() - search_.size();
    std::size_t credited = from;
    for (std::size_t place = from; place <= last_place; place += width) {
        for (unsigned found = probe(block, place, last_place); found != 0; found &= found - 1) {
            const std::size_t candidate = place + static_cast<std::size_t>(std::countr_zero(found));
            credit_ += credit_per_byte * static_cast<std::int64_t>(candidate + 1 - credited);
            credit_ = std::min(credit_, most_credit);
            credited = candidate + 1;
            if (is_at(block.data() + candidate))
                return {candidate, true};
            if (credit_ < 0) {
                credit_ = most_credit;
                bytes_unscanned_ = search_.size() + automaton_stretch;
                return {candidate + 1, false};
            }
        }
    }
    return {last_place + 1, false};
}

std::size_t Substituter::skip_to_first_byte(std::string_view block, std::size_t from) const {
    if (case_bits_[0] == '\0') {
        const void* found = std::memchr(block.data() + from, search_[0], block.size() - from);
        return found ? static_cast<std::size_t>(static_cast<const char*>(found) - block.data())
                     : block.size();
    }
    while (from < block.size() && !equals(block[from], 0))
        ++from;
    return from;
}

// Takes one byte of the stream; true when an occurrence ends with it.
bool Substituter::advance(char byte) {
    while (matched_ > 0 && !equals(byte, matched_))
        matched_ = borders_[matched_];
    if (equals(byte, matched_))
        ++matched_;
    if (matched_ < search_.size())
        return false;
    matched_ = 0;
    return true;
}

Result<void> Substituter::feed(std::string_view block) {
    const auto length = static_cast<std::ptrdiff_t>(search_.size());
    // Positions count from the start of the block; the held bytes stand before it.
    std::ptrdiff_t unwritten = -static_cast<std::ptrdiff_t>(held_.size() - held_start_);
    std::size_t at = 0;
    while (at < block.size()) {
        std::ptrdiff_t occurrence = -1;
        bool found = false;
        if (matched_ == 0 && bytes_unscanned_ == 0 && block.size() - at >= search_.size()) {
            const Stop stop = scan(block, at);
            found = stop.is_occurrence;
            at = found ? stop.place + search_.size() : stop.place;
        } else {
            const std::size_t before = at;
            if (matched_ == 0)
                at = skip_to_first_byte(block, at);
            if (at < block.size())
                found = advance(block[at++]);
            bytes_unscanned_ -= std::min(bytes_unscanned_, at - before);
        }
        if (found) {
            occurrence = static_cast<std::ptrdiff_t>(at) - length;
            VELL_TRY(emit(block, unwritten, occurrence));
            VELL_TRY(sink_(replacement_));
            unwritten = static_cast<std::ptrdiff_t>(at);
        }
    }
    const auto undecided = static_cast<std::ptrdiff_t>(block.size() - matched_);
    VELL_TRY(emit(block, unwritten, undecided));
    hold(block);
    return {};
}

// Writes the stream from one position to another, relative to the block's start.
Result<void> Substituter::emit(std::string_view block, std::ptrdiff_t from, std::ptrdiff_t to) {
    if (from < 0 && from < to) {
        const auto count = static_cast<std::size_t>(std::min<std::ptrdiff_t>(to, 0) - from);
        const auto start =
            static_cast<std::size_t>(static_cast<std::ptrdiff_t>(held_.size()) + from);
        VELL_TRY(sink_(std::string_view(held_).substr(start, count)));
        from = 0;
    }
    if (from < to)
        VELL_TRY(sink_(
            block.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from))));
    return {};
}

// Keeps the last `matched_` bytes of the stream beyond the block's life.
void Substituter::hold(std::string_view block) {
    if (matched_ <= block.size()) {
        held_.assign(block.substr(block.size() - matched_));
        held_start_ = 0;
        return;
    }
    held_start_ = held_.size() - (matched_ - block.size());
    // Moved only when more than half of it is gone, so that each byte moves a few times at most.
    if (held_start_ > held_.size() / 2) {
        held_.erase(0, held_start_);
        held_start_ = 0;
    }
    held_.append(block);
}

Result<void> Substituter::finish() {
    const auto count = static_cast<std::ptrdiff_t>(held_.size() - held_start_);
    VELL_TRY(emit({}, -count, 0));
    matched_ = 0;
    hold({});
    return {};
}

} // namespace vell::files
