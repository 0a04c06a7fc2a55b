#include "src/metadata/iptc.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"

#include <algorithm>
#include <optional>
#include <string>

namespace vell::metadata {
namespace {

constexpr std::uint8_t dataset_marker = 0x1C;
constexpr std::uint8_t envelope_record = 1;
constexpr std::uint8_t application_record = 2;
constexpr std::uint8_t coded_character_set = 90;   // in the envelope record
constexpr std::uint8_t record_version = 0;         // in the application record
constexpr std::string_view utf8_escape = "\x1B%G"; // ISO 2022

struct Dataset {
    static constexpr std::size_t header_size = 5;

    std::uint8_t record;
    std::uint8_t number;
    std::string_view value; // cut where the block ends

    static bool begins_at(std::string_view block, std::size_t at) {
        const auto marker = load<std::uint8_t>(block, at, ByteOrder::Big);
        const auto record = load<std::uint8_t>(block, at + 1, ByteOrder::Big);
        return marker == dataset_marker && record >= envelope_record &&
               record <= application_record;
    }

    // nullopt where none begins, its header is cut off or its length has the extended form.
    static std::optional<Dataset> read(std::string_view block, std::size_t at) {
        constexpr std::uint16_t extended_length = 0x8000;
        const auto length = load<std::uint16_t>(block, at + 3, ByteOrder::Big);
        if (!begins_at(block, at) || !length || *length >= extended_length)
            return std::nullopt;
        return Dataset{*load<std::uint8_t>(block, at + 1, ByteOrder::Big),
                       *load<std::uint8_t>(block, at + 2, ByteOrder::Big),
                       block.substr(at + header_size, *length)};
    }
};

std::size_t first_dataset(std::string_view block) {
    std::size_t at = block.find(static_cast<char>(dataset_marker));
    while (at != std::string_view::npos && !Dataset::begins_at(block, at))
        at = block.find(static_cast<char>(dataset_marker), at + 1);
    return std::min(at, block.size());
}

void append_dataset(const Dataset& dataset, TextEncoding encoding, MetadataText& text) {
    const std::string number = to_text(std::uint64_t{dataset.number});
    text.append("\r##IPTC ");
    text.append(number);
    text.append("\r");
    if (dataset.number == record_version) {
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
                                MetadataText& text) {
    std::size_t at = first_dataset(block);
    TextEncoding encoding = source;
    while (at < MetadataText::max_size) {
        const std::optional<Dataset> dataset = Dataset::read(block, at);
        if (!dataset)
            break;
        if (dataset->record == application_record)
            append_dataset(*dataset, encoding, text);
        else if (detect_utf8 && dataset->number == coded_character_set &&
                 dataset->value.starts_with(utf8_escape))
            encoding = TextEncoding::Utf8;
        at += Dataset::header_size + dataset->value.size();
    }
    return at;
}

} // namespace vell::metadata
