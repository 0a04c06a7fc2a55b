#include "console/calc/xml_reader.h"

#include "console/model/unicode.h"

#include <algorithm>

namespace vell::console {

namespace {

// Deeper documents are refused; a tree of elements is taken apart recursively.
constexpr std::size_t max_depth = 100;

bool is_white_space(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n';
}

bool begins_xml_name(char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || unit == u'_' ||
           unit == u':' || unit >= 0xC0;
}

bool continues_xml_name(char16_t unit) {
    return begins_xml_name(unit) || (unit >= u'0' && unit <= u'9') || unit == u'-' || unit == u'.';
}

bool is_allowed(char32_t code) {
    return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code < 0xD800) ||
           (code >= 0xE000 && code < 0xFFFE) || (code >= 0x10000 && code <= 0x10FFFF);
}

class XmlReader {
  public:
    explicit XmlReader(std::u16string_view document) : document_(document) {}

    CalcResult<XmlElement> document();

  private:
    char16_t current() const { return position_ < document_.size() ? document_[position_] : u'\0'; }
    bool at_end() const { return position_ >= document_.size(); }
    bool starts_with(std::u16string_view text) const {
        return document_.substr(position_).starts_with(text);
    }
    void skip_blanks() {
        while (is_white_space(current()))
            ++position_;
    }
    Failure<CalcError> error(std::string message) const {
        return Failure{CalcError{std::move(message), position_}};
    }

    CalcResult<void> skip_until(std::u16string_view end, const char* what);
    CalcResult<void> skip_outside();
    CalcResult<std::u16string> name();
    CalcResult<char32_t> reference();
    CalcResult<void> character(std::u16string& out);
    CalcResult<void> attribute(XmlElement& element);
    CalcResult<bool> open_tag(XmlElement& element); // true: <a/>
    CalcResult<void> content(XmlElement& root);
    CalcResult<void> close_tag(const XmlElement& element);
    CalcResult<void> character_data(XmlElement& element);

