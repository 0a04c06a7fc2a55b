// Whether a text is JSON as RFC 8259 has it, with no name twice in an object: a judge that shares
// nothing with what writes the text.
#pragma once

#include "src/base/utf8.h"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

namespace vell::test {

class StrictJson {
  public:
    static bool accepts(std::string_view text) {
        StrictJson json(text);
        return is_valid_utf8(text) && json.value(0) && json.rest_.empty();
    }

  private:
    explicit StrictJson(std::string_view text) : rest_(text) {}

    bool take(std::string_view word) {
        if (!rest_.starts_with(word))
            return false;
        rest_.remove_prefix(word.size());
        return true;
    }

    bool value(int depth) {
        if (depth > 200)
            return false;
        if (take("null") || take("true") || take("false"))
            return true;
        if (take("{"))
            return object(depth);
        if (take("["))
            return array(depth);
        std::string text;
        return rest_.starts_with('"') ? string(text) : number();
    }

    bool object(int depth) {
        if (take("}"))
            return true;
        std::set<std::string> names;
        do {
            std::string name;
            if (!string(name) || !names.insert(name).second || !take(":") || !value(depth + 1))
                return false;
        } while (take(","));
        return take("}");
    }

    bool array(int depth) {
        if (take("]"))
            return true;
        do {
            if (!value(depth + 1))
                return false;
        } while (take(","));
        return take("]");
    }

    bool string(std::string& text) {
        if (!take("\""))
            return false;
        for (;;) {
            if (rest_.empty() || static_cast<unsigned char>(rest_[0]) < 0x20)
                return false;
            if (take("\""))
                return true;
            const std::size_t size = rest_[0] != '\\' ? 1 : rest_.starts_with("\\u") ? 6 : 2;
            if (size == 2 && rest_.find_first_of("\"\\/bfnrt", 1) != 1)
                return false;
            if (size == 6 && rest_.find_first_not_of("0123456789abcdefABCDEF", 2) < 6)
                return false;
            if (rest_.size() < size)
                return false;
            text += rest_.substr(0, size);
            rest_.remove_prefix(size);
        }
    }

    bool digits() {
        const std::size_t end = rest_.find_first_not_of("0123456789");
        if (rest_.empty() || end == 0)
            return false;
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end);
        return true;
    }

    bool number() {
        take("-");
        if (!take("0") && !digits())
            return false;
        if (take(".") && !digits())
            return false;
        if (take("e") || take("E")) {
            if (!take("+"))
                take("-");
            return digits();
        }
        return true;
    }

    std::string_view rest_;
};

} // namespace vell::test
