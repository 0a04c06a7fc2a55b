#include "src/files/listing/listing_words.h"

#include "src/base/ascii.h"

#include <string>

namespace vell::files {

ListingOptions listing_words(const params::SwitchSet& switches) {
    ListingOptions options;
    options.files = switches.has("files");
    // The word "folders" is also found in "-AddFolderSuffix", whose "Fol" is painted over for that.
    std::string words(switches.text());
    const std::size_t suffix = find_ignoring_case(words, "-AddFolderSuffix");
    if (suffix != std::string::npos) {
        options.folder_suffix = u"/";
        if (suffix + 7 < words.size())
            words.replace(suffix + 4, 3, "***");
    }
    options.folders = params::SwitchSet(words).has("folders");
    options.point_folders = switches.has("showpointdirs");
    options.invisibles = switches.has("showinvisibles");
    options.aliases = switches.has("showaliases") || switches.has("showshortcuts");
    options.recursive = switches.has("-recursive");
    options.short_names = switches.has("shortnames");
    return options;
}

} // namespace vell::files
