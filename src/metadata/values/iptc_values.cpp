#include "src/metadata/values/iptc_values.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/formats/iptc.h"
#include "src/metadata/values/dates.h"
#include "src/metadata/values/iptc_names.h"

#include <algorithm>
#include <vector>

namespace vell::metadata {
namespace {

namespace iptc = formats::iptc;

constexpr std::size_t most_bytes_shown = 1024; // of what is no text

std::vector<iptc::Dataset> datasets_of(std::string_view block) {
    std::vector<iptc::Dataset> found;
    std::size_t at = iptc::find_dataset(block, iptc::application_record);
    while (found.size() < iptc::most_datasets) {
        const auto dataset = iptc::Dataset::read(block.substr(at));
        if (!dataset || dataset->header.record > iptc::application_record)
            break;
        found.push_back(*dataset);
        at += dataset->bytes.size();
    }
    return found;
}

TextEncoding encoding_of(const std::vector<iptc::Dataset>& datasets, TextEncoding otherwise) {
    bool all_utf8 = true;
    for (const iptc::Dataset& dataset : datasets) {
        const DatasetRow* const row =
            find_dataset_row(dataset.header.record, dataset.header.number);
        if (dataset.header.record == iptc::envelope_record &&
            dataset.header.number == iptc::coded_character_set &&
            dataset.value.starts_with(iptc::utf8_escape))
            return TextEncoding::Utf8;
        const bool is_text = row == nullptr || row->form == DatasetForm::Text;
        all_utf8 = all_utf8 && (!is_text || is_valid_utf8(dataset.value));
    }
    return all_utf8 ? TextEncoding::Utf8 : otherwise;
}

Value number_of(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes.substr(0, 2))
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

Value bytes_value(std::string_view bytes) {
    if (bytes.size() > most_bytes_shown)
        return '(' + to_text(std::uint64_t{bytes.size()}) + " bytes)";
    return hexadecimal(bytes);
}

std::optional<std::string> date_of(DatasetForm form, std::string_view value) {
    if (form == DatasetForm::Date)
        return iptc_date(value);
    return form == DatasetForm::Time ? iptc_time(value) : std::nullopt;
}

Value value_of(const iptc::Dataset& dataset, const DatasetRow* row, TextEncoding encoding,
               const TextDecoder& decoder) {
    const DatasetForm form = row == nullptr ? DatasetForm::Text : row->form;
    if (form == DatasetForm::Number)
        return number_of(dataset.value);
    if (form == DatasetForm::Bytes || (row == nullptr && !looks_like_text(dataset.value)))
        return dataset.value == iptc::utf8_escape ? Value("UTF8") : bytes_value(dataset.value);
    if (auto date = date_of(form, dataset.value))
        return std::move(*date);
    if (encoding == TextEncoding::Utf8 && !is_valid_utf8(dataset.value))
        encoding = TextEncoding::Native;
    return decoder(dataset.value, encoding);
}

std::string name_of(const iptc::Dataset& dataset, const DatasetRow* row) {
    if (row != nullptr)
        return std::string(row->name);
    return "Dataset" + to_text(std::uint64_t{dataset.header.record}) + '_' +
           to_text(std::uint64_t{dataset.header.number});
}

void add_repeated(Members& members, std::string name, Value value, bool is_repeatable) {
    if (Value* const there = members.find_same(name)) {
        if (there->array() == nullptr) {
            Values values;
            values.push_back(std::move(*there));
            *there = std::move(values);
        }
        there->array()->push_back(std::move(value));
        return;
    }
    if (is_repeatable) {
        Values values;
        values.push_back(std::move(value));
        value = std::move(values);
    }
    members.add(std::move(name), std::move(value));
}

} // namespace

Members iptc_members(std::string_view block, TextEncoding otherwise, const TextDecoder& decoder) {
    const std::vector<iptc::Dataset> datasets = datasets_of(block);
    const TextEncoding encoding = encoding_of(datasets, otherwise);
    Members members;
    for (const iptc::Dataset& dataset : datasets) {
        const DatasetRow* const row =
            find_dataset_row(dataset.header.record, dataset.header.number);
        add_repeated(members, name_of(dataset, row), value_of(dataset, row, encoding, decoder),
                     row != nullptr && row->is_repeatable);
    }
    return members;
}

std::optional<std::string> readable_dataset(std::uint8_t number, std::string_view value) {
    const DatasetRow* const row = find_dataset_row(iptc::application_record, number);
    return row == nullptr ? std::nullopt : date_of(row->form, value);
}

} // namespace vell::metadata