    std::u16string_view document_;
    std::size_t position_ = 0;
};

CalcResult<void> XmlReader::skip_until(std::u16string_view end, const char* what) {
    const std::size_t found = document_.find(end, position_);
    if (found == document_.npos)
        return error(std::string("this ") + what + " is not closed");
    position_ = found + end.size();
    return {};
}

// Blanks and comments before and behind the root element.
CalcResult<void> XmlReader::skip_outside() {
    for (skip_blanks(); starts_with(u"<!--"); skip_blanks())
        VELL_TRY(skip_until(u"-->", "comment"));
    return {};
}

CalcResult<std::u16string> XmlReader::name() {
    const std::size_t start = position_;
    if (at_end() || !begins_xml_name(current()))
        return error("a name is expected here");
    while (continues_xml_name(current()))
        ++position_;
    return std::u16string(document_.substr(start, position_ - start));
}

// &amp; and the like, and characters by number.
CalcResult<char32_t> XmlReader::reference() {
    struct Entity {
        std::u16string_view name;
        char32_t code;
    };
    constexpr Entity entities[] = {
        {u"&amp;", U'&'}, {u"&lt;", U'<'}, {u"&gt;", U'>'}, {u"&quot;", U'"'}, {u"&apos;", U'\''}};
    for (const Entity& entity : entities) {
        if (starts_with(entity.name)) {
            position_ += entity.name.size();
            return entity.code;
        }
    }
    if (!starts_with(u"&#"))
        return error("a plain & is not allowed here, it is written &amp;");
    const bool hexadecimal = starts_with(u"&#x");
    std::size_t i = position_ + (hexadecimal ? 3 : 2);
    const std::size_t first_digit = i;
    char32_t code = 0;
    for (; i < document_.size() && document_[i] != u';'; ++i) {
        const char16_t digit = lower_case(document_[i]);
        const bool letter = hexadecimal && digit >= u'a' && digit <= u'f';
        if (!letter && (digit < u'0' || digit > u'9'))
            break;
        const auto value = static_cast<char32_t>(letter ? digit - u'a' + 10 : digit - u'0');
        code = std::min<char32_t>(code * (hexadecimal ? 16 : 10) + value, 0x110000);
    }
    if (i == first_digit || i >= document_.size() || document_[i] != u';' || !is_allowed(code))
        return error("this is not a character by number");
    position_ = i + 1;
    return code;
}

// One character of text or of an attribute's value.
CalcResult<void> XmlReader::character(std::u16string& out) {
    if (current() == u'&') {
        const char32_t code = VELL_TRY(reference());
        if (code > 0xFFFF) {
            out += static_cast<char16_t>(0xD7C0 + (code >> 10));
            out += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        } else {
            out += static_cast<char16_t>(code);
        }
        return {};
    }
    if (current() == u'<')
        return error("a plain < is not allowed here, it is written &lt;");
    const bool pair = is_high_surrogate(current()) && position_ + 1 < document_.size() &&
                      is_low_surrogate(document_[position_ + 1]);
    if (!pair && !is_allowed(current()))
        return error("this character is not allowed");
    out += document_.substr(position_, pair ? 2 : 1);
    position_ += pair ? 2 : 1;
    return {};
}

CalcResult<void> XmlReader::attribute(XmlElement& element) {
    const std::size_t start = position_;
    XmlAttribute result;
    result.name = VELL_TRY(name());
    skip_blanks();
    if (current() != u'=')
        return error("a = is expected behind the attribute's name");
    ++position_;
    skip_blanks();
    const char16_t quote = current();
    if (quote != u'"' && quote != u'\'')
        return error("the attribute's value must stand in quotes");
    ++position_;
    while (current() != quote) {
        if (at_end())
            return Failure{CalcError{"this attribute's value is not closed", start}};
        VELL_TRY(character(result.value));
    }
    ++position_;
    if (element.attribute(result.name))
        return Failure{
            CalcError{"the attribute " + utf8_from_utf16(result.name) + " stands here twice", start,
                      result.name.size()}};
    element.attributes.push_back(std::move(result));
    return {};
}

CalcResult<bool> XmlReader::open_tag(XmlElement& element) {
    element.position = position_++;
    element.name = VELL_TRY(name());
    for (;;) {
        const bool separated = is_white_space(current());
        skip_blanks();
        if (current() == u'>') {
            ++position_;
            return false;
        }
        if (starts_with(u"/>")) {
            position_ += 2;
            return true;
        }
        if (at_end())
            return Failure{CalcError{"this tag is not closed", element.position}};
        if (!separated)
            return error("a blank is expected before an attribute");
        VELL_TRY(attribute(element));
    }
}

CalcResult<void> XmlReader::close_tag(const XmlElement& element) {
    const std::size_t start = position_;
    position_ += 2;
    const std::u16string closed = VELL_TRY(name());
    skip_blanks();
    if (closed != element.name)
        return Failure{CalcError{"</" + utf8_from_utf16(closed) + "> closes <" +
                                     utf8_from_utf16(element.name) + ">",
                                 start, closed.size() + 3}};
    if (current() != u'>')
        return error("a > is expected here");
    ++position_;
    return {};
}

CalcResult<void> XmlReader::character_data(XmlElement& element) {
    constexpr std::u16string_view open = u"<![CDATA[";
    constexpr std::u16string_view close = u"]]>";
    const std::size_t start = position_ + open.size();
    VELL_TRY(skip_until(close, "character data"));
    element.text += document_.substr(start, position_ - close.size() - start);
    return {};
}

// Everything up to the end tag of the root, with the elements that are open on a stack.
CalcResult<void> XmlReader::content(XmlElement& root) {
    std::vector<XmlElement> open;
    open.push_back(std::move(root));
    for (;;) {
        XmlElement& element = open.back();
        if (at_end())
            return Failure{CalcError{"<" + utf8_from_utf16(element.name) + "> is not closed",
                                     element.position, element.name.size() + 1}};
        if (starts_with(u"</")) {
            VELL_TRY(close_tag(element));
            XmlElement closed = std::move(element);
            open.pop_back();
            if (open.empty()) {
                root = std::move(closed);
                return {};
            }
            open.back().children.push_back(std::move(closed));
        } else if (starts_with(u"<!--")) {
            VELL_TRY(skip_until(u"-->", "comment"));
        } else if (starts_with(u"<![CDATA[")) {
            VELL_TRY(character_data(element));
        } else if (current() == u'<') {
            if (open.size() >= max_depth)
                return error("elements are nested too deep");
            XmlElement child;
            if (VELL_TRY(open_tag(child)))
                element.children.push_back(std::move(child));
            else
                open.push_back(std::move(child));
        } else {
            VELL_TRY(character(element.text));
        }
    }
}

CalcResult<XmlElement> XmlReader::document() {
    if (current() == u'\uFEFF')
        ++position_;
    if (starts_with(u"<?xml"))
        VELL_TRY(skip_until(u"?>", "declaration"));
    VELL_TRY(skip_outside());
    if (current() != u'<')
        return error("an element is expected here");
    XmlElement root;
    if (!VELL_TRY(open_tag(root)))
        VELL_TRY(content(root));
    VELL_TRY(skip_outside());
    if (!at_end())
        return error("nothing may follow the end of <" + utf8_from_utf16(root.name) + ">");
    return root;
}

} // namespace

const std::u16string* XmlElement::attribute(std::u16string_view attribute_name) const {
    for (const XmlAttribute& entry : attributes) {
        if (entry.name == attribute_name)
            return &entry.value;
    }
    return nullptr;
}

CalcResult<XmlElement> read_xml(std::u16string_view document) {
    return XmlReader(document).document();
}

} // namespace vell::console
