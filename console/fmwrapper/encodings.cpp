#include "console/fmwrapper/encodings.h"

#include "console/fmwrapper/guard.h"
#include "src/base/utf16.h"
#include "src/base/utf8.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <vector>

namespace vell::console {

namespace {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

// Code pages by encoding number.
constexpr std::array<UINT, 37> code_pages = {
    CP_ACP, CP_UTF8, 437,   1252,  10000, 28591, 10001, 932,   10003, 949,   1361,  10002, 950,
    10008,  936,     10007, 1251,  28595, 10029, 1250,  28592, 10081, 1254,  28593, 28599, 1257,
    28594,  10004,   1256,  28596, 10006, 1253,  28597, 10005, 1255,  28598, 28605,
};

// Input is converted in pieces whose sizes fit the int parameters of Windows' functions.
constexpr std::size_t piece_bytes = std::size_t{1} << 20;
constexpr std::size_t piece_units = 4096;

std::size_t to_wide(UINT page, std::string_view bytes, char16_t* units, std::size_t room) {
    const int size = MultiByteToWideChar(page, 0, bytes.data(), static_cast<int>(bytes.size()),
                                         reinterpret_cast<wchar_t*>(units), static_cast<int>(room));
    if (size <= 0)
        throw BadCall();
    return static_cast<std::size_t>(size);
}

// One code page: a table of the characters of single bytes and which bytes lead a pair.
class CodePage {
  public:
    explicit CodePage(UINT page) : page_(page) {
        CPINFO info;
        if (!GetCPInfo(page, &info))
            throw BadCall();
        for (int i = 0; i + 1 < MAX_LEADBYTES && info.LeadByte[i] != 0; i += 2) {
            for (unsigned byte = info.LeadByte[i]; byte <= info.LeadByte[i + 1]; ++byte)
                lead_[byte] = true;
        }
        single_ = std::find(lead_.begin(), lead_.end(), true) == lead_.end();
        if (single_)
            read_tables();
    }

    std::u16string decode(std::string_view bytes) const;
    std::size_t encode(std::u16string_view units, char* bytes, std::size_t capacity) const;

  private:
    void read_tables();
    std::string_view next_piece(std::string_view bytes) const;
    std::size_t whole_characters(const char* bytes, std::size_t limit) const;
    std::size_t encode_single(std::u16string_view units, char* bytes, std::size_t capacity) const;
    std::size_t encode_pairs(std::u16string_view units, char* bytes, std::size_t capacity) const;

