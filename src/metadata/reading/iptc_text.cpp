#include "src/metadata/reading/iptc_text.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/formats/iptc.h"
#include "src/metadata/values/iptc_values.h"

#include <optional>
#include <string>

namespace vell::metadata {
namespace {

namespace iptc = formats::iptc;
using iptc::Dataset;

void append_dataset(const Dataset& dataset, TextEncoding encoding, bool readable,
                    MetadataText& text) {
    const std::string number = to_text(std::uint64_t{dataset.header.number});
    text.append("\r##IPTC ");
    text.append(number);
    text.append("\r");
    const auto date =
        readable ? readable_dataset(dataset.header.number, dataset.value) : std::nullopt;
    if (date) {
        text.append(*date);
    } else if (dataset.header.number == iptc::record_version) {
        std::string version(dataset.value);
        if (version.size() >= 2)
            std::swap(version[0], version[1]); // as the host's processor holds the number
        text.append(version, TextEncoding::Native);
    } else if (encoding == TextEncoding::Utf8 && !is_valid_utf8(dataset.value)) {
        text.append(dataset.value, TextEncoding::Native);
    } else {
        text.append(dataset.value, encoding);
    }
    text.append("\r##END ");
    text.append(number);
}

} // namespace

Result<std::size_t> decode_iptc(std::string_view block, bool detect_utf8, TextEncoding source,
                                MetadataText& text, bool readable) {
    std::size_t at = iptc::find_dataset(block, iptc::application_record);
    TextEncoding encoding = source;
    for (std::size_t i = 0; i < iptc::most_datasets; ++i) {
        const std::optional<Dataset> dataset = Dataset::read(block.substr(at));
        if (!dataset || dataset->header.is_extended() ||
            dataset->header.record > iptc::application_record)
            break;
        if (dataset->header.record == iptc::application_record)
            append_dataset(*dataset, encoding, readable, text);
        else if (detect_utf8 && dataset->header.number == iptc::coded_character_set &&
                 dataset->value.starts_with(iptc::utf8_escape))
            encoding = TextEncoding::Utf8;
        at += dataset->bytes.size();
    }
    return at;
}

} // namespace vell::metadata
