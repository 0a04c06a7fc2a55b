// What a drag hands over, as bytes: the list of files (CF_HDROP, a DROPFILES structure) and the
// descriptions of contents without a file (CFSTR_FILEDESCRIPTORW, a FILEGROUPDESCRIPTORW).
#pragma once

#include "src/system/file_access.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vell::dragdrop {

// Text in the system's 8-bit encoding, which old programs hand over.
using NarrowDecoder = std::function<std::u16string(std::string_view)>;

// The paths in a DROPFILES structure, of any number and length; none where it is damaged.
std::vector<std::u16string> dropped_paths(std::string_view bytes, const NarrowDecoder& decode);

// The paths with CR between them; that of a folder ends with "\".
std::u16string path_list(std::span<const std::u16string> paths, files::FileSystem& files);

struct ContentsItem {
    std::u16string name;
    std::optional<std::uint64_t> size; // in bytes, where the source tells it
    bool is_folder = false;
};

std::vector<ContentsItem> described_items(std::string_view bytes);

// Names for items of one new folder: without a path, a device or anything else that Windows takes
// for more than a name, and each one only once.
class FreshNames {
  public:
    std::u16string name_for(std::u16string_view wanted);

  private:
    // By the name in small letters, the number to try when it is wanted once more.
    std::map<std::u16string, std::uint64_t> given_;
};

} // namespace vell::dragdrop
