// A strict reader of small XML documents: what is not well-formed is refused with its place.
// Document types are not understood and refused, too.
#pragma once

#include "console/calc/calc_error.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::console {

struct XmlAttribute {
    std::u16string name;
    std::u16string value;
};

struct XmlElement {
    std::u16string name;
    std::vector<XmlAttribute> attributes;
    std::u16string text; // of this element itself, without that of its children
    std::vector<XmlElement> children;
    std::size_t position = 0; // of the element's < in the document

    const std::u16string* attribute(std::u16string_view attribute_name) const;
};

CalcResult<XmlElement> read_xml(std::u16string_view document);

} // namespace vell::console
