// The operating system as the bodies of functions see it: what they ask of it stands behind these
// interfaces, one for a subject. The plug-in hands over that of Windows, tests one that they make.
#pragma once

#include "src/base/byte_source.h"
#include "src/params/call.h"
#include "src/system/clock.h"
#include "src/system/commands.h"
#include "src/system/desktop.h"
#include "src/system/digest.h"
#include "src/system/disk_system.h"
#include "src/system/file_access.h"
#include "src/system/final_paths.h"
#include "src/system/folder_reader.h"
#include "src/system/item_properties.h"
#include "src/system/limits.h"
#include "src/system/logs.h"
#include "src/system/pictures.h"
#include "src/system/places.h"
#include "src/system/shell_links.h"
#include "src/system/tree_system.h"

namespace vell {

// A library that stands inside the plug-in.
struct LinkedLibrary {
    std::string name;
    std::string version;
};

class System {
  public:
    virtual ~System() = default;

    virtual files::FileSystem& files() = 0; // files and their bytes
    virtual files::TreeSystem& tree() = 0;  // folders, and the names and places of items
    virtual files::FolderSource& folders() = 0;
    virtual files::ItemProperties& properties() = 0;
    virtual files::FinalPaths& final_paths() = 0;
    virtual files::Places& places() = 0;
    virtual files::DiskSystem& disks() = 0;
    virtual files::ShellLinks& links() = 0;
    virtual files::Desktop& desktop() = 0; // what the user sees and answers
    virtual files::Commands& commands() = 0;
    virtual pictures::PictureSystem& pictures() = 0;
    virtual files::Clock& clock() = 0;
    virtual files::Logs& logs() = 0;
    virtual Result<std::unique_ptr<files::Digest>> new_digest(files::DigestAlgorithm algorithm) = 0;
    // Gives the text of a PDF file as UTF-8 in pieces, each page with a form feed behind it, and
    // adds what is worth a line in the debug log to `notes`.
    virtual Result<void> read_pdf_text(ByteSource& file, const params::ByteSink& sink,
                                       std::vector<std::string>& notes) = 0;
    // Those that were built from sources of others, in the order of their names.
    virtual std::vector<LinkedLibrary> linked_libraries() = 0;
    // What a call may use; there are no limits unless somebody has set them.
    virtual const Limits& limits() {
        static constexpr Limits none;
        return none;
    }
};

} // namespace vell
