#include "src/metadata/values/xml_tree.h"

#include <expat.h>

#include <algorithm>
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

std::string* XmlElement::attribute(std::string_view uri, std::string_view local) {
    return const_cast<std::string*>(std::as_const(*this).attribute(uri, local));
}

// The library calls these functions, and nothing may be thrown through it.
class XmlDocument::Reader {
  public:
    explicit Reader(XmlDocument& document)
        : document_(document), parser_(XML_ParserCreateNS("UTF-8", separator)) {
        open_.push_back(document.root_.get());
    }

    void read(std::string_view text) {
        if (!parser_)
            return;
        packet_ = text;
        XML_SetUserData(parser_.get(), this);
        XML_SetReturnNSTriplet(parser_.get(), 1);
        XML_SetElementHandler(parser_.get(), on_start, on_end);
        XML_SetCharacterDataHandler(parser_.get(), on_text);
        XML_SetStartNamespaceDeclHandler(parser_.get(), on_namespace);
        XML_SetStartDoctypeDeclHandler(parser_.get(), on_document_type);
        parse(text);
        if (is_out_of_memory_ || XML_GetErrorCode(parser_.get()) == XML_ERROR_NO_MEMORY)
            throw std::bad_alloc();
    }

  private:
    // In parts, since the library copies what it is given. With each part it looks at a token that
    // is not complete from its start again: a long one gets as much again, so that time stays
    // linear.
    void parse(std::string_view text) {
        constexpr std::size_t shortest_part = 1U << 13U;
        std::size_t part_size = shortest_part;
        for (std::size_t given = 0;;) {
            const std::string_view part = text.substr(given, part_size);
            given += part.size();
            const bool is_last = given == text.size();
            if (XML_Parse(parser_.get(), part.data(), static_cast<int>(part.size()), is_last) !=
                    XML_STATUS_OK ||
                is_last)
                return;
            const auto reached = std::max<XML_Index>(XML_GetCurrentByteIndex(parser_.get()), 0);
            part_size = std::max(shortest_part, given - static_cast<std::size_t>(reached));
        }
    }

    static Reader& of(void* data) { return *static_cast<Reader*>(data); }

    static void on_start(void* data, const XML_Char* name, const XML_Char** attributes) {
        of(data).guarded([&](Reader& reader) { reader.start(name, attributes); });
    }
    static void on_end(void* data, const XML_Char*) { of(data).open_.pop_back(); }
    static void on_text(void* data, const XML_Char* text, int length) {
        of(data).guarded([&](Reader& reader) {
            if (reader.open_.size() > 1)
                reader.add_text({text, static_cast<std::size_t>(length)});
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

    // A text comes line by line. A long one gets the room that it needs up to the next markup: it
    // would be held twice and more while it grew.
    void add_text(std::string_view part) {
        constexpr std::size_t long_text = 1U << 16U;
        std::string& text = open_.back()->text;
        if (text.size() >= long_text && text.capacity() - text.size() < part.size()) {
            const auto at = static_cast<std::size_t>(XML_GetCurrentByteIndex(parser_.get()));
            const std::size_t left = std::min(packet_.find('<', at), packet_.size()) - at;
            std::string grown;
            grown.reserve(text.size() + std::max(left, text.size() / 8) + part.size());
            grown += text;
            text.swap(grown);
        }
        text += part;
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
    std::string_view packet_;
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
