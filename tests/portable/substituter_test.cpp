// Replacing texts in a stream: every result against a naive one.
#include "src/files/contents/substituter.h"
#include "tests/portable/references.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

namespace vell::files {
namespace {

using Random = std::mt19937;

std::size_t pick(Random& random, std::size_t least, std::size_t most) {
    return std::uniform_int_distribution<std::size_t>(least, most)(random);
}

std::string random_text(Random& random, std::string_view alphabet, std::size_t length) {
    std::string text;
    while (text.size() < length)
        text += alphabet[pick(random, 0, alphabet.size() - 1)];
    return text;
}

// Compares with the naive result, fed in blocks of random lengths up to `longest_block`, empty ones
// too.
void compare(Random& random, const std::string& text, const std::string& search,
             const std::string& replacement, bool ignore_case, std::size_t longest_block) {
    std::string result;
    const auto letter_case = ignore_case ? LetterCase::Ignore : LetterCase::Exact;
    Substituter substituter(search, replacement, letter_case, [&](std::string_view bytes) {
        result += bytes;
        return Result<void>();
    });
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = std::min(pick(random, 0, longest_block), rest.size());
        // A block of its own, so that the sanitizer sees a read beyond its end or life.
        const std::vector<char> block(rest.begin(), rest.begin() + static_cast<long>(length));
        EXPECT_TRUE(substituter.feed({block.data(), length}));
        rest.remove_prefix(length);
    }
    EXPECT_TRUE(substituter.finish());
    ASSERT_EQ(result, reference::substitute(text, search, replacement, ignore_case))
        << "search " << search << " in blocks of up to " << longest_block;
}

// Whole occurrences, near misses and noise.
std::string haystack(Random& random, const std::string& search, std::string_view alphabet) {
    std::string text;
    for (std::size_t parts = pick(random, 0, 30); parts > 0; --parts) {
        switch (pick(random, 0, 4)) {
        case 0:
            text += search;
            break;
        case 1:
            text += search.substr(0, pick(random, 0, search.size()));
            break;
        case 2:
            text += search.substr(pick(random, 0, search.size()));
            break;
        default:
            text += random_text(random, alphabet, pick(random, 0, 40));
        }
    }
    return text;
}

TEST(Substituter, AgreesWithANaiveOneOnSmallAlphabets) {
    Random random(20201231);
    constexpr std::string_view alphabets[] = {"a", "ab", "abc", "aAbB", "aA\xC4\xE4@`[{"};
    for (int round = 0; round < 30'000; ++round) {
        const std::string_view alphabet = alphabets[pick(random, 0, std::size(alphabets) - 1)];
        const std::size_t longest = round % 4 == 0 ? 60 : 6;
        const std::string search = random_text(random, alphabet, pick(random, 1, longest));
        const std::string replacement = random_text(random, "xa", pick(random, 0, 4));
        const std::string text = haystack(random, search, alphabet);
        const std::size_t longest_block = round % 3 == 0 ? text.size() + 1 : pick(random, 1, 70);
        ASSERT_NO_FATAL_FAILURE(
            compare(random, text, search, replacement, pick(random, 0, 1) == 1, longest_block));
    }
}

TEST(Substituter, EveryByteIsItselfExceptTheLettersThatAreFolded) {
    Random random(7);
    std::string every_byte;
    for (int byte = 0; byte < 256; ++byte)
        every_byte += static_cast<char>(byte);
    for (const char character : every_byte)
        for (const bool ignore : {false, true})
            compare(random, every_byte, std::string(1, character), "<>", ignore, 300);
}

TEST(Substituter, LongSearchTextsAreFoundWhereverBlocksEnd) {
    Random random(4711);
    for (const std::size_t length : {1'999U, 2'000U, 2'001U, 5'000U, 70'000U}) {
        for (const std::string_view alphabet : {"ab", "abcdefghijklmnopqrstuvwxyz"}) {
            const std::string search = random_text(random, alphabet, length);
            const std::string text = "aab" + search + search.substr(0, length - 1) + search +
                                     search.substr(1) + search.substr(0, length / 2) + search +
                                     "ba";
            for (const std::size_t longest_block : {std::size_t{1'000}, text.size()})
                for (const bool ignore : {false, true})
                    compare(random, text, search, "[]", ignore, longest_block);
            compare(random, search.substr(1), search, "[]", false, 900);
        }
    }
}

// Occurrences that nearly match everywhere: a method that starts over at each place would compare
// some 10^13 bytes here.
TEST(Substituter, TimeStaysLinearForSelfSimilarTexts) {
    constexpr std::size_t text_length = 8'000'000;
    constexpr std::size_t half = 1'000'000;
    const std::string text(text_length, 'a');
    const std::string as(half, 'a');
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& search :
         {as + "b" + as, as + "b", "b" + as, std::string(20'000, 'a') + "b" + "aa",
          std::string(300, 'a') + "ba"}) {
        for (const LetterCase letter_case : {LetterCase::Exact, LetterCase::Ignore}) {
            std::size_t length = 0;
            Substituter substituter(search, "x", letter_case, [&](std::string_view bytes) {
                length += bytes.size();
                return Result<void>();
            });
            for (std::size_t at = 0; at < text.size(); at += 64'000)
                ASSERT_TRUE(substituter.feed(std::string_view(text).substr(at, 64'000)));
            ASSERT_TRUE(substituter.finish());
            ASSERT_EQ(length, text_length);
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST(Substituter, AFailingSinkEndsTheFeeding) {
    for (int allowed = 0; allowed < 3; ++allowed) {
        int pieces = 0;
        Substituter substituter("ab", "x", LetterCase::Exact, [&](std::string_view) {
            return pieces++ < allowed ? Result<void>() : Failure{ErrorCode::DiskError};
        });
        const Result<void> fed = substituter.feed("12ab34");
        ASSERT_FALSE(fed) << allowed; // "12", "x", "34"
        EXPECT_EQ(fed.error(), ErrorCode::DiskError);
    }
}

} // namespace
} // namespace vell::files
