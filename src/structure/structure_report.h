// The structure of a file as text: one line, or one XML element, for each of its parts.
#pragma once

#include "src/params/composed_text.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vell::structure {

struct ReportStyle {
    bool as_xml = false;
    bool verbose = false; // the values of small parts, and what only a programmer asks for
};

// Parts nest. A part's fields are given behind its start, before the parts in it.
//
// A line is "\r", two blanks for each part around it, the part's name, ": offset N, size N", and
// its fields (", name value"). In XML the kind names the element, and fields are its attributes.
class StructureReport {
  public:
    StructureReport(ReportStyle style, params::ComposedText& text) : style_(style), text_(text) {}
    StructureReport(const StructureReport&) = delete;
    StructureReport& operator=(const StructureReport&) = delete;

    bool verbose() const { return style_.verbose; }
    std::size_t depth() const { return kinds_.size(); }

    // Before and behind all parts.
    void start_file(std::string_view format, std::uint64_t size);
    void finish_file();

    // `kind` is a literal.
    void start(std::string_view kind, std::string_view name, std::uint64_t offset,
               std::uint64_t size);
    void field(std::string_view name, std::string_view value,
               params::TextEncoding encoding = params::TextEncoding::Utf8);
    void field(std::string_view name, std::uint64_t value);
    // What is to be said of a part beside its fields.
    void note(std::string_view words);
    void finish();

  private:
    void end_start_tag();
    void start_line();

    ReportStyle style_;
    params::ComposedText& text_;
    std::vector<std::string_view> kinds_; // of the parts that are open
    bool tag_is_open_ = false;
};

// A part without others in it.
class Part {
  public:
    Part(StructureReport& report, std::string_view kind, std::string_view name,
         std::uint64_t offset, std::uint64_t size)
        : report_(report) {
        report_.start(kind, name, offset, size);
    }
    Part(const Part&) = delete;
    Part& operator=(const Part&) = delete;
    ~Part() { report_.finish(); }

  private:
    StructureReport& report_;
};

} // namespace vell::structure
