#include "src/metadata/writing/tagged_text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

namespace vell::metadata {
namespace {

struct SectionWord {
    std::string_view opener;
    SectionKind kind;
    std::uint16_t largest_number;
};

constexpr std::uint16_t any_tag = std::numeric_limits<std::uint16_t>::max();
constexpr SectionWord numbered_words[] = {
    {"##EXIF ", SectionKind::Exif, any_tag},
    {"##GPS ", SectionKind::Gps, any_tag},
    {"##INTEROP ", SectionKind::Interoperability, any_tag},
    {"##IPTC ", SectionKind::Iptc, 255},
};
constexpr std::string_view comment_opener = "##JCOM";
constexpr std::string_view end_word = "##END";

// Lines that stand between the datasets of a file with several IPTC blocks.
constexpr std::string_view remarks[] = {"--- NEXT_IPTC_APP_RECORD ---",
                                        "WARNING: MULTIPLE_IPTC_APP_RECORDS_FOUND"};

bool is_break(char c) {
    return c == '\r' || c == '\n';
}

bool ends_line(std::string_view rest) {
    return rest.empty() || is_break(rest[0]);
}

// Takes a decimal number off `rest`.
std::optional<std::uint16_t> take_number(std::string_view& rest, std::uint16_t largest) {
    std::uint16_t number = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (error != std::errc() || number > largest)
        return std::nullopt;
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    return number;
}

// The value between an opener and its end, the line breaks on either side included. CRLF counts as
// one break only where both are: a value may begin with LF or end with CR itself.
std::string_view without_breaks(std::string_view enclosed) {
    constexpr std::string_view pair = "\r\n";
    if (enclosed.size() >= 4 && enclosed.starts_with(pair) && enclosed.ends_with(pair))
        return enclosed.substr(2, enclosed.size() - 4);
    if (enclosed.size() < 2 || enclosed == pair)
        return {};
    return enclosed.substr(1, enclosed.size() - 2);
}

class Parser {
  public:
    explicit Parser(std::string_view text) : rest_(text) {}

    Result<std::vector<TaggedSection>> parse() {
        while (skip_to_section())
            VELL_TRY(take_section());
        if (!rest_.empty())
            return Failure{ErrorCode::BadParameter};
        return std::move(sections_);
    }

  private:
    bool skip_to_section() {
        for (;;) {
            rest_.remove_prefix(std::min(rest_.find_first_not_of("\r\n \t"), rest_.size()));
            const auto remark = std::ranges::find_if(
                remarks, [&](std::string_view line) { return rest_.starts_with(line); });
            if (remark == std::end(remarks))
                return rest_.starts_with("##");
            rest_.remove_prefix(remark->size());
        }
    }

    Result<void> take_section() {
        if (rest_.starts_with(comment_opener)) {
            rest_.remove_prefix(comment_opener.size());
            return take_value(SectionKind::Comment, 0, "");
        }
        const auto word = std::ranges::find_if(numbered_words, [&](const SectionWord& candidate) {
            return rest_.starts_with(candidate.opener);
        });
        if (word == std::end(numbered_words))
            return Failure{ErrorCode::BadParameter};
        rest_.remove_prefix(word->opener.size());
        const std::string_view digits = rest_;
        const auto number = take_number(rest_, word->largest_number);
        if (!number)
            return Failure{ErrorCode::BadParameter};
        return take_value(word->kind, *number, digits.substr(0, digits.size() - rest_.size()));
    }

    Result<void> take_value(SectionKind kind, std::uint16_t number, std::string_view digits) {
        if (rest_.empty() || !is_break(rest_[0]))
            return Failure{ErrorCode::BadParameter};
        // An end stands at the start of a line.
        for (std::size_t at = 0; (at = rest_.find(end_word, at)) != std::string_view::npos; ++at) {
            const auto after = at > 0 && is_break(rest_[at - 1])
                                   ? behind_end(rest_.substr(at), digits)
                                   : std::nullopt;
            if (!after)
                continue;
            sections_.push_back({kind, number, without_breaks(rest_.substr(0, at))});
            rest_ = *after;
            return {};
        }
        return Failure{ErrorCode::BadParameter};
    }

    // What follows the end of the section with those digits, if `text` begins with it.
    static std::optional<std::string_view> behind_end(std::string_view text,
                                                      std::string_view digits) {
        text.remove_prefix(end_word.size());
        if (text.starts_with(' '))
            text.remove_prefix(1);
        else if (!digits.empty())
            return std::nullopt;
        if (!text.starts_with(digits) || !ends_line(text.substr(digits.size())))
            return std::nullopt;
        return text.substr(digits.size());
    }

    std::string_view rest_;
    std::vector<TaggedSection> sections_;
};

} // namespace

Result<std::vector<TaggedSection>> parse_tagged_text(std::string_view text) {
    return Parser(text).parse();
}

} // namespace vell::metadata
