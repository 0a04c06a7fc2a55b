#include "src/base/xml_text.h"

namespace vell {

std::string escaped_for_xml(std::string_view bytes, bool is_utf8) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        const bool control = static_cast<unsigned char>(c) < 0x20;
        const std::string_view character = bytes.substr(i, 3);
        if (c == '&') {
            text += "&amp;";
        } else if (c == '<') {
            text += "&lt;";
        } else if (c == '>') {
            text += "&gt;";
        } else if (c == '"') {
            text += "&quot;";
        } else if (control && c != '\t' && c != '\n' && c != '\r') {
            text += '?';
        } else if (is_utf8 && (character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF")) {
            text += "\xEF\xBF\xBD"; // no characters: U+FFFE, U+FFFF
            i += 2;
        } else {
            text += c;
        }
    }
    return text;
}

} // namespace vell
