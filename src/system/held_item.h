// Items that are held: what is done in a held folder is done in that very folder, whatever its path
// leads to meanwhile.
#pragma once

#include "src/system/file_access.h"
#include "src/system/item_properties.h"

#include <memory>
#include <string_view>

namespace vell::files {

// An open file that takes its times before it is closed.
class HeldFile : public File {
  public:
    // As ItemProperties::set_times; what is written later changes them again.
    virtual Result<void> set_times(const NewTimes& times) = 0;
};

// For as long as it lives nobody renames or removes the item, nor a folder above it, as far as the
// volume knows how to keep them from that. Names are those of items that stand right in a folder:
// no path, "." or "..", and nothing at their end that Windows would cut off.
class HeldItem {
  public:
    HeldItem() = default;
    HeldItem(const HeldItem&) = delete;
    HeldItem& operator=(const HeldItem&) = delete;
    virtual ~HeldItem() = default;

    virtual ItemKind kind() const = 0;
    // Whether it is itself a symbolic link, a junction or a mounted volume. Nothing is done in one.
    virtual bool is_link() const = 0;

    // What stands in this folder, be it a link. NotFound; PathTooLong where its path would be.
    virtual Result<std::unique_ptr<HeldItem>> hold(std::u16string_view name) = 0;
    // AlreadyExists when there is anything of that name.
    virtual Result<std::unique_ptr<HeldItem>> make_folder(std::u16string_view name) = 0;
    // As in FileSystem, without following a link that has the name.
    virtual Result<std::unique_ptr<HeldFile>> open_new(std::u16string_view name) = 0;
    virtual Result<std::unique_ptr<HeldFile>> open_emptied(std::u16string_view name) = 0;
};

enum class FollowLink : std::uint8_t { No, Yes };

} // namespace vell::files
