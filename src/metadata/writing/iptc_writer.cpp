#include "src/metadata/writing/iptc_writer.h"

#include "src/base/ascii.h"
#include "src/base/bytes.h"
#include "src/base/utf8.h"
#include "src/formats/iptc.h"
#include "src/metadata/faults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace vell::metadata {
namespace {

using namespace formats::iptc;

constexpr std::string_view current_version{"\0\4", 2};

// nullopt where no whole dataset begins.
std::optional<Dataset> whole_dataset(std::string_view block) {
    const auto dataset = Dataset::read(block);
    return dataset && dataset->is_whole ? dataset : std::nullopt;
}

std::vector<Dataset> read_datasets(std::string_view block) {
    std::vector<Dataset> datasets;
    while (!block.empty() && !whole_dataset(block))
        block.remove_prefix(1);
    while (const auto dataset = whole_dataset(block)) {
        datasets.push_back(*dataset);
        block.remove_prefix(dataset->bytes.size());
    }
    return datasets;
}

std::string with_first_two_swapped(std::string_view bytes) {
    std::string swapped(bytes);
    if (swapped.size() >= 2)
        std::swap(swapped[0], swapped[1]);
    return swapped;
}

// The reader shows the version's two bytes as the characters of their numbers, the lower one first.
// Users may write it as a number.
Result<std::string> version_value(std::string_view text, std::string_view existing,
                                  const TextStore& store) {
    const std::string shown = VELL_TRY(store.store_as(TextEncoding::Native, text));
    if (shown == with_first_two_swapped(existing))
        return std::string(existing);
    if (shown.size() == 2)
        return with_first_two_swapped(shown);
    std::uint16_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return Failure{ErrorCode::BadParameter};
    std::string bytes;
    append_integer<std::uint16_t>(bytes, number, ByteOrder::Big);
    return bytes;
}

class IptcWriter {
  public:
    IptcWriter(std::string_view existing, const IptcWriting& writing, const TextStore& store)
        : datasets_(read_datasets(existing)), writing_(writing), store_(store) {}

    Result<std::string> write(std::span<const TaggedSection> sections) {
        std::vector<TaggedSection> own;
        std::ranges::copy_if(sections, std::back_inserter(own), [](const TaggedSection& section) {
            return section.kind == SectionKind::Iptc;
        });
        const bool is_utf8 = stores_utf8(own);
        const std::string application =
            VELL_TRY(writing_.keep_others ? merged_datasets(own, is_utf8)
                                          : application_datasets(own, is_utf8));
        std::string others;
        for (const Dataset& dataset : datasets_)
            if (dataset.header.record > application_record)
                others += dataset.bytes;
        if (application.empty() && others.empty())
            return std::string();
        std::string bytes = VELL_TRY(envelope_datasets(is_utf8));
        return bytes + application + others;
    }

  private:
    const Dataset* find(std::uint8_t record, std::uint8_t number) const {
        const auto found = std::ranges::find_if(datasets_, [&](const Dataset& dataset) {
            return dataset.header.record == record && dataset.header.number == number;
        });
        return found == datasets_.end() ? nullptr : &*found;
    }

    bool declares_utf8() const {
        const Dataset* declared = find(envelope_record, coded_character_set);
        return writing_.detect_utf8 && declared != nullptr &&
               declared->value.starts_with(utf8_escape);
    }

    bool stores_utf8(std::span<const TaggedSection> sections) const {
        if (store_.chosen())
            return *store_.chosen() == TextEncoding::Utf8;
        return declares_utf8() || std::ranges::any_of(sections, [&](const TaggedSection& section) {
                   return section.number != record_version && !store_.native(section.value);
               });
    }

    Result<void> append_section(std::string& bytes, const TaggedSection& section,
                                bool is_utf8) const {
        const TextEncoding encoding = is_utf8 ? TextEncoding::Utf8 : store_.reading();
        const std::string value = VELL_TRY(section.number == record_version
                                               ? version_value(section.value, version(), store_)
                                               : store_.store_as(encoding, section.value));
        return coded(append_dataset(bytes, application_record,
                                    static_cast<std::uint8_t>(section.number), value));
    }

