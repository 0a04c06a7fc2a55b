// Replaces every occurrence of a text in a stream of bytes.
#pragma once

#include "src/params/call.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vell::files {

enum class LetterCase : std::uint8_t {
    Exact,
    Ignore, // A to Z and a to z are the same letters; every other byte stands for itself
};

// Occurrences are found from left to right and never overlap. Time is linear in the stream and the
// search text whatever they hold; memory beyond the blocks fed grows with the search text alone.
//
// Most of a block is scanned sixteen places at once for two bytes of the search text that are
// likely to be rare. Where that finds many places that turn out wrong, and where an occurrence may
// cross the end of a block, an automaton that looks at each byte once takes over.
class Substituter {
  public:
    // `search` is not empty. The sink gets the result in pieces of any length; after a failure of
    // its own the substituter is of no more use.
    Substituter(std::string_view search, std::string replacement, LetterCase letter_case,
                params::ByteSink sink);

    Result<void> feed(std::string_view block);
    // Writes what may have been the beginning of an occurrence.
    Result<void> finish();

  private:
    // Where a scan has stopped: at an occurrence, or at the first place that it leaves undecided.
    struct Stop {
        std::size_t place;
        bool is_occurrence;
    };

    void choose_probes();
    bool is_at(const char* place);
    unsigned probe(std::string_view block, std::size_t place, std::size_t last_place) const;
    Stop scan(std::string_view block, std::size_t from);
    std::size_t skip_to_first_byte(std::string_view block, std::size_t from) const;
    bool advance(char byte);
    Result<void> emit(std::string_view block, std::ptrdiff_t from, std::ptrdiff_t to);
    void hold(std::string_view block);

    bool equals(char byte, std::size_t index) const {
        return static_cast<char>(byte | case_bits_[index]) == search_[index];
    }

    std::string search_;    // lowered where letters compare without case
    std::string case_bits_; // for each byte of it, the bit in which the two cases differ, or 0
    std::vector<std::size_t> borders_; // by length: the longest proper prefix that is a suffix too
    std::string replacement_;
    params::ByteSink sink_;
    std::size_t first_probe_ = 0; // indexes in the search text
    std::size_t second_probe_ = 0;

    std::size_t matched_ = 0; // bytes of the search text that the stream ends with so far
    std::string held_;        // of these, the ones from earlier blocks, behind `held_start_`
    std::size_t held_start_ = 0;
    std::int64_t credit_;         // comparisons that the scan may still waste
    std::size_t bytes_unscanned_; // bytes to go through the automaton before the next scan
};

} // namespace vell::files
