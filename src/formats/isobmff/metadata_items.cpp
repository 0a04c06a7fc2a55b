#include "src/formats/isobmff/metadata_items.h"

#include "src/formats/isobmff/records.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vell::formats::isobmff {
namespace {

constexpr FourCc asset_types[] = {
    "titl"_4cc, "dscp"_4cc, "cprt"_4cc, "perf"_4cc, "auth"_4cc, "gnre"_4cc, "rtng"_4cc,
    "clsf"_4cc, "kywd"_4cc, "albm"_4cc, "yrrc"_4cc, "coll"_4cc, "thmb"_4cc,
};

bool is_classic(FourCc type) {
    return static_cast<std::uint32_t>(type) >> 24 == 0xA9;
}

// Names and means of free items ("----") are full boxes with a text.
Read<std::string> read_text_box(Window content) {
    constexpr std::uint64_t longest_name = 1024;
    VELL_TRY(read_full_box(content));
    return content.read_bytes(longest_name);
}

// The names of "keys", by their number from 1 on. Only their places are kept.
class KeyNames {
  public:
    Read<void> read(Window content) {
        constexpr std::size_t most_keys = 1U << 16U;
        VELL_TRY(read_full_box(content));
        content.skip(sizeof(std::uint32_t)); // how many there are
        return each_box(content.from(content.position()), [&](Box& box) -> Read<void> {
            if (keys_.size() < most_keys)
                keys_.push_back(box);
            return {};
        });
    }
    bool has(std::uint32_t number) const { return number > 0 && number <= keys_.size(); }
    FourCc name_space(std::uint32_t number) const { return keys_[number - 1].type; }
    Read<std::string> name(std::uint32_t number) const {
        constexpr std::uint64_t longest_name = 1024;
        Window content = keys_[number - 1].content;
        return content.read_bytes(longest_name);
    }

  private:
    std::vector<Box> keys_;
};

class ItemWalk {
  public:
    ItemWalk(const MovieFile& movie, const ItemVisitor& visitor)
        : movie_(movie), visitor_(visitor) {}

    Read<void> run() {
        VELL_TRY(each_box(movie_.file(), [&](Box& box) { return read_holder(box); }));
        VELL_TRY(each_box(movie_.movie_box(), [&](Box& box) { return read_holder(box); }));
        std::size_t number = 0;
        return each_box(movie_.movie_box(), [&](Box& box) -> Read<void> {
            if (box.type != "trak"_4cc)
                return {};
            track_ = ++number;
            return each_box(box.content, [&](Box& inner) { return read_holder(inner); });
        });
    }

  private:
    MetadataItem item(ItemSource source, FourCc type, const Window& value) const {
        return {.source = source, .type = type, .name = {}, .track = track_, .value = value};
    }

    Read<void> read_holder(Box& box) {
        switch (box.type) {
        case "uuid"_4cc:
            if (box.user_type == xmp_user_type)
                return visitor_(item(ItemSource::Xmp, box.type, box.content));
            return {};
        case "udta"_4cc:
            return read_user_data(box.content);
        case "meta"_4cc:
            return read_meta(box.content);
        default:
            return {};
        }
    }

    Read<void> read_user_data(const Window& content) {
        BoxWalk walk(content);
        for (;;) {
            auto box = VELL_TRY(if_sound(walk.next()));
            // A box that is open to the end here is the zero that ends QuickTime's lists.
            if (!box || !*box || (*box)->runs_to_the_end)
                return {};
            VELL_TRY(read_user_item(**box));
        }
    }

    Read<void> read_user_item(Box& box) {
        if (box.type == "meta"_4cc)
            return read_meta(box.content);
        if (box.type == "XMP_"_4cc)
            return visitor_(item(ItemSource::Xmp, box.type, box.content));
        if (is_classic(box.type))
            return read_user_text(box);
        if (box.type == "loci"_4cc)
            return read_versioned(box, ItemSource::Location);
        if (std::ranges::find(asset_types, box.type) != std::end(asset_types))
            return read_versioned(box, ItemSource::Asset);
        return visitor_(item(ItemSource::UserData, box.type, box.content));
    }

