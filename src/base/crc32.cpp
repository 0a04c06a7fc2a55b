#include "src/base/crc32.h"

#include <libdeflate.h>

namespace vell {

std::uint32_t crc32_of(std::string_view bytes, std::uint32_t before) {
    return libdeflate_crc32(before, bytes.data(), bytes.size());
}

} // namespace vell
