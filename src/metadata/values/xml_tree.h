// A document of XML 1.0 with namespaces, as a tree of its elements.
//
// Documents come with files from anywhere. One with a document type, where entities would be
// declared, ends there; so does one that nests deeper or has more elements and attributes than
// metadata has.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace vell::metadata {

// The document's own words for its namespaces are kept: they name those that nobody knows.
struct XmlName {
    std::string_view uri;
    std::string_view prefix;
    std::string_view local;
};

struct XmlAttribute {
    XmlName name;
    std::string value;
};

struct XmlElement {
    XmlName name;
    std::vector<XmlAttribute> attributes;
    std::vector<XmlElement> children;
    std::string text; // all of it that stands between the children

    // Null where there is none.
    std::string* attribute(std::string_view uri, std::string_view local);
    const std::string* attribute(std::string_view uri, std::string_view local) const;
};

class XmlDocument {
  public:
    static constexpr std::size_t most_levels = 64;
    static constexpr std::size_t most_nodes = 100'000; // elements and attributes
    static constexpr std::size_t longest_name = 1000;  // with its namespace

    // Takes UTF-8. What stands before damage, or before a limit, is kept.
    static XmlDocument read(std::string_view text);

    // The document's element stands below this one, which has no name.
    const XmlElement& root() const { return *root_; }
    XmlElement& root() { return *root_; } // for those who take its texts

  private:
    class Reader;

    std::unique_ptr<XmlElement> root_ = std::make_unique<XmlElement>();
    std::unordered_set<std::string> words_; // that names refer to
};

} // namespace vell::metadata
