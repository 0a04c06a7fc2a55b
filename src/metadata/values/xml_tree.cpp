#include "src/metadata/values/xml_tree.h"

#include <expat.h>

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace vell::metadata {
namespace {

constexpr char separator = '\n'; // stands in no name

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter>;

} // namespace

const std::string* XmlElement::attribute(std::string_view uri, std::string_view local) const {
    const auto found = std::ranges::find_if(attributes, [&](const XmlAttribute& each) {
        return each.name.uri == uri && each.name.local == local;
    });
    return found == attributes.end() ? nullptr : &found->value;
}

// The library calls these functions, and nothing may be thrown through it.
class XmlDocument::Reader {
  public:
    explicit Reader(XmlDocument& document)
        : document_(document), parser_(XML_ParserCreateNS("UTF-8", separator)) {
        open_.push_back(document.root_.get());
    }

    void read(std::string_view text) {
        if (!parser_ || text.size() > std::numeric_limits<int>::max())
            return;
        XML_SetUserData(parser_.get(), this);
        XML_SetReturnNSTriplet(parser_.get(), 1);
        XML_SetElementHandler(parser_.get(), on_start, on_end);
        XML_SetCharacterDataHandler(parser_.get(), on_text);
        XML_SetStartNamespaceDeclHandler(parser_.get(), on_namespace);
        XML_SetStartDoctypeDeclHandler(parser_.get(), on_document_type);
        XML_Parse(parser_.get(), text.data(), static_cast<int>(text.size()), 1);
        if (is_out_of_memory_ || XML_GetErrorCode(parser_.get()) == XML_ERROR_NO_MEMORY)
            throw std::bad_alloc();
    }

  private:
    static Reader& of(void* data) { return *static_cast<Reader*>(data); }

    static void on_start(void* data, const XML_Char* name, const XML_Char** attributes) {
        of(data).guarded([&](Reader& reader) { reader.start(name, attributes); });
    }
    static void on_end(void* data, const XML_Char*) { of(data).open_.pop_back(); }
    static void on_text(void* data, const XML_Char* text, int length) {
        of(data).guarded([&](Reader& reader) {
            if (reader.open_.size() > 1)
                reader.open_.back()->text.append(text, static_cast<std::size_t>(length));
        });
    }
    // The library repeats a namespace with each name, so that long ones would take long.
    static void on_namespace(void* data, const XML_Char* prefix, const XML_Char* uri) {
        const auto length = [](const XML_Char* text) {
            return text == nullptr ? 0 : std::string_view(text).size();
        };
        if (length(prefix) + length(uri) > longest_name)
            of(data).stop();
    }
    static void on_document_type(void* data, const XML_Char*, const XML_Char*, const XML_Char*,
                                 int) {
        of(data).stop();
    }

    template <typename Action>
    void guarded(Action action) {
        if (is_stopped_)
            return; // what the library had begun before
        try {
            action(*this);
        } catch (const std::bad_alloc&) {
            is_out_of_memory_ = true;
            stop();
        }
    }

    void stop() {
        is_stopped_ = true;
        XML_StopParser(parser_.get(), XML_FALSE);
    }

    void start(const char* name, const char** attributes) {
        // An element is closed before the next one is begun beside it, so that pointers to open
        // ones stay good.
        XmlElement& element = open_.back()->children.emplace_back();
        open_.push_back(&element);
        element.name = name_of(name);
        nodes_ += 1;
        for (; *attributes != nullptr && nodes_ <= most_nodes; attributes += 2, ++nodes_)
            element.attributes.push_back({name_of(attributes[0]), attributes[1]});
        if (open_.size() > most_levels || nodes_ > most_nodes)
            stop();
    }

    // "uri, local name, prefix", of which the last, or all but the local name, may be missing.
    XmlName name_of(std::string_view text) {
        const std::size_t first = text.find(separator);
        if (first == std::string_view::npos)
            return {{}, {}, word(text)};
        const std::string_view rest = text.substr(first + 1);
        const std::size_t second = rest.find(separator);
        const std::string_view prefix =
            second == std::string_view::npos ? std::string_view() : rest.substr(second + 1);
        return {word(text.substr(0, first)), word(prefix), word(rest.substr(0, second))};
    }
    std::string_view word(std::string_view text) { return *document_.words_.emplace(text).first; }

    XmlDocument& document_;
    Parser parser_;
    std::vector<XmlElement*> open_;
    std::size_t nodes_ = 0;
    bool is_stopped_ = false;
    bool is_out_of_memory_ = false;
};

XmlDocument XmlDocument::read(std::string_view text) {
    XmlDocument document;
    Reader(document).read(text);
    return document;
}

} // namespace vell::metadata
