// Where Poppler finds its encoding data, as far as what drives Poppler needs to know.
#pragma once

#include <string>
#include <vector>

namespace vell::windows {

// The folder, which is there before the first document is read, in UTF-8; the same for the whole
// process. Notes say why where the data could not be put anywhere.
const std::string& encoding_folder(std::vector<std::string>& notes);

} // namespace vell::windows
