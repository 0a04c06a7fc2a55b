#include "src/archive/zip_functions.h"
#include "src/archive/zip_writer.h"
#include "src/base/ascii.h"
#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/files/contents/temporary_copy.h"
#include "src/files/listing/folder_lister.h"
#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"
#include "src/files/tree/item_names.h"
#include "src/params/line_endings.h"
#include "src/system/system.h"

#include <algorithm>
#include <new>

namespace vell::archive {
namespace {

using files::ItemKind;
using params::Call;

constexpr int thorough = 9;

// Folders without their links, and without "." and "..".
class OwnItems : public files::FolderSource {
  public:
    explicit OwnItems(files::FolderSource& folders) : folders_(folders) {}

    std::uint64_t links() const { return links_; }

    Result<std::unique_ptr<files::FolderReader>, files::SystemError>
    open_folder(const std::u16string& path) override {
        auto reader = VELL_TRY(folders_.open_folder(path));
        return std::unique_ptr<files::FolderReader>(
            std::make_unique<Reader>(*this, std::move(reader)));
    }

  private:
    class Reader : public files::FolderReader {
      public:
        Reader(OwnItems& owner, std::unique_ptr<files::FolderReader> reader)
            : owner_(owner), reader_(std::move(reader)) {}

        Result<std::size_t, files::SystemError>
        read(std::span<files::FolderEntry> entries) override {
            for (;;) {
                const std::size_t count = VELL_TRY(reader_->read(entries));
                const auto end = entries.begin() + static_cast<std::ptrdiff_t>(count);
                const auto kept =
                    std::remove_if(entries.begin(), end, [&](const files::FolderEntry& entry) {
                        return owner_.leaves_out(entry);
                    });
                if (count == 0 || kept != entries.begin())
                    return static_cast<std::size_t>(kept - entries.begin());
            }
        }

      private:
        OwnItems& owner_;
        std::unique_ptr<files::FolderReader> reader_;
    };

    bool leaves_out(const files::FolderEntry& entry) {
        if (entry.name == u"." || entry.name == u"..")
            return true;
        links_ += entry.is_link ? 1 : 0;
        return entry.is_link;
    }

