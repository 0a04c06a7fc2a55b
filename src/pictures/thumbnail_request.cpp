#include "src/pictures/thumbnail_request.h"

#include "src/files/paths/path_parts.h"
#include "src/params/switch_number.h"

#include <charconv>

namespace vell::pictures {
namespace {

using params::Call;
using params::SwitchSet;

// Where the step has its options.
constexpr std::size_t size_position = 3;
constexpr std::size_t square_position = 4;
constexpr std::size_t type_position = 5;

constexpr std::uint32_t largest_thumbnail = 4096;
constexpr std::uint32_t usual_size = 80;

Result<std::uint32_t> size_of(Call& call, const SwitchSet& switches) {
    const std::int32_t given = call.step_option(size_position);
    if (given == Call::not_given)
        return number_in_range(switches, "-MaxSize", 1, largest_thumbnail, usual_size);
    if (given < 1 || given > static_cast<std::int32_t>(largest_thumbnail))
        return Failure{ErrorCode::NumberOutOfRange};
    return static_cast<std::uint32_t>(given);
}

PictureType type_of(Call& call, const SwitchSet& switches) {
    if (const std::int32_t given = call.step_option(type_position); given != Call::not_given)
        return given == 1 ? PictureType::Png : PictureType::Jpeg;
    if (switches.has("-AsPNG"))
        return PictureType::Png;
    return switches.has("-AsJPEG") ? PictureType::Jpeg : PictureType::ByContent;
}

// "RRGGBB" in hexadecimal digits, with or without "#" before them.
Result<Rgb> background_of(const SwitchSet& switches) {
    constexpr std::string_view name = "-Background=";
    constexpr std::size_t capacity = 20;
    if (!switches.has(name))
        return Rgb{};
    std::string text = switches.value(name, capacity).substr(name.size());
    text.erase(0, text.find_first_not_of(" #"));
    text.erase(text.find_last_not_of(' ') + 1);
    std::uint32_t colour = 0;
    const char* end = text.data() + text.size();
    if (text.size() != 6 || std::from_chars(text.data(), end, colour, 16).ptr != end)
        return Failure{ErrorCode::BadParameter};
    return Rgb{static_cast<std::uint8_t>(colour >> 16), static_cast<std::uint8_t>(colour >> 8),
               static_cast<std::uint8_t>(colour)};
}

} // namespace

Result<std::uint32_t> number_in_range(const SwitchSet& switches, std::string_view name,
                                      std::uint32_t least, std::uint32_t most,
                                      std::uint32_t otherwise) {
    if (!switches.has(name))
        return otherwise;
    const std::int64_t number = params::switch_number(switches, name).value_or(-1);
    if (number < least || number > most)
        return Failure{ErrorCode::NumberOutOfRange};
    return static_cast<std::uint32_t>(number);
}

Result<ThumbnailRequest> thumbnail_request_of(Call& call) {
    constexpr std::uint32_t most_pages = 0x7FFF'FFFF;
    const SwitchSet switches = call.switches();
    ThumbnailRequest request;
    request.shape.longer_side = VELL_TRY(size_of(call, switches));
    request.shape.square = call.option(square_position, switches, "-SquareCrop");
    request.shape.may_enlarge = switches.has("-AllowUpscaling");
    request.type = type_of(call, switches);
    request.quality = static_cast<int>(VELL_TRY(number_in_range(switches, "-Quality", 1, 100, 85)));
    request.background = VELL_TRY(background_of(switches));
    request.page = VELL_TRY(number_in_range(switches, "-Page", 1, most_pages, 1));
    return request;
}

std::u16string picture_name(std::u16string_view given, std::u16string_view file,
                            std::u16string_view extension) {
    std::u16string name(given.empty() ? file : given);
    const std::u16string_view present = files::extension_of(name);
    if (!given.empty() && !present.empty())
        return name;
    if (!present.empty())
        name.resize(name.size() - present.size() - 1);
    if (name.empty())
        name = u"picture";
    return name + u'.' + std::u16string(extension);
}

} // namespace vell::pictures
