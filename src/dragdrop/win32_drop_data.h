// What an OLE data object offers and hands over. Windows only.
#pragma once

#include "src/dragdrop/drop_handlers.h"

#include <objidl.h>

#include <string>
#include <vector>

namespace vell::dragdrop {

// Files that drops have written: contents that had no file of their own. They go with the plug-in's
// shutdown.
class WrittenFiles {
  public:
    // Writes each item of the drop into a new folder below the system's temporary folder and gives
    // the paths of those that could be written.
    std::vector<std::u16string> write(IDataObject& data);
    // What was moved away, or is in use, stays as it is.
    void remove_all();

  private:
    struct Folder {
        std::u16string path;
        std::vector<std::u16string> files;
    };
    std::vector<Folder> folders_;
};

// `wants_mail`: whether contents without a file are to be looked for.
Offer offer_of(IDataObject& data, bool wants_mail);

// The paths of the dragged files; empty where there are none.
std::vector<std::u16string> paths_in(IDataObject& data);

} // namespace vell::dragdrop
