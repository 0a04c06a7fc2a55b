// The properties of an XMP packet (ISO 16684-1, sections 6 and 7): values, structures and arrays,
// from the forms of RDF/XML that XMP uses.
#pragma once

#include "src/metadata/values/value.h"
#include "src/metadata/values/xml_tree.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vell::metadata {

struct XmpNode {
    enum class Kind : std::uint8_t { Simple, Structure, Bag, Seq, Alt };

    XmlName name; // of a property, a field or a qualifier; that of an item says nothing
    Kind kind = Kind::Simple;
    std::string text;                // of a simple value
    std::vector<XmpNode> children;   // fields or items
    std::string language;            // the qualifier xml:lang
    std::vector<XmpNode> qualifiers; // all others

    bool is_array() const { return kind > Kind::Structure; }
};

class XmpModel {
  public:
    // UTF-8; the packet may stand between processing instructions. Of one that is damaged, what
    // stands before the damage.
    static XmpModel read(std::string_view packet);

    // In the order of the packet.
    const std::vector<XmpNode>& properties() const { return properties_; }
    std::vector<XmpNode>& properties() { return properties_; }

  private:
    XmlDocument document_; // names refer to it
    std::vector<XmpNode> properties_;
};

// The prefix that everybody writes for a namespace; empty for one that is not known.
std::string_view usual_prefix(std::string_view uri);

// {"dc": {"title": {"x-default": "…"}, "subject": ["a", "b"]}}: by prefix, then by name. Items of
// an alternative are members by their language, where they have one; qualifiers other than the
// language are left out. Namespaces that are not known have the packet's own prefix, with a number
// behind it where another namespace has it already.
Members xmp_members(XmpModel model);

} // namespace vell::metadata
