// Texts between the tags of an XML document (XML 1.0, sections 2.2 and 2.4).
#pragma once

#include <string>
#include <string_view>

namespace vell {

// Characters that mean something in XML are escaped, those that it cannot hold replaced. Bytes that
// are not UTF-8 are in an encoding that has ASCII's characters where ASCII has them.
std::string escaped_for_xml(std::string_view bytes, bool is_utf8 = true);

} // namespace vell
