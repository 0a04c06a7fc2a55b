#include "src/structure/structure_report.h"

#include "src/base/ascii.h"
#include "src/base/number_text.h"
#include "src/base/xml_text.h"

namespace vell::structure {
namespace {

std::string attribute_name(std::string_view name) {
    std::string attribute;
    for (const char c : name)
        attribute += c == ' ' ? '_' : fold_ascii(c);
    return attribute;
}

} // namespace

void StructureReport::start_file(std::string_view format, std::uint64_t size) {
    if (style_.as_xml) {
        text_.append("\r<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<file format=\"" +
                     std::string(format) + "\" size=\"" + to_text(size) + "\"");
        tag_is_open_ = true;
    } else {
        text_.append("\r" + std::string(format) + ": size " + to_text(size));
    }
    kinds_.emplace_back("file");
}

void StructureReport::finish_file() {
    finish();
}

void StructureReport::end_start_tag() {
    if (tag_is_open_)
        text_.append(">");
    tag_is_open_ = false;
}

void StructureReport::start_line() {
    text_.append("\r" + std::string(2 * kinds_.size(), ' '));
}

void StructureReport::start(std::string_view kind, std::string_view name, std::uint64_t offset,
                            std::uint64_t size) {
    end_start_tag();
    start_line();
    if (style_.as_xml) {
        text_.append("<" + std::string(kind));
        tag_is_open_ = true;
        field("name", name);
        field("offset", offset);
        field("size", size);
    } else {
        text_.append(name, params::TextEncoding::Utf8);
        text_.append(": offset " + to_text(offset) + ", size " + to_text(size));
    }
    kinds_.push_back(kind);
}

void StructureReport::field(std::string_view name, std::string_view value,
                            params::TextEncoding encoding) {
    if (style_.as_xml) {
        text_.append(" " + attribute_name(name) + "=\"");
        text_.append(escaped_for_xml(value, encoding == params::TextEncoding::Utf8), encoding);
        text_.append("\"");
    } else {
        text_.append(", " + std::string(name) + " ");
        text_.append(value, encoding);
    }
}

void StructureReport::field(std::string_view name, std::uint64_t value) {
    field(name, to_text(value));
}

void StructureReport::note(std::string_view words) {
    if (style_.as_xml)
        field("note", words);
    else
        text_.append(", " + std::string(words));
}

void StructureReport::finish() {
    const std::string_view kind = kinds_.back();
    kinds_.pop_back();
    if (!style_.as_xml)
        return;
    if (tag_is_open_) {
        text_.append("/>");
        tag_is_open_ = false;
        return;
    }
    start_line();
    text_.append("</" + std::string(kind) + ">");
}

} // namespace vell::structure
