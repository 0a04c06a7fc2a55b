// Where the encoding data lies on the user's disk. Windows only.
#pragma once

#include "src/windows/handle.h"

#include <string>
#include <vector>

namespace vell::windows {

// Where the data may be put; empty for a place that the system does not name.
struct DataPlaces {
    std::wstring local;     // the user's own
    std::wstring temporary; // others may use it, too
};
DataPlaces data_places();

struct EncodingData {
    // In UTF-8 and without a limit of length. One that nothing can be in where the data could not
    // be put anywhere.
    std::string folder;
    // Of the folder in the temporary one, which is the user's alone and stays so meanwhile.
    UniqueFile guard;
};

// Puts the data that are not there yet, or not as they were put there, into the first of the places
// that takes them all. Where none does, notes say why.
EncodingData provide_encoding_data(const DataPlaces& places, std::vector<std::string>& notes);

} // namespace vell::windows