    Read<void> read_versioned(const Box& box, ItemSource source) {
        Window content = box.content;
        const auto header = VELL_TRY(if_sound(content.read_record<FullBoxHeader>()));
        if (!header)
            return {};
        return visitor_(item(header->is_too_high() ? ItemSource::Skipped : source, box.type,
                             content.from(content.position())));
    }

    // A list of texts, each with its size and language; some programs write a text alone, and some
    // a "data" box as in "ilst".
    Read<void> read_user_text(Box& box) {
        const auto texts = VELL_TRY(text_list(box.content));
        for (const MetadataItem& text : texts) {
            MetadataItem found = text;
            found.type = box.type;
            VELL_TRY(visitor_(found));
        }
        if (!texts.empty())
            return {};
        const auto data = VELL_TRY(find_box(box.content, "data"_4cc));
        if (data && data->content.is_whole())
            return read_value(*data, item(ItemSource::UserText, box.type, box.content));
        return visitor_(item(ItemSource::UserText, box.type, box.content));
    }

    // Empty when the content is no such list.
    Read<std::vector<MetadataItem>> text_list(Window content) {
        constexpr std::size_t most_texts = 256;
        constexpr std::uint64_t header = 4;
        std::vector<MetadataItem> texts;
        while (content.remaining() >= header && texts.size() < most_texts) {
            const auto size = VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big));
            const auto language = VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big));
            if (size > content.remaining()) {
                texts.clear();
                break;
            }
            if (size == 0 && !texts.empty())
                break; // what is left is padding
            MetadataItem text =
                item(ItemSource::UserText, {}, content.part(content.position(), size));
            text.has_language = true;
            text.language = language;
            texts.push_back(std::move(text));
            content.skip(size);
        }
        return texts;
    }

    Read<void> read_meta(Window content) {
        if (VELL_TRY(is_plain_meta(content)))
            return read_boxes_of_meta(content.from(0));
        const auto header = VELL_TRY(if_sound(content.read_record<FullBoxHeader>()));
        if (!header)
            return {};
        if (header->is_too_high())
            return visitor_(item(ItemSource::Skipped, "meta"_4cc, content));
        return read_boxes_of_meta(content.from(content.position()));
    }

    Read<void> read_boxes_of_meta(const Window& boxes) {
        KeyNames keys;
        if (const auto box = VELL_TRY(find_box(boxes, "keys"_4cc)))
            VELL_TRY(if_sound(keys.read(box->content)));
        return each_box(boxes, [&](Box& box) -> Read<void> {
            if (box.type == "uuid"_4cc && box.user_type == xmp_user_type)
                return visitor_(item(ItemSource::Xmp, box.type, box.content));
            if (box.type != "ilst"_4cc)
                return {};
            return each_box(box.content, [&](Box& inner) { return read_item(inner, keys); });
        });
    }

    Read<void> read_item(Box& box, const KeyNames& keys) {
        MetadataItem found = item(ItemSource::Itunes, box.type, box.content);
        const auto number = static_cast<std::uint32_t>(box.type);
        if (keys.has(number)) {
            found.source = ItemSource::Keys;
            found.type = keys.name_space(number);
            found.name = VELL_TRY(keys.name(number));
        }
        if (box.type == "----"_4cc)
            found.name = VELL_TRY(free_name(box.content));
        return each_box(box.content, [&](Box& inner) -> Read<void> {
            return inner.type == "data"_4cc ? read_value(inner, found) : Read<void>();
        });
    }

    // Of a free item: whose it is and how that one calls it, each said once.
    Read<std::string> free_name(const Window& content) {
        std::string name;
        for (const FourCc part : {"mean"_4cc, "name"_4cc}) {
            const auto box = VELL_TRY(find_box(content, part));
            const auto text = box ? VELL_TRY(if_sound(read_text_box(box->content))) : std::nullopt;
            if (text && !text->empty())
                name += (name.empty() ? "" : ":") + *text;
        }
        return name;
    }

    // "data": the type, the language, the value.
    Read<void> read_value(const Box& data, MetadataItem found) {
        Window content = data.content;
        const auto type = VELL_TRY(if_sound(content.read_integer<std::uint32_t>(ByteOrder::Big)));
        const auto locale = VELL_TRY(if_sound(content.read_integer<std::uint32_t>(ByteOrder::Big)));
        if (!type || !locale)
            return {};
        found.value_type = ValueType{*type & 0xFFFFFF};
        found.language = static_cast<std::uint16_t>(*locale & 0xFFFF);
        found.has_language = found.language != 0;
        found.value = content.from(content.position());
        return visitor_(found);
    }

    const MovieFile& movie_;
    const ItemVisitor& visitor_;
    std::size_t track_ = 0;
};

