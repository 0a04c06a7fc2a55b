#include "console/selftest/shown_paths.h"

#include "src/base/utf8.h"

#include <array>
#include <charconv>

namespace vell::selftest {
namespace {

constexpr std::u16string_view separators = u"\\/";
constexpr std::string_view invalid = "<INVALID UTF8>";

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool continues_name(char c) {
    return (lower(c) >= 'a' && lower(c) <= 'z') || (c >= '0' && c <= '9') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

// Follows a path through a text.
class PathReader {
  public:
    PathReader(std::string_view text, std::size_t start) : text_(text), at_(start) {}

    bool read(std::u16string_view path) {
        for (std::size_t i = 0; i < path.size(); ++i) {
            if (separators.find(path[i]) != separators.npos) {
                if (!separator())
                    return false;
            } else if (path[i] < 0x80) {
                if (!ascii(static_cast<char>(path[i])))
                    return false;
            } else {
                const bool is_pair = (path[i] & 0xFC00) == 0xD800 && i + 1 < path.size();
                if (!other(path.substr(i, is_pair ? 2 : 1)))
                    return false;
                i += is_pair;
            }
        }
        return at_ == text_.size() || !continues_name(text_[at_]);
    }
    std::size_t end() const { return at_; }
    char first_separator() const { return first_separator_; }

  private:
    bool take(std::string_view part) {
        if (!text_.substr(at_).starts_with(part))
            return false;
        at_ += part.size();
        return true;
    }
    bool separator() {
        const char found = at_ < text_.size() ? text_[at_] : '\0';
        if (found != '\\' && found != '/')
            return false;
        if (first_separator_ == '\0')
            first_separator_ = found;
        ++at_;
        take(std::string_view(&found, 1)); // doubled in a literal
        return true;
    }
    bool ascii(char wanted) {
        if (after_number_)
            take("\" u\""); // a digit behind a number begins another literal
        after_number_ = false;
        if (at_ == text_.size() || lower(text_[at_]) != lower(wanted))
            return false;
        ++at_;
        return true;
    }
    // A character above ASCII, as it is, unit by unit as a number, or as the plug-in shows some
    // such characters in a row that a command has printed.
    bool other(std::u16string_view character) {
        const bool in_a_row = text_.substr(0, at_).ends_with(invalid);
        if (take(utf8_from_utf16(character)) || take(invalid) || in_a_row)
            return true;
        for (const char16_t unit : character) {
            std::array<char, 4> digits{};
            const auto end =
                std::to_chars(digits.data(), digits.data() + digits.size(), unit, 16).ptr;
            if (!take("\\x"))
                return false;
            for (const char* digit = digits.data(); digit != end; ++digit, ++at_)
                if (at_ == text_.size() || lower(text_[at_]) != *digit)
                    return false;
        }
        after_number_ = true;
        return true;
    }

    std::string_view text_;
    std::size_t at_;
    char first_separator_ = '\0';
    bool after_number_ = false;
};

std::string with_separator(std::string text, char separator) {
    for (char& c : text)
        if (c == '\\')
            c = separator == '\0' ? '\\' : separator;
    return text;
}

} // namespace

void ShownPaths::add(std::u16string_view path, std::string_view shown) {
    const std::size_t end = path.find_last_not_of(separators);
    if (end != path.npos)
        entries_.push_back({std::u16string(path.substr(0, end + 1)), std::string(shown)});
}

std::string ShownPaths::in(std::string_view utf8) const {
    std::string result;
    for (std::size_t at = 0; at < utf8.size();) {
        std::size_t end = at;
        for (const Entry& entry : entries_) {
            PathReader reader(utf8, at);
            if (!reader.read(entry.path))
                continue;
            result += with_separator(entry.shown, reader.first_separator());
            end = reader.end();
            break;
        }
        if (end == at)
            result += utf8[end++];
        at = end;
    }
    return result;
}

} // namespace vell::selftest
