#include "src/formats/icc/profile.h"

#include <algorithm>

namespace vell::formats::icc {
namespace {

constexpr std::size_t tags_start = Header::size + sizeof(std::uint32_t); // behind their number

} // namespace

Read<Header> Header::read(std::string_view profile) {
    const auto header = read_record<Header>(profile);
    if (!header)
        return fault(Damage::CutOff);
    if (header->file_signature != signature("acsp"))
        return fault(Damage::Corrupt);
    return *header;
}

TagTable::TagTable(std::string_view profile)
    : profile_(profile),
      announced_(load<std::uint32_t>(profile, Header::size, Header::order).value_or(0)) {
    if (profile.size() > tags_start)
        size_ = std::min<std::size_t>(announced_, (profile.size() - tags_start) / TagEntry::size);
}

Tag TagTable::operator[](std::size_t index) const {
    Tag tag{*read_record<TagEntry>(profile_.substr(tags_start + index * TagEntry::size)), {}};
    if (tag.entry.offset < profile_.size())
        tag.data = profile_.substr(tag.entry.offset, tag.entry.data_size);
    return tag;
}

std::optional<Tag> TagTable::find(std::uint32_t signature) const {
    for (std::size_t i = 0; i < size_; ++i) {
        const Tag tag = (*this)[i];
        if (tag.entry.name == signature)
            return tag;
    }
    return std::nullopt;
}

} // namespace vell::formats::icc