    UINT page_;
    bool single_ = false; // every byte is a character
    std::array<bool, 256> lead_{};
    std::array<char16_t, 256> units_{};
    std::vector<char> bytes_; // of every unit; "?" for those without
};

void CodePage::read_tables() {
    bytes_.assign(0x10000, '?');
    // Downwards, so that of two bytes with one character the lower stands for it.
    for (int value = 255; value >= 0; --value) {
        const char byte = static_cast<char>(value);
        char16_t& unit = units_[static_cast<std::size_t>(value)];
        to_wide(page_, {&byte, 1}, &unit, 1);
        if (unit != 0xFFFD)
            bytes_[unit] = byte;
    }
}

// A piece from the front that does not end between the two bytes of a character.
std::string_view CodePage::next_piece(std::string_view bytes) const {
    if (bytes.size() <= piece_bytes)
        return bytes;
    std::size_t end = 0;
    while (end < piece_bytes)
        end += lead_[static_cast<unsigned char>(bytes[end])] ? 2 : 1;
    return bytes.substr(0, end);
}

std::u16string CodePage::decode(std::string_view bytes) const {
    std::u16string result;
    if (single_) {
        // GCC 12 may announce more room than was asked for: its number does not count.
        result.resize_and_overwrite(bytes.size(), [&](char16_t* to, std::size_t) {
            for (std::size_t i = 0; i < bytes.size(); ++i)
                to[i] = units_[static_cast<unsigned char>(bytes[i])];
            return bytes.size();
        });
    } else {
        std::size_t size = 0;
        for (std::string_view rest = bytes; !rest.empty();) {
            const std::string_view piece = next_piece(rest);
            size += to_wide(page_, piece, nullptr, 0);
            rest.remove_prefix(piece.size());
        }
        result.resize(size);
        char16_t* to = result.data();
        for (std::string_view rest = bytes; !rest.empty();) {
            const std::string_view piece = next_piece(rest);
            to += to_wide(page_, piece, to, static_cast<std::size_t>(result.data() + size - to));
            rest.remove_prefix(piece.size());
        }
    }
    return result;
}

std::size_t CodePage::encode_single(std::u16string_view units, char* bytes,
                                    std::size_t capacity) const {
    std::size_t written = 0;
    for (std::size_t i = 0; i < units.size() && written < capacity; ++i) {
        bytes[written++] = bytes_[units[i]];
        // A pair of surrogates is one character and one question mark.
        if (is_high_surrogate(units[i]) && i + 1 < units.size() && is_low_surrogate(units[i + 1]))
            ++i;
    }
    return written;
}

// How many bytes of whole characters there are within the limit.
std::size_t CodePage::whole_characters(const char* bytes, std::size_t limit) const {
    std::size_t end = 0;
    while (end < limit) {
        const std::size_t length = lead_[static_cast<unsigned char>(bytes[end])] ? 2 : 1;
        if (end + length > limit)
            break;
        end += length;
    }
    return end;
}

std::size_t CodePage::encode_pairs(std::u16string_view units, char* bytes,
                                   std::size_t capacity) const {
    std::array<char, piece_units * 2> buffer;
    std::size_t written = 0;
    while (!units.empty()) {
        std::size_t length = std::min(units.size(), piece_units);
        if (length < units.size() && is_high_surrogate(units[length - 1]) &&
            is_low_surrogate(units[length]))
            --length;
        const int size = WideCharToMultiByte(
            page_, WC_NO_BEST_FIT_CHARS, reinterpret_cast<const wchar_t*>(units.data()),
            static_cast<int>(length), buffer.data(), static_cast<int>(buffer.size()), "?", nullptr);
        if (size <= 0)
            throw BadCall();
        std::size_t count = static_cast<std::size_t>(size);
        const bool full = count > capacity - written;
        if (full)
            count = whole_characters(buffer.data(), capacity - written);
        std::copy_n(buffer.data(), count, bytes + written);
        written += count;
        if (full)
            break;
        units.remove_prefix(length);
    }
    return written;
}

std::size_t CodePage::encode(std::u16string_view units, char* bytes, std::size_t capacity) const {
    return single_ ? encode_single(units, bytes, capacity) : encode_pairs(units, bytes, capacity);
}

// The code page of an encoding, made when it is first asked for and kept; null for UTF-8.
const CodePage* code_page(std::int32_t encoding) {
    static std::array<std::atomic<const CodePage*>, code_pages.size()> loaded;
    static std::mutex loading;
    if (encoding < 0 || static_cast<std::size_t>(encoding) >= code_pages.size())
        throw BadCall();
    const auto index = static_cast<std::size_t>(encoding);
    if (const CodePage* page = loaded[index].load(std::memory_order_acquire))
        return page;
    const UINT number = code_pages[index] == CP_ACP ? GetACP() : code_pages[index];
    if (number == CP_UTF8)
        return nullptr;
    const std::lock_guard lock(loading);
    if (loaded[index].load(std::memory_order_relaxed) == nullptr)
        loaded[index].store(new CodePage(number), std::memory_order_release);
    return loaded[index].load(std::memory_order_relaxed);
}

} // namespace

std::u16string decode(std::string_view bytes, std::int32_t encoding) {
    if (const CodePage* page = code_page(encoding))
        return page->decode(bytes);
    std::u16string result;
    const std::size_t size = utf16_size(bytes);
    result.resize_and_overwrite(size, [&](char16_t* to, std::size_t) {
        decode_utf8(bytes, to);
        return size;
    });
    return result;
}

std::size_t encode(std::u16string_view units, std::int32_t encoding, char* bytes,
                   std::size_t capacity) {
    const CodePage* page = code_page(encoding);
    return page ? page->encode(units, bytes, capacity) : encode_utf8(units, bytes, capacity);
}

} // namespace vell::console