// Up to a zero character, which is passed over.
Read<std::string> read_ended_text(Window& content) {
    constexpr std::size_t longest_text = 4096;
    const std::uint64_t start = content.position();
    std::array<char, longest_text> buffer{};
    const std::string_view bytes(buffer.data(), VELL_TRY(content.read(buffer)));
    const bool is_utf16 = bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE");
    std::size_t end = bytes.find('\0');
    if (is_utf16)
        for (end = 2; end + 1 < bytes.size() && (bytes[end] != 0 || bytes[end + 1] != 0); end += 2)
            ;
    if (end == std::string::npos || end >= bytes.size())
        return fault(Damage::CutOff);
    content.seek(start + end + (is_utf16 ? 2 : 1));
    return std::string(bytes.substr(0, end));
}

struct LocationRecord {
    static constexpr std::size_t size = 13;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::int32_t longitude = 0; // 16 bits behind the point, as the others
    std::int32_t latitude = 0;
    std::int32_t altitude = 0;

    static constexpr auto fields() {
        return std::tuple{Field{1, &LocationRecord::longitude}, Field{5, &LocationRecord::latitude},
                          Field{9, &LocationRecord::altitude}};
    }
};

// The languages of Macintosh by their codes (QuickTime File Format, "Language Code Values").
constexpr std::array<std::string_view, 50> macintosh_languages{
    "eng", "fra", "deu", "ita", "nld", "swe", "spa", "dan", "por", "nor", "heb", "jpn", "ara",
    "fin", "ell", "isl", "mlt", "tur", "hrv", "zho", "urd", "hin", "tha", "kor", "lit", "pol",
    "hun", "est", "lav", "sme", "fao", "fas", "rus", "zho", "nld", "gle", "sqi", "ron", "ces",
    "slk", "slv", "yid", "srp", "mkd", "bul", "ukr", "bel", "uzb", "kaz", "aze",
};

} // namespace

Read<void> each_metadata_item(const MovieFile& movie, const ItemVisitor& visitor) {
    return ItemWalk(movie, visitor).run();
}

Read<LocationInformation> read_location(Window value) {
    LocationInformation location;
    location.language = VELL_TRY(value.read_integer<std::uint16_t>(ByteOrder::Big));
    location.name = VELL_TRY(read_ended_text(value));
    const auto record = VELL_TRY(value.read_record<LocationRecord>());
    location.longitude = from_signed_16_16(record.longitude);
    location.latitude = from_signed_16_16(record.latitude);
    location.altitude = from_signed_16_16(record.altitude);
    if (auto body = VELL_TRY(if_sound(read_ended_text(value))))
        location.astronomical_body = *std::move(body);
    return location;
}

std::string language_of(std::uint16_t code) {
    if (code < macintosh_languages.size())
        return std::string(macintosh_languages[code]);
    std::string letters;
    for (const unsigned shift : {10U, 5U, 0U}) {
        const unsigned letter = code >> shift & 31U;
        if (is_macintosh_language(code) || letter < 1 || letter > 26)
            return "und";
        letters += static_cast<char>('a' + letter - 1);
    }
    return letters;
}

} // namespace vell::formats::isobmff
