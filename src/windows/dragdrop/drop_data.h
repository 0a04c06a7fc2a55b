// What an OLE data object offers and hands over. Windows only.
#pragma once

#include "src/dragdrop/drop_handlers.h"

#include <objidl.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vell::dragdrop {

// What one drop may bring: no source may fill the disk.
struct DropLimits {
    std::size_t items = 10'000;
    std::uint64_t bytes = std::uint64_t{4} << 30; // of all its items together
};

// Files that drops have written: contents that had no file of their own. They go with the plug-in's
// shutdown. Reading from a source lets messages through: during a drop another one may be written,
// and all may be removed.
class WrittenFiles {
  public:
    explicit WrittenFiles(const DropLimits& limits = {}) : limits_(limits) {}

    // Writes each item of the drop into a new folder below the system's temporary folder and gives
    // the paths of those that could be written; none at all for a drop beyond the limits, of which
    // nothing is kept. A storage is counted once it is written.
    std::vector<std::u16string> write(IDataObject& data);
    // What was moved away, or is in use, stays as it is.
    void remove_all() { folders_.clear(); }

  private:
    // A folder of one drop; its files and itself end with the object.
    class Folder {
      public:
        explicit Folder(std::u16string path) : path_(std::move(path)) {}
        Folder(const Folder&) = delete;
        Folder& operator=(const Folder&) = delete;
        ~Folder();

        const std::u16string& path() const { return path_; }
        std::vector<std::u16string> files;

      private:
        std::u16string path_;
    };
    DropLimits limits_;
    std::vector<std::shared_ptr<Folder>> folders_;
};

// `wants_mail`: whether contents without a file are to be looked for.
Offer offer_of(IDataObject& data, bool wants_mail);

// The paths of the dragged files; empty where there are none.
std::vector<std::u16string> paths_in(IDataObject& data);

} // namespace vell::dragdrop
