#include "src/metadata/icc/icc_profile.h"

#include "src/base/ascii.h"
#include "src/base/number_text.h"
#include "src/base/xml_text.h"
#include "src/metadata/faults.h"
#include "src/metadata/icc/icc_fields.h"
#include "src/metadata/icc/icc_texts.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vell::metadata {
namespace {

using formats::read_record;
using icc::signature;

// Whatever stands before is ended, by one carriage return.
void start_line(MetadataText& text) {
    if (!text.empty() && !text.pieces().back().bytes.ends_with('\r'))
        text.append("\r");
}

// The description as it grows, in lines or as XML.
class Report {
  public:
    Report(bool as_xml, MetadataText& text) : as_xml_(as_xml), text_(text) {}

    void start() {
        if (as_xml_) {
            start_line(text_);
            text_.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<icc_profile>");
        }
    }
    void finish() {
        if (as_xml_)
            text_.append("\r</icc_profile>");
    }

    void field(std::string_view name, std::string_view value, std::string_view meaning = {}) {
        start_line(text_);
        if (as_xml_) {
            const std::string element = element_name(name);
            text_.append('<' + element +
                         (meaning.empty() ? "" : " meaning=\"" + std::string(meaning) + '"') + '>' +
                         escaped_for_xml(value) + "</" + element + '>');
        } else {
            text_.append(std::string(indent_) + std::string(name) + ": " + std::string(value));
            if (!meaning.empty())
                text_.append(" (" + std::string(meaning) + ')');
        }
    }

    void field(std::string_view name, const icc::LocalizedText& value) {
        start_line(text_);
        if (as_xml_) {
            const std::string element = element_name(name);
            text_.append('<' + element);
            if (!value.language.empty())
                text_.append(" language=\"" + escaped_for_xml(value.language) + '"');
            text_.append(">");
            text_.append(escaped_for_xml(value.bytes, value.encoding == TextEncoding::Utf8),
                         value.encoding);
            text_.append("</" + element + '>');
        } else {
            text_.append(std::string(indent_) + std::string(name) +
                         (value.language.empty() ? "" : " (" + value.language + ')') + ": ");
            text_.append(value.bytes, value.encoding);
        }
    }

    void start_tag(const icc::Tag& tag, bool with_offset) {
        start_line(text_);
        const std::string name = icc::signature_text(tag.entry.name);
        const std::string type =
            tag.data.empty() ? "(outside the profile)" : icc::signature_text(tag.type());
        const std::string size = to_text(std::uint64_t{tag.entry.data_size});
        const std::string offset = to_text(std::uint64_t{tag.entry.offset});
        if (as_xml_) {
            text_.append("<tag signature=\"" + escaped_for_xml(name) + "\" type=\"" +
                         escaped_for_xml(type) + "\" size=\"" + size + '"' +
                         (with_offset ? " offset=\"" + offset + "\">" : ">"));
        } else {
            text_.append("Tag " + name + ": " + type + ", " + size + " bytes" +
                         (with_offset ? " at " + offset : ""));
        }
        indent_ = "  ";
    }
    void finish_tag() {
        if (as_xml_)
            text_.append("</tag>");
        indent_ = "";
    }

  private:
    static std::string element_name(std::string_view name) {
        std::string element;
        for (const char c : name)
            element += c == ' ' ? '_' : fold_ascii(c);
        return element;
    }

    bool as_xml_;
    MetadataText& text_;
    std::string_view indent_;
};

void report_header(const icc::Header& header, Report& report) {
    for (const icc::HeaderField& field : icc::header_fields(header))
        report.field(field.name, field.value, field.meaning);
}

std::string xyz_text(std::string_view data) {
    std::string text;
    for (std::string_view rest = icc::value_of(data);
         const auto number = read_record<icc::XyzNumber>(rest);
         rest.remove_prefix(icc::XyzNumber::size))
        text += (text.empty() ? "" : ", ") + icc::fixed_numbers_text(number->values);
    return text;
}

std::string curve_text(std::string_view data) {
    const std::uint32_t count = read_record<icc::Curve>(data).value_or(icc::Curve{}).count;
    const auto gamma = load<std::uint16_t>(data, icc::Curve::size, icc::Curve::order);
    if (count == 0)
        return "identity";
    if (count == 1 && gamma)
        return "gamma " + to_text(icc::gamma_value(*gamma), 6);
    return to_text(std::uint64_t{count}) + (count == 1 ? " entry" : " entries");
}

class Describer {
  public:
    Describer(std::string_view profile, const MetadataRequest& request)
        : request_(request), tags_(profile), allowance_(profile.size()) {}

