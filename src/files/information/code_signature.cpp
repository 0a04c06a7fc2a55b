#include "src/files/information/code_signature.h"

#include "src/system/system.h"

#include <array>
#include <cstdio>

namespace vell::files {
namespace {

// At most 99 characters, ASCII.
template <typename... Numbers>
std::u16string formatted(const char* format, Numbers... numbers) {
    std::array<char, 100> text{};
    snprintf(text.data(), text.size(), format, static_cast<unsigned>(numbers)...);
    const std::string_view ascii = text.data();
    return {ascii.begin(), ascii.end()};
}

std::u16string moment(const std::optional<params::CalendarTime>& utc) {
    if (!utc)
        return {};
    return formatted("%04u-%02u-%02uT%02u:%02u:%02uZ", utc->year, utc->month, utc->day, utc->hour,
                     utc->minute, utc->second);
}

void add_line(std::u16string& text, std::u16string_view key, std::u16string_view value) {
    if (!text.empty())
        text += u'\r';
    text.append(key).append(u": ").append(value);
}

} // namespace

Result<void> get_code_sign_info(params::Call& call, System& system) {
    const NativePath path = VELL_TRY(call.path(1));
    const CodeSignature signature = VELL_TRY(system.properties().code_signature(path));
    std::u16string text;
    add_line(text, u"Signed", signature.is_signed ? u"1" : u"0");
    add_line(text, u"Valid", signature.verdict == 0 ? u"1" : u"0");
    if (signature.is_signed && signature.verdict != 0)
        add_line(text, u"Status", formatted("0x%08X", signature.verdict));
    if (signature.certificate) {
        add_line(text, u"Signer", signature.certificate->signer);
        add_line(text, u"Issuer", signature.certificate->issuer);
        add_line(text, u"ValidFrom", moment(signature.certificate->valid_from));
        add_line(text, u"ValidTo", moment(signature.certificate->valid_to));
    }
    call.set_text(text);
    return {};
}

} // namespace vell::files
