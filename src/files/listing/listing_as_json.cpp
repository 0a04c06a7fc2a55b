#include "src/files/listing/listing_as_json.h"

#include "src/base/json_writer.h"
#include "src/base/utf8.h"
#include "src/params/path_form.h"

namespace vell::files {
namespace {

using params::SwitchSet;

class EntriesAsJson {
  public:
    EntriesAsJson(System& system, const SwitchSet& switches)
        : system_(system), switches_(switches) {
        json_.begin_array();
    }

    void add(const FolderEntry& entry, std::u16string_view name, std::u16string_view path) {
        json_.begin_object();
        json_.member("Name", name);
        json_.member("Path",
                     std::u16string_view(params::path_result(switches_, std::u16string(path))));
        json_.member("Type", entry.is_folder ? "folder" : "file");
        if (entry.is_link)
            json_.member_boolean("Link", true);
        if (!entry.is_folder)
            json_.member_number("Size", entry.size);
        add_time("Created", entry.created);
        add_time("Modified", entry.modified);
        add_time("Accessed", entry.accessed);
        json_.member_boolean("Hidden", entry.is_hidden);
        json_.member_boolean("ReadOnly", entry.is_read_only);
        json_.end_object();
    }
    std::u16string take() {
        json_.end_array();
        return utf16_from_utf8(json_.take());
    }

  private:
    void add_time(std::string_view name, FileTime time) {
        if (time == FileTime{})
            return;
        if (const auto local = system_.properties().local_time_of(time))
            json_.member(name, params::iso_text(local.value()));
    }

    System& system_;
    const SwitchSet& switches_;
    JsonWriter json_;
};

} // namespace

Result<std::u16string> listing_as_json(System& system, const SwitchSet& switches,
                                       const std::u16string& folder, ListingOptions options) {
    EntriesAsJson entries(system, switches);
    options.prefix = folder;
    options.separator = u'\\';
    options.take = [&](const FolderEntry& entry, std::u16string_view path) {
        if (entry.name != u"." && entry.name != u"..") // which are no items of the folder
            entries.add(entry, path.substr(path.rfind(u'\\') + 1), path);
    };
    std::u16string no_text;
    VELL_TRY(FolderLister(system.folders(), std::move(options)).append(folder, no_text));
    return entries.take();
}

} // namespace vell::files