    files::FolderSource& folders_;
    std::uint64_t links_ = 0;
};

ErrorCode creation_error(ErrorCode code) {
    switch (code) {
    case ErrorCode::NotFound:
    case ErrorCode::FolderNotFound:
        return ErrorCode::PlaceNotFound;
    case ErrorCode::Busy:
        return ErrorCode::CreationDenied;
    case ErrorCode::AlreadyExists:
        return ErrorCode::FileExists;
    case ErrorCode::BadName:
    case ErrorCode::BadParameter:
        return ErrorCode::BadArgument;
    default:
        return code;
    }
}

// The path of an archive that does not exist yet.
Result<NativePath> destination_path(Call& call, files::FileSystem& files) {
    NativePath path = VELL_TRY(call.path(2));
    const std::size_t dot = path.wide.rfind(u'.');
    if (dot == path.wide.npos || dot + 1 == path.wide.size())
        path.wide += u".zip";
    path = VELL_TRY(files::path_to_make(path));
    switch (files.kind_of(path)) {
    case ItemKind::File:
        return Failure{ErrorCode::AlreadyExists};
    case ItemKind::Folder:
        return Failure{ErrorCode::IsAFolder};
    case ItemKind::None:
        break;
    }
    return path;
}

struct EntryName {
    std::string bytes;
    EntryOptions options;
};

EntryName entry_name(std::u16string_view name, bool force_utf8, int level) {
    if (force_utf8 || !is_ascii(name))
        return {utf8_from_utf16(name), {level, true}};
    return {std::string(name.begin(), name.end()), {level, false}};
}

// What goes into an archive of a folder.
struct FolderContents {
    std::u16string folder; // its path, with a separator at the end
    std::u16string prefix; // of all names
    std::u16string lines; // names in the archive, each with a line end; those of folders end in "/"
};

Result<FolderContents> list_contents(Call& call, System& system, std::u16string folder) {
    FolderContents contents{std::move(folder), {}, {}};
    if (!call.switches().has("-DontAddEnclosingFolder"))
        contents.prefix = files::last_name(contents.folder);
    if (!contents.prefix.empty())
        contents.prefix += u'/';
    if (!contents.folder.ends_with(u'\\'))
        contents.folder += u'\\';
    files::ListingOptions options;
    options.files = options.folders = options.recursive = true;
    options.point_folders = options.invisibles = options.aliases = true;
    options.folder_suffix = u"/";
    options.prefix = contents.prefix;
    OwnItems items(system.folders());
    VELL_TRY(
        files::FolderLister(items, std::move(options)).append(contents.folder, contents.lines));
    if (items.links() > 0)
        call.debug_note("CreateZip: links left out: " + to_text(items.links()));
    return contents;
}

Result<void> add_contents(ZipWriter& writer, System& system, const FolderContents& contents,
                          bool force_utf8) {
    constexpr std::size_t longest_name = 1'999;
    for (std::u16string_view rest = contents.lines; !rest.empty();) {
        const std::u16string_view line = rest.substr(0, rest.find(params::line_end));
        rest.remove_prefix(line.size() + 1);
        if (line.size() > longest_name)
            return Failure{ErrorCode::AddFailed};
        if (line.ends_with(u'/')) {
            const EntryName name = entry_name(line, force_utf8, 0);
            VELL_TRY(
                writer.add_folder(name.bytes, dos_time(system.clock().local_time()), name.options));
            continue;
        }
        const EntryName name = entry_name(line, force_utf8, thorough);
        NativePath path{contents.folder, {}};
        path.wide += line.substr(contents.prefix.size());
        std::ranges::replace(path.wide, u'/', u'\\');
        VELL_TRY(writer.add_file(system, name.bytes, path, name.options));
    }
    return {};
}

// Runs `add` over the writer of a new archive, and finishes it.
template <typename Add>
Result<void> write_archive(System& system, const NativePath& path, Add add) {
    auto created = system.files().open_new(path);
    if (!created)
        return Failure{creation_error(created.error())};
    files::UnfinishedFile unfinished(system.files(), path);
    std::unique_ptr<files::File> file = *std::move(created); // closed before it is removed
    std::unique_ptr<ZipWriter> writer;
    try {
        writer = std::make_unique<ZipWriter>(std::move(file));
    } catch (const std::bad_alloc&) {
        return Failure{ErrorCode::EngineFailed};
    }
    VELL_TRY(add(*writer));
    VELL_TRY(writer->finish());
    unfinished.keep();
    return {};
}

} // namespace

Result<void> create_zip(Call& call, System& system) {
    const NativePath source = VELL_TRY(call.path(1));
    const ItemKind kind = system.files().kind_of(source);
    if (kind == ItemKind::None)
        return Failure{ErrorCode::NotFound};
    const NativePath destination = VELL_TRY(destination_path(call, system.files()));
    const NativePath full = VELL_TRY(files::full_path(system.tree(), source));

    if (kind == ItemKind::Folder) {
        // Listed before the archive is made, which may be about to stand in that folder.
        const FolderContents contents = VELL_TRY(list_contents(call, system, full.wide));
        const bool force_utf8 = call.switches().has("-ForceUTF8Filenames");
        VELL_TRY(write_archive(system, destination, [&](ZipWriter& writer) {
            return add_contents(writer, system, contents, force_utf8);
        }));
    } else {
        const EntryName name = entry_name(files::last_name(full.wide), false, thorough);
        VELL_TRY(write_archive(system, destination, [&](ZipWriter& writer) {
            return writer.add_file(system, name.bytes, source, name.options);
        }));
    }
    call.set_done();
    return {};
}

} // namespace vell::archive
