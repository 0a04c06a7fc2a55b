// XMP packets as trees, and as JSON.
#include "fuzz/input.h"
#include "src/base/utf8.h"
#include "src/metadata/values/xmp_model.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vell::xmp_fuzz {
namespace {

using namespace vell::metadata;

// Nodes of the model come from elements and attributes, each once; no deeper than these nest.
std::size_t count(const std::vector<XmpNode>& nodes, std::size_t level) {
    FUZZ_CHECK(level <= XmlDocument::most_levels);
    std::size_t all = nodes.size();
    for (const XmpNode& node : nodes) {
        FUZZ_CHECK(node.kind == XmpNode::Kind::Simple || node.text.empty());
        FUZZ_CHECK(node.is_array() || node.kind == XmpNode::Kind::Structure ||
                   node.children.empty());
        all += count(node.children, level + 1) + count(node.qualifiers, level + 1);
    }
    return all;
}

} // namespace

FUZZ_TARGET(xmp) {
    const std::vector<char> exact(data, data + size); // read beyond it: a finding
    XmpModel model = XmpModel::read({exact.data(), exact.size()});
    FUZZ_CHECK(count(model.properties(), 1) <= XmlDocument::most_nodes + XmlDocument::most_levels);

    JsonWriter json;
    Value(xmp_members(std::move(model))).write(json);
    FUZZ_CHECK(json.is_complete());
    const std::string text = json.take();
    FUZZ_CHECK(is_valid_utf8(text));
    FUZZ_CHECK(text.size() <= size * 12 + 1000);
    return 0;
}

} // namespace vell::xmp_fuzz
