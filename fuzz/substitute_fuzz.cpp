// Substitution in a stream, cut anywhere, against a naive one.
//
// First line: a number whose bits choose letter case and length of blocks, as one byte; then the
// search text and the replacement, a line each; the rest is the stream.
#include "fuzz/input.h"
#include "src/files/contents/substituter.h"
#include "tests/portable/references.h"

#include <algorithm>
#include <string>
#include <vector>

namespace vell::substitute_fuzz {

FUZZ_TARGET(substitute) {
    std::string_view input = fuzz::as_text(data, size);
    const std::string_view options = fuzz::take_line(input);
    const std::string_view search = fuzz::take_line(input);
    const std::string_view replacement = fuzz::take_line(input);
    if (options.empty() || search.empty())
        return 0;
    const auto choice = static_cast<unsigned char>(options[0]);
    const bool ignore_case = (choice & 1) != 0;
    const std::size_t block_length = (choice >> 1) + 1;

    std::string result;
    files::Substituter substituter(search, std::string(replacement),
                                   ignore_case ? files::LetterCase::Ignore
                                               : files::LetterCase::Exact,
                                   [&](std::string_view bytes) {
                                       result += bytes;
                                       return Result<void>();
                                   });
    for (std::size_t at = 0; at < input.size(); at += block_length) {
        const std::string_view piece = input.substr(at, block_length);
        const std::vector<char> block(piece.begin(), piece.end()); // read beyond it: a finding
        FUZZ_CHECK(substituter.feed({block.data(), block.size()}));
    }
    FUZZ_CHECK(substituter.finish());
    FUZZ_CHECK(result == reference::substitute(input, search, replacement, ignore_case));
    return 0;
}

} // namespace vell::substitute_fuzz
