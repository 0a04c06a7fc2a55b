// The MD5 message digest (RFC 1321), for formats that name their parts by it. It protects nothing.
#pragma once

#include <string>
#include <string_view>

namespace vell {

// Its sixteen bytes.
std::string md5(std::string_view message);

} // namespace vell
