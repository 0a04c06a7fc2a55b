#include "src/documents/pdf_page_count.h"

#include "src/documents/pdf_syntax.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace vell::documents {
namespace {

constexpr std::string_view key = "/Count";
constexpr std::size_t block_size = 8192;
constexpr std::size_t most_digits = 2000;

// Takes the file's bytes in blocks of any size.
class CountSearch {
  public:
    void add(std::string_view block) {
        while (!block.empty()) {
            if (matched_ == 0) {
                const std::size_t at = block.find(key.front());
                if (at == std::string_view::npos)
                    return;
                block.remove_prefix(at);
            }
            if (take(block.front()))
                block.remove_prefix(1);
        }
    }
    std::uint32_t largest() {
        end_number();
        return largest_;
    }

  private:
    // False when the byte is to be looked at again.
    bool take(char byte) {
        if (matched_ < key.size()) {
            if (byte == key[matched_]) {
                ++matched_;
                return true;
            }
        } else if (is_pdf_digit(byte) && digits_ < most_digits) {
            constexpr std::uint64_t too_large = std::uint64_t{1} << 32;
            number_ = std::min(number_ * 10 + static_cast<unsigned>(byte - '0'), too_large);
            ++digits_;
            return true;
        } else if (is_pdf_white(byte) && digits_ == 0) {
            return true;
        }
        // Only the first byte of the key can begin it anew, and it stands nowhere else in it.
        end_number();
        return false;
    }
    void end_number() {
        if (digits_ > 0 && number_ <= std::numeric_limits<std::uint32_t>::max())
            largest_ = std::max(largest_, static_cast<std::uint32_t>(number_));
        matched_ = 0;
        digits_ = 0;
        number_ = 0;
    }

    std::size_t matched_ = 0;
    std::size_t digits_ = 0;
    std::uint64_t number_ = 0;
    std::uint32_t largest_ = 0;
};

} // namespace

Result<std::uint32_t> largest_count(files::BufferedReader& file) {
    CountSearch search;
    char block[block_size];
    file.seek(0);
    for (;;) {
        const std::size_t count = VELL_TRY(file.read(block));
        if (count == 0)
            return search.largest();
        search.add({block, count});
    }
}

} // namespace vell::documents
