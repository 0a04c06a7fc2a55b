#include "src/metadata/icc/icc_fields.h"

#include "src/base/number_text.h"
#include "src/metadata/icc/icc_texts.h"

#include <algorithm>
#include <utility>

namespace vell::metadata::icc {
namespace {

// Signatures in a description stand with their meaning, where it is known.
using Meaning = std::pair<std::uint32_t, std::string_view>;

constexpr std::array profile_classes{
    Meaning{signature("scnr"), "input device"},  Meaning{signature("mntr"), "display device"},
    Meaning{signature("prtr"), "output device"}, Meaning{signature("link"), "device link"},
    Meaning{signature("spac"), "colour space"},  Meaning{signature("abst"), "abstract"},
    Meaning{signature("nmcl"), "named colours"}};
constexpr std::array platforms{
    Meaning{signature("APPL"), "Apple"}, Meaning{signature("MSFT"), "Microsoft"},
    Meaning{signature("SGI "), "Silicon Graphics"}, Meaning{signature("SUNW"), "Sun Microsystems"}};
constexpr std::array intents{Meaning{0, "perceptual"}, Meaning{1, "media-relative colorimetric"},
                             Meaning{2, "saturation"}, Meaning{3, "ICC-absolute colorimetric"}};

template <std::size_t Size>
std::string_view meaning_in(const std::array<Meaning, Size>& table, std::uint32_t value) {
    const auto* const found = std::ranges::find(table, value, &Meaning::first);
    return found == table.end() ? std::string_view() : found->second;
}

std::string version_text(std::uint32_t version) {
    return to_text(std::uint64_t{version >> 24}) + '.' +
           to_text(std::uint64_t{version >> 20 & 15}) + '.' +
           to_text(std::uint64_t{version >> 16 & 15});
}

std::string hexadecimal(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

std::string profile_id_text(std::string_view id) {
    return std::ranges::all_of(id, [](char c) { return c == '\0'; }) ? "(none)" : hexadecimal(id);
}

std::string flags_text(std::uint32_t flags) {
    return std::string((flags & 1) != 0 ? "embedded" : "not embedded") +
           ((flags & 2) != 0 ? ", only with the image's data" : ", usable on its own");
}

std::string attributes_text(std::uint64_t attributes) {
    const auto choose = [&](unsigned bit, std::string_view set, std::string_view clear) {
        return std::string((attributes >> bit & 1) != 0 ? set : clear);
    };
    return choose(0, "transparency", "reflective") + choose(1, ", matte", ", glossy") +
           choose(2, ", negative", ", positive") + choose(3, ", black and white", ", colour");
}

} // namespace

std::vector<HeaderField> header_fields(const Header& header) {
    const auto signature = [](std::string_view name, std::uint32_t value) {
        return HeaderField{name, signature_text(value)};
    };
    const auto number = [](std::string_view name, std::uint64_t value, std::string meaning = {}) {
        return HeaderField{name, to_text(value), std::move(meaning), value};
    };
    return {
        number("Profile size", header.profile_size),
        signature("CMM", header.preferred_cmm_type),
        {"Version", version_text(header.profile_version)},
        {"Class", signature_text(header.profile_class),
         std::string(meaning_in(profile_classes, header.profile_class))},
        signature("Colour space", header.data_colour_space),
        signature("Connection space", header.connection_space),
        {"Date", date_text(header.creation)},
        signature("Signature", header.file_signature),
        {"Platform", signature_text(header.primary_platform),
         std::string(meaning_in(platforms, header.primary_platform))},
        number("Flags", header.profile_flags, flags_text(header.profile_flags)),
        signature("Manufacturer", header.device_manufacturer),
        signature("Model", header.device_model),
        number("Attributes", header.device_attributes, attributes_text(header.device_attributes)),
        number("Intent", header.rendering_intent,
               std::string(meaning_in(intents, header.rendering_intent & 0xFFFF))),
        {"Illuminant", fixed_numbers_text(header.illuminant)},
        signature("Creator", header.profile_creator),
        {"Profile ID", profile_id_text({header.profile_id.data(), header.profile_id.size()})},
    };
}

std::string fixed_numbers_text(const std::array<std::uint32_t, 3>& numbers) {
    std::string text;
    for (const std::uint32_t number : numbers)
        text += (text.empty() ? "" : " ") + to_text(fixed_number(number), 6);
    return text;
}

} // namespace vell::metadata::icc
