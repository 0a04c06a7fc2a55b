// How the pictures in raw photographs are to be turned, as each maker's files say it.
#pragma once

#include "src/formats/recognition.h"
#include "src/pictures/inside/orientation.h"

namespace vell::pictures {

// Of a file in one of the formats that raw photographs have of their own; nullopt for what says
// nothing.
formats::Read<std::optional<Orientation>> orientation_in_camera_file(formats::Format format,
                                                                     const formats::Window& file);

} // namespace vell::pictures
