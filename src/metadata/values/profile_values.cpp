#include "src/metadata/values/profile_values.h"

#include "src/base/json_writer.h"
#include "src/metadata/icc/icc_fields.h"
#include "src/metadata/icc/icc_texts.h"

#include <string>
#include <utility>

namespace vell::metadata {
namespace {

void add_header(const icc::Header& header, Members& members) {
    for (icc::HeaderField& field : icc::header_fields(header)) {
        const std::string name = member_name(field.name);
        if (field.name == "Illuminant") {
            Values numbers;
            for (const std::uint32_t number : header.illuminant)
                numbers.emplace_back(icc::fixed_number(number));
            members.add(name, std::move(numbers));
        } else {
            members.add(name, field.number ? Value(*field.number) : Value(std::move(field.value)));
        }
        if (!field.meaning.empty())
            members.add(name + "Meaning", std::move(field.meaning));
    }
}

void add_names(const icc::TagTable& tags, icc::Allowance allowance, TextEncoding otherwise,
               const TextDecoder& decoder, Members& members) {
    const auto description = tags.find(icc::signature("desc"));
    if (!description)
        return;
    Members names;
    (void)icc::give_texts(
        description->data, otherwise, allowance, [&](const icc::LocalizedText& text) {
            std::string name = decoder(text.bytes, text.encoding);
            members.add("Description", name); // the first
            names.add(text.language.empty() ? "x-default" : text.language, std::move(name));
            return true;
        });
    if (names.entries().size() > 1)
        members.add("Descriptions", std::move(names));
}

Values tags_of(const icc::TagTable& tags) {
    constexpr std::size_t most_tags = 1000;
    Values listed;
    for (std::size_t i = 0; i < tags.size() && i < most_tags; ++i) {
        const icc::Tag tag = tags[i];
        Members members;
        members.add("Signature", icc::signature_text(tag.entry.name));
        if (!tag.data.empty())
            members.add("Type", icc::signature_text(tag.type()));
        members.add("Size", std::uint64_t{tag.entry.data_size});
        listed.push_back(std::move(members));
    }
    return listed;
}

} // namespace

Members icc_members(std::string_view profile, TextEncoding otherwise, const TextDecoder& decoder) {
    Members members;
    const auto header = icc::Header::read(profile);
    if (!header)
        return members;
    const icc::TagTable tags(profile);
    add_header(*header, members);
    add_names(tags, icc::Allowance(profile.size()), otherwise, decoder, members);
    members.add("Tags", tags_of(tags));
    return members;
}

Members image_members(const ImageHeader& header, std::uint64_t file_size) {
    Members members;
    members.add("Height", header.height);
    members.add("Width", header.width);
    members.add("Depth", header.depth);
    members.add("HorizontalResolution", header.horizontal_resolution);
    members.add("VerticalResolution", header.vertical_resolution);
    members.add("CodecName", header.codec_name);
    members.add("CodecType", header.codec_type);
    members.add("ImageCount", header.image_count);
    members.add("DataSize", file_size);
    return members;
}

std::vector<std::string> icc_names() {
    std::vector<std::string> names{"Description", "Descriptions", "Tags"};
    for (const icc::HeaderField& field : icc::header_fields({})) {
        names.push_back(member_name(field.name));
        names.push_back(names.back() + "Meaning");
    }
    return names;
}

std::vector<std::string> image_names() {
    const Members members = image_members({}, 0);
    std::vector<std::string> names;
    for (const auto& [name, value] : members.entries())
        names.push_back(name);
    return names;
}

} // namespace vell::metadata