    void describe(const icc::Header& header, MetadataText& text) {
        Report report(request_.icc_as_xml, text);
        report.start();
        report_header(header, report);
        if (const auto description = tags_.find(signature("desc")))
            report_texts("Description", description->data, report);
        report.field("Tags", to_text(std::uint64_t{tags_.announced()}),
                     tags_.is_complete() ? "" : "not all of them there");
        for (std::size_t i = 0; i < tags_.size(); ++i) {
            const icc::Tag tag = tags_[i];
            report.start_tag(tag, request_.verbose_icc);
            if (request_.verbose_icc)
                report_contents(tag.data, report);
            report.finish_tag();
        }
        report.finish();
    }

    // One name without its language, or all of them.
    Result<void> give_names(bool only_first, MetadataText& text) {
        const auto description = tags_.find(signature("desc"));
        if (!description)
            return Failure{tags_.is_complete() ? ErrorCode::NothingFound : ErrorCode::ShortRead};
        bool found = false;
        const auto sink = [&](const icc::LocalizedText& name) {
            found = true;
            start_line(text);
            if (!only_first && !name.language.empty())
                text.append(name.language + ": ");
            text.append(name.bytes, name.encoding);
            return !only_first;
        };
        const Result<void> given = give_texts(description->data, sink);
        // Version 2 has one language, but there are profiles with a second, localized description.
        const auto localized = tags_.find(signature("dscm"));
        if (localized && !(found && only_first))
            (void)give_texts(localized->data, sink);
        if (found)
            return {}; // damage behind it takes nothing away
        return given ? Failure{ErrorCode::NothingFound} : given;
    }

  private:
    Result<void> give_texts(std::string_view data, const icc::TextSink& sink) {
        return icc::give_texts(data, request_.source, allowance_, sink);
    }

    // Texts that are damaged end where the damage is.
    void report_texts(std::string_view name, std::string_view data, Report& report) {
        const bool only_first = request_.first_icc_language;
        (void)give_texts(data, [&](icc::LocalizedText text) {
            if (only_first)
                text.language.clear();
            report.field(name, text);
            return !only_first;
        });
    }

    void report_contents(std::string_view data, Report& report) {
        if (allowance_.is_used_up())
            return;
        const std::uint32_t type = signature(data);
        if (type == signature("text") || type == signature("desc") || type == signature("mluc")) {
            report_texts("Text", data, report);
        } else if (type == signature("XYZ ")) {
            if (allowance_.take(data.size()))
                report.field("XYZ", xyz_text(data));
        } else if (type == signature("curv")) {
            report.field("Curve", curve_text(data));
        } else if (type == signature("sig ")) {
            if (const auto given = read_record<icc::SignatureValue>(icc::value_of(data)))
                report.field("Signature", icc::signature_text(given->value));
        } else if (type == signature("dtim")) {
            if (const auto date = read_record<icc::DateTime>(icc::value_of(data)))
                report.field("Date", icc::date_text(*date));
        }
    }

    const MetadataRequest& request_;
    icc::TagTable tags_;
    icc::Allowance allowance_;
};

} // namespace

Result<void> describe_icc_profile(std::string_view profile, const MetadataRequest& request,
                                  MetadataText& text) {
    const icc::Header header = VELL_TRY(coded(icc::Header::read(profile), ErrorCode::ShortRead));
    Describer describer(profile, request);
    switch (request.icc) {
    case IccSelector::Description:
        describer.describe(header, text);
        return {};
    case IccSelector::Name:
        return describer.give_names(true, text);
    case IccSelector::LocalizedName:
        return describer.give_names(request.first_icc_language, text);
    case IccSelector::None:
        break;
    }
    return {};
}

} // namespace vell::metadata