    std::string_view version() const {
        const Dataset* old_version = find(application_record, record_version);
        return old_version ? old_version->value : current_version;
    }

    Result<std::string> application_datasets(std::span<const TaggedSection> sections,
                                             bool is_utf8) const {
        std::string bytes;
        // The version comes first, and is that of before where the text has none.
        if (!sections.empty() &&
            std::ranges::count(sections, record_version, &TaggedSection::number) == 0)
            VELL_TRY(coded(append_dataset(bytes, application_record, record_version, version())));
        for (const TaggedSection& section : sections)
            VELL_TRY(append_section(bytes, section, is_utf8));
        return bytes;
    }

    // The sections of one number, which are taken one by one.
    struct Given {
        bool is_named = false;
        std::vector<const TaggedSection*> sections = {};
        std::size_t taken = 0;

        const TaggedSection* take() {
            return taken < sections.size() ? sections[taken++] : nullptr;
        }
    };

    // The sections of a number stand where the datasets of it stood, one for one; what they have
    // more stands at the end.
    Result<std::string> merged_datasets(std::span<const TaggedSection> sections,
                                        bool is_utf8) const {
        std::array<Given, 256> given;
        for (const TaggedSection& section : sections) {
            given[section.number].is_named = true;
            if (!section.value.empty())
                given[section.number].sections.push_back(&section);
        }
        std::string bytes;
        std::string start;
        if (find(application_record, record_version) == nullptr) {
            if (const TaggedSection* section = given[record_version].take())
                VELL_TRY(append_section(bytes, *section, is_utf8));
            else
                VELL_TRY(
                    coded(append_dataset(start, application_record, record_version, version())));
        }
        for (const Dataset& dataset : datasets_) {
            if (dataset.header.record != application_record)
                continue;
            Given& of_number = given[dataset.header.number];
            if (!of_number.is_named) {
                if (!can_be_kept(dataset, is_utf8))
                    return Failure{ErrorCode::BadParameter};
                bytes += dataset.bytes;
            } else if (const TaggedSection* section = of_number.take()) {
                VELL_TRY(append_section(bytes, *section, is_utf8));
            }
        }
        for (const TaggedSection& each : sections)
            if (const TaggedSection* section = given[each.number].take())
                VELL_TRY(append_section(bytes, *section, is_utf8));
        return bytes.empty() ? bytes : start + bytes;
    }

    // Whether what was readable still is when the block is UTF-8, or no longer.
    bool can_be_kept(const Dataset& dataset, bool is_utf8) const {
        if (dataset.header.number == record_version || is_ascii(dataset.value))
            return true;
        return is_utf8 ? declares_utf8() || is_valid_utf8(dataset.value) : !declares_utf8();
    }

    // A declaration of UTF-8 goes with it; any other stays, unless UTF-8 takes its place.
    Result<std::string> envelope_datasets(bool is_utf8) const {
        std::string bytes;
        for (const Dataset& dataset : datasets_) {
            if (dataset.header.record != envelope_record)
                continue;
            const bool is_declaration = dataset.header.number == coded_character_set;
            const bool declares = dataset.value.starts_with(utf8_escape);
            if (!is_declaration || (!is_utf8 && !(declares && writing_.detect_utf8)))
                bytes += dataset.bytes;
        }
        if (is_utf8)
            VELL_TRY(
                coded(append_dataset(bytes, envelope_record, coded_character_set, utf8_escape)));
        return bytes;
    }

    std::vector<Dataset> datasets_;
    IptcWriting writing_;
    const TextStore& store_;
};

} // namespace

Result<std::string> write_iptc(std::string_view existing, std::span<const TaggedSection> sections,
                               const IptcWriting& writing, const TextStore& store) {
    return IptcWriter(existing, writing, store).write(sections);
}

} // namespace vell::metadata
