#include "src/metadata/containers/ciff_tags.h"

#include "src/formats/tiff/records.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <numeric>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vell::metadata {
namespace {

using namespace formats;
using ciff::RecordType;
using tiff::FieldType;

namespace tag {
constexpr std::uint16_t image_width = 256;
constexpr std::uint16_t image_length = 257;
constexpr std::uint16_t make = 271;
constexpr std::uint16_t model = 272;
constexpr std::uint16_t orientation = 274;
constexpr std::uint16_t software = 305;
constexpr std::uint16_t date_time = 306;
constexpr std::uint16_t date_time_original = 36867;
constexpr std::uint16_t shutter_speed = 37377;
constexpr std::uint16_t aperture = 37378;
constexpr std::uint16_t exposure_bias = 37380;
constexpr std::uint16_t camera_owner = 42032;
} // namespace tag

struct Tag {
    std::uint16_t number;
    FieldType type;
    std::string value;
};

// A directory whose tags are added in rising order.
class DirectoryBytes {
  public:
    explicit DirectoryBytes(ByteOrder order) : order_(order) {}

    bool empty() const { return tags_.empty(); }
    void add_long(std::uint16_t number, std::uint32_t value) {
        std::string bytes;
        append_integer<std::uint32_t>(bytes, value, order_);
        tags_.push_back({number, FieldType::Long, std::move(bytes)});
    }
    void add_short(std::uint16_t number, std::uint16_t value) {
        std::string bytes;
        append_integer<std::uint16_t>(bytes, value, order_);
        tags_.push_back({number, FieldType::Short, std::move(bytes)});
    }
    void add_text(std::uint16_t number, std::string text) {
        if (text.empty())
            return;
        text += '\0';
        tags_.push_back({number, FieldType::Ascii, std::move(text)});
    }
    // Exactly the number where its denominator is a power of two up to 2^16, as these are.
    void add_rational(std::uint16_t number, FieldType type, double value) {
        constexpr std::int64_t finest = 65'536;
        if (!(std::fabs(value) < 32'767))
            return;
        const std::int64_t numerator = std::llround(value * static_cast<double>(finest));
        const std::int64_t common = std::gcd(numerator, finest);
        std::string bytes;
        append_integer<std::int32_t>(bytes, static_cast<std::int32_t>(numerator / common), order_);
        append_integer<std::int32_t>(bytes, static_cast<std::int32_t>(finest / common), order_);
        tags_.push_back({number, type, std::move(bytes)});
    }

    std::size_t size() const {
        std::size_t size = 2 + tags_.size() * tiff::Entry::size + 4;
        for (const Tag& each : tags_)
            if (each.value.size() > tiff::Entry::inline_size)
                size += each.value.size() + each.value.size() % 2;
        return size;
    }
    // Where the block goes on with it.
    void append_to(std::string& block) const {
        std::size_t place = block.size() + 2 + tags_.size() * tiff::Entry::size + 4;
        std::string values;
        append_integer<std::uint16_t>(block, static_cast<std::uint16_t>(tags_.size()), order_);
        for (const Tag& each : tags_) {
            tiff::Entry entry{.tag = each.number, .type = each.type};
            entry.count = static_cast<std::uint32_t>(each.value.size() / tiff::size_of(each.type));
            if (entry.is_inline()) {
                std::ranges::copy(each.value, entry.value.begin());
            } else {
                entry.set_offset(place + values.size(), order_);
                values += each.value;
                values.append(each.value.size() % 2, '\0');
            }
            append_record(block, entry, order_);
        }
        append_integer<std::uint32_t>(block, 0, order_); // no directory behind it
        block += values;
    }

  private:
    ByteOrder order_;
    std::vector<Tag> tags_;
};

// The first record of each of the types that tags are made of.
class Records {
  public:
    static Read<Records> of(const ciff::File& file) {
        constexpr std::uint64_t longest = 256;
        Records records(file.order);
        for (const RecordType type :
             {RecordType::MakeAndModel, RecordType::Firmware, RecordType::Owner,
              RecordType::CapturedTime, RecordType::ImageInformation, RecordType::Exposure}) {
            const auto found = std::ranges::find(file.records, type, &ciff::Record::type);
            if (found == file.records.end())
                continue;
            Window data = found->data;
            records.bytes_[type] = VELL_TRY(data.read_bytes(longest));
        }
        return records;
    }

    ByteOrder order() const { return order_; }
    std::string bytes(RecordType type) const {
        const auto found = bytes_.find(type);
        return found == bytes_.end() ? std::string() : found->second;
    }
    // Up to its zero byte.
    std::string text(RecordType type) const {
        std::string all = bytes(type);
        all.resize(std::min(all.find('\0'), all.size()));
        return all;
    }
    template <IsRecord Record>
    std::optional<Record> record(RecordType type) const {
        return read_record<Record>(bytes(type), order_);
    }

  private:
    explicit Records(ByteOrder order) : order_(order) {}

    ByteOrder order_;
    std::map<RecordType, std::string> bytes_;
};

std::string date_text(std::uint32_t seconds) {
    const std::chrono::sys_seconds moment{std::chrono::seconds{seconds}};
    const auto days = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date{days};
    const std::chrono::hh_mm_ss time{moment - days};
    char text[32];
    std::snprintf(text, sizeof text, "%04d:%02u:%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

std::uint16_t orientation_of(std::int32_t clockwise_degrees) {
    switch ((clockwise_degrees % 360 + 360) % 360) {
    case 90:
        return 6;
    case 180:
        return 3;
    case 270:
        return 8;
    default:
        return 1;
    }
}

double from_bits(std::uint32_t bits) {
    return std::bit_cast<float>(bits);
}

DirectoryBytes image_directory(const Records& records, const std::string& date) {
    DirectoryBytes directory(records.order());
    const auto image = records.record<ciff::ImageInformation>(RecordType::ImageInformation);
    if (image) {
        directory.add_long(tag::image_width, image->width);
        directory.add_long(tag::image_length, image->height);
    }
    const std::string camera = records.bytes(RecordType::MakeAndModel);
    const std::size_t end_of_make = std::min(camera.find('\0'), camera.size());
    directory.add_text(tag::make, camera.substr(0, end_of_make));
    if (end_of_make < camera.size()) {
        const std::string model = camera.substr(end_of_make + 1);
        directory.add_text(tag::model, model.substr(0, model.find('\0')));
    }
    if (image)
        directory.add_short(tag::orientation, orientation_of(image->rotation));
    directory.add_text(tag::software, records.text(RecordType::Firmware));
    directory.add_text(tag::date_time, date);
    return directory;
}

DirectoryBytes exif_directory(const Records& records, const std::string& date) {
    DirectoryBytes directory(records.order());
    directory.add_text(tag::date_time_original, date);
    if (const auto exposure = records.record<ciff::Exposure>(RecordType::Exposure)) {
        directory.add_rational(tag::shutter_speed, FieldType::SignedRational,
                               from_bits(exposure->shutter_speed));
        const double aperture = from_bits(exposure->aperture);
        if (aperture >= 0)
            directory.add_rational(tag::aperture, FieldType::Rational, aperture);
        directory.add_rational(tag::exposure_bias, FieldType::SignedRational,
                               from_bits(exposure->compensation));
    }
    directory.add_text(tag::camera_owner, records.text(RecordType::Owner));
    return directory;
}

} // namespace

Read<std::string> tags_of_ciff(const ciff::File& file) {
    const Records records = VELL_TRY(Records::of(file));
    const auto captured = records.record<ciff::CapturedTime>(RecordType::CapturedTime);
    const std::string date = captured && captured->seconds != 0 ? date_text(captured->seconds) : "";
    DirectoryBytes image = image_directory(records, date);
    const DirectoryBytes exif = exif_directory(records, date);
    if (image.empty() && exif.empty())
        return std::string();
    std::string block;
    tiff::Header{.order = file.order, .first_directory = tiff::Header::size}.write(block);
    if (exif.empty()) {
        image.append_to(block);
        return block;
    }
    const std::size_t with_pointer = block.size() + image.size() + tiff::Entry::size;
    image.add_long(tiff::tag::exif_directory, static_cast<std::uint32_t>(with_pointer));
    image.append_to(block);
    exif.append_to(block);
    return block;
}

} // namespace vell::metadata
