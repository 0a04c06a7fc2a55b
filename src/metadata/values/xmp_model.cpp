#include "src/metadata/values/xmp_model.h"

#include "src/base/number_text.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace vell::metadata {
namespace {

constexpr std::string_view rdf = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
constexpr std::string_view xml = "http://www.w3.org/XML/1998/namespace";

using Kind = XmpNode::Kind;

bool is_rdf(const XmlName& name, std::string_view local) {
    return name.uri == rdf && name.local == local;
}

// What RDF and XML say of an element is no property; neither is a name without a namespace.
bool is_property(const XmlName& name) {
    return name.uri != rdf && name.uri != xml && !name.uri.empty();
}

bool is_white_space(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

Kind array_kind(const XmlName& name) {
    if (name.uri != rdf)
        return Kind::Simple;
    if (name.local == "Bag")
        return Kind::Bag;
    if (name.local == "Seq")
        return Kind::Seq;
    return name.local == "Alt" ? Kind::Alt : Kind::Simple;
}

XmpNode node_of(XmlElement& element);

XmpNode simple(const XmlName& name, std::string text) {
    XmpNode node;
    node.name = name;
    node.text = std::move(text);
    return node;
}

// The properties that stand in the attributes and in the elements below a node element, whose texts
// are taken: a long one is there once.
std::vector<XmpNode> fields_of(XmlElement& element) {
    std::vector<XmpNode> fields;
    for (XmlAttribute& attribute : element.attributes)
        if (is_property(attribute.name))
            fields.push_back(simple(attribute.name, std::move(attribute.value)));
    for (XmlElement& child : element.children)
        if (is_property(child.name) || is_rdf(child.name, "value"))
            fields.push_back(node_of(child));
    return fields;
}

// Fields of which one is rdf:value are that value with qualifiers.
void take_fields(XmpNode& node, std::vector<XmpNode> fields) {
    const auto value = std::ranges::find_if(
        fields, [](const XmpNode& field) { return is_rdf(field.name, "value"); });
    if (value == fields.end()) {
        node.kind = Kind::Structure;
        node.children = std::move(fields);
        return;
    }
    node.kind = value->kind;
    node.text = std::move(value->text);
    node.children = std::move(value->children);
    if (node.language.empty())
        node.language = std::move(value->language);
    fields.erase(value);
    std::ranges::move(fields, std::back_inserter(node.qualifiers));
}

void take_items(XmpNode& node, XmlElement& array) {
    node.kind = array_kind(array.name);
    for (XmlElement& item : array.children)
        if (is_rdf(item.name, "li"))
            node.children.push_back(node_of(item));
}

// An element without others in it.
void take_empty(XmpNode& node, XmlElement& element) {
    if (std::string* const resource = element.attribute(rdf, "resource")) {
        node.text = std::move(*resource);
        return;
    }
    std::vector<XmpNode> fields = fields_of(element);
    std::string* const value = element.attribute(rdf, "value");
    if (value != nullptr) {
        node.text = std::move(*value);
        node.qualifiers = std::move(fields);
    } else if (!fields.empty() && is_white_space(element.text)) {
        node.kind = Kind::Structure;
        node.children = std::move(fields);
    } else {
        node.text = std::move(element.text);
        node.qualifiers = std::move(fields);
    }
}

// A property element, or an item of an array (7.4 to 7.9). No deeper than the document, whose depth
// has a limit.
XmpNode node_of(XmlElement& element) {
    XmpNode node;
    node.name = element.name;
    if (const std::string* const language = element.attribute(xml, "lang"))
        node.language = *language;
    const std::string* const parse_type = element.attribute(rdf, "parseType");
    if (parse_type != nullptr && *parse_type == "Resource")
        take_fields(node, fields_of(element));
    else if (element.children.empty())
        take_empty(node, element);
    else if (array_kind(element.children.front().name) != Kind::Simple)
        take_items(node, element.children.front());
    else // rdf:Description, or an element of the structure's own type
        take_fields(node, fields_of(element.children.front()));
    return node;
}

// Wherever rdf:RDF stands: in x:xmpmeta, or alone.
XmlElement* find_rdf(XmlElement& element) {
    if (is_rdf(element.name, "RDF"))
        return &element;
    for (XmlElement& child : element.children)
        if (XmlElement* const found = find_rdf(child))
            return found;
    return nullptr;
}

using Prefix = std::pair<std::string_view, std::string_view>;

constexpr auto usual_prefixes = std::to_array<Prefix>({
    {"http://purl.org/dc/elements/1.1/", "dc"},
    {"http://ns.adobe.com/xap/1.0/", "xmp"},
    {"http://ns.adobe.com/xap/1.0/mm/", "xmpMM"},
    {"http://ns.adobe.com/xap/1.0/rights/", "xmpRights"},
    {"http://ns.adobe.com/xap/1.0/bj/", "xmpBJ"},
    {"http://ns.adobe.com/xap/1.0/t/pg/", "xmpTPg"},
    {"http://ns.adobe.com/xap/1.0/g/", "xmpG"},
    {"http://ns.adobe.com/xap/1.0/g/img/", "xmpGImg"},
    {"http://ns.adobe.com/xap/1.0/sType/ResourceRef#", "stRef"},
    {"http://ns.adobe.com/xap/1.0/sType/ResourceEvent#", "stEvt"},
    {"http://ns.adobe.com/xap/1.0/sType/Dimensions#", "stDim"},
    {"http://ns.adobe.com/xap/1.0/sType/Font#", "stFnt"},
    {"http://ns.adobe.com/xap/1.0/sType/Version#", "stVer"},
    {"http://ns.adobe.com/xap/1.0/sType/Job#", "stJob"},
    {"http://ns.adobe.com/xmp/sType/Area#", "stArea"},
    {"http://ns.adobe.com/xmp/Identifier/qual/1.0/", "xmpidq"},
    {"http://ns.adobe.com/xmp/1.0/DynamicMedia/", "xmpDM"},
    {"http://ns.adobe.com/xmp/note/", "xmpNote"},
    {"http://ns.adobe.com/tiff/1.0/", "tiff"},
    {"http://ns.adobe.com/exif/1.0/", "exif"},
    {"http://ns.adobe.com/exif/1.0/aux/", "aux"},
    {"http://cipa.jp/exif/1.0/", "exifEX"},
    {"http://ns.adobe.com/photoshop/1.0/", "photoshop"},
    {"http://ns.adobe.com/camera-raw-settings/1.0/", "crs"},
    {"http://ns.adobe.com/camera-raw-saved-settings/1.0/", "crss"},
    {"http://ns.adobe.com/lightroom/1.0/", "lr"},
    {"http://ns.adobe.com/hdr-gain-map/1.0/", "hdrgm"},
    {"http://ns.adobe.com/hdr-metadata/1.0/", "hdr_metadata"},
    {"http://ns.adobe.com/pdf/1.3/", "pdf"},
    {"http://ns.adobe.com/pdfx/1.3/", "pdfx"},
    {"http://ns.adobe.com/album/1.0/", "album"},
    {"http://ns.adobe.com/creatorAtom/1.0/", "creatorAtom"},
    {"http://ns.adobe.com/illustrator/1.0/", "illustrator"},
    {"http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/", "Iptc4xmpCore"},
    {"http://iptc.org/std/Iptc4xmpExt/2008-02-29/", "Iptc4xmpExt"},
    {"http://ns.useplus.org/ldf/xmp/1.0/", "plus"},
    {"http://www.metadataworkinggroup.com/schemas/regions/", "mwg-rs"},
    {"http://www.metadataworkinggroup.com/schemas/keywords/", "mwg-kw"},
    {"http://www.metadataworkinggroup.com/schemas/collections/", "mwg-coll"},
    {"http://ns.microsoft.com/photo/1.0/", "MicrosoftPhoto"},
    {"http://ns.microsoft.com/photo/1.2/", "MP"},
    {"http://ns.microsoft.com/photo/1.2/t/RegionInfo#", "MPRI"},
    {"http://ns.microsoft.com/photo/1.2/t/Region#", "MPReg"},
    {"http://ns.google.com/photos/1.0/panorama/", "GPano"},
    {"http://ns.google.com/photos/1.0/camera/", "GCamera"},
    {"http://ns.google.com/photos/1.0/container/", "Container"},
    {"http://ns.google.com/photos/1.0/container/item/", "Item"},
    {"http://ns.google.com/photos/1.0/depthmap/", "GDepth"},
    {"http://ns.google.com/photos/1.0/image/", "GImage"},
    {"http://ns.google.com/photos/1.0/audio/", "GAudio"},
    {"http://ns.google.com/videos/1.0/spherical/", "GSpherical"},
    {"http://ns.apple.com/faceinfo/1.0/", "apple-fi"},
    {"http://ns.apple.com/HDRGainMap/1.0/", "HDRGainMap"},
    {"http://www.digikam.org/ns/1.0/", "digiKam"},
    {"http://ns.acdsee.com/iptc/1.0/", "acdsee"},
    {"http://ns.iview-multimedia.com/mediapro/1.0/", "mediapro"},
    {"http://prismstandard.org/namespaces/basic/2.0/", "prism"},
    {"http://creativecommons.org/ns#", "cc"},
    {"http://www.dji.com/drone-dji/1.0/", "drone-dji"},
    {"http://darktable.sf.net/", "darktable"},
    {"http://purl.org/dc/terms/", "dcterms"},
});

// The packet's own prefixes, each for one namespace.
class Prefixes {
  public:
    const std::string& of(const XmlName& name) {
        const auto known = chosen_.find(name.uri);
        if (known != chosen_.end())
            return known->second;
        const std::string_view usual = usual_prefix(name.uri);
        if (!usual.empty())
            return chosen_.emplace(name.uri, usual).first->second;
        const std::string wanted(name.prefix.empty() ? std::string_view("ns") : name.prefix);
        std::uint64_t& uses = uses_[wanted];
        uses += 1;
        const bool is_free = uses == 1 && !is_usual(wanted);
        return chosen_
            .emplace(name.uri, is_free ? wanted : wanted + '_' + to_text(uses + (uses == 1)))
            .first->second;
    }

  private:
    static bool is_usual(std::string_view prefix) {
        return std::ranges::find(usual_prefixes, prefix, &Prefix::second) != usual_prefixes.end();
    }

    std::map<std::string_view, std::string> chosen_; // by the namespace
    std::map<std::string, std::uint64_t> uses_;
};

Value value_of(XmpNode& node, Prefixes& prefixes);

Value alternative_of(XmpNode& node, Prefixes& prefixes) {
    Members languages;
    for (XmpNode& item : node.children)
        languages.add(item.language.empty() ? "x-default" : item.language,
                      value_of(item, prefixes));
    const Value* shown = languages.find("x-default");
    if (shown == nullptr)
        shown = &languages.entries().front().second;
    std::string text = shown->readable("\r");
    return Value(std::move(languages)).shown_as(std::move(text));
}

// Fields have their names alone; where two namespaces have the same one, the second has its prefix.
Value structure_of(XmpNode& node, Prefixes& prefixes) {
    Members fields;
    for (XmpNode& field : node.children) {
        const std::string name(field.name.local);
        if (!fields.has(name))
            fields.add(name, value_of(field, prefixes));
        else
            fields.add(prefixes.of(field.name) + ':' + name, value_of(field, prefixes));
    }
    return fields;
}

Value value_of(XmpNode& node, Prefixes& prefixes) {
    if (node.kind == Kind::Simple)
        return std::move(node.text);
    if (node.kind == Kind::Structure)
        return structure_of(node, prefixes);
    const auto has_language = [](const XmpNode& item) {
        return !item.language.empty();
    };
    if (node.kind == Kind::Alt && std::ranges::any_of(node.children, has_language))
        return alternative_of(node, prefixes);
    Values items;
    for (XmpNode& item : node.children)
        items.push_back(value_of(item, prefixes));
    return items;
}

} // namespace

XmpModel XmpModel::read(std::string_view packet) {
    XmpModel model;
    // Blanks before the document's declaration, or a byte order mark, are no damage.
    const std::size_t start = packet.find('<');
    model.document_ =
        XmlDocument::read(packet.substr(start == std::string_view::npos ? packet.size() : start));
    XmlElement* const root = find_rdf(model.document_.root());
    if (root == nullptr)
        return model;
    for (XmlElement& description : root->children)
        std::ranges::move(fields_of(description), std::back_inserter(model.properties_));
    return model;
}

std::string_view usual_prefix(std::string_view uri) {
    const auto* const found = std::ranges::find(usual_prefixes, uri, &Prefix::first);
    return found == usual_prefixes.end() ? std::string_view() : found->second;
}

Members xmp_members(XmpModel model) {
    Prefixes prefixes;
    std::vector<std::string> order;
    std::map<std::string, Members> by_prefix;
    for (XmpNode& property : model.properties()) {
        const std::string& prefix = prefixes.of(property.name);
        const auto [place, is_new] = by_prefix.try_emplace(prefix);
        if (is_new)
            order.push_back(prefix);
        place->second.add(std::string(property.name.local), value_of(property, prefixes));
    }
    Members members;
    for (const std::string& prefix : order)
        members.add(prefix, std::move(by_prefix[prefix]));
    return members;
}

} // namespace vell::metadata
