// Where the encoding data lies on the user's disk. Windows only.
#pragma once

#include <string>
#include <vector>

namespace vell::windows {

// The folder of the data, in UTF-8 and without a limit of length: in the user's local application
// data, or where nothing can be written there, in the temporary folder. When neither has all of it,
// a note says so.
std::string provide_encoding_data(std::vector<std::string>& notes);

} // namespace vell::windows
