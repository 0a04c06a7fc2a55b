#include "src/archive/disk_room.h"
#include "src/archive/held_folders.h"
#include "src/archive/zip_functions.h"
#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"
#include "src/files/tree/item_names.h"
#include "src/system/system.h"

namespace vell::archive {
namespace {

using files::FollowLink;
using files::HeldItem;
using files::ItemKind;
using params::Call;
using params::SwitchSet;
using params::TextEncoding;

// The step's options by position.
constexpr std::size_t no_archive_folder_option = 3;
constexpr std::size_t overwrite_option = 4;

struct Options {
    bool create_archive_folder = true;
    bool overwrite = false;
    TextEncoding encoding = TextEncoding::AsciiDos;
};

Options options_of(Call& call) {
    // The step's time limit is not looked at: expanding has none.
    const SwitchSet switches = call.switches();
    return {!call.option_is(no_archive_folder_option, 1, switches, "-DontCreateArchiveFolder"),
            call.option_is(overwrite_option, 1, switches, "-OverwriteExisting"),
            encoding_of(switches, TextEncoding::AsciiDos)};
}

NativePath joined(std::u16string_view folder, std::u16string_view name) {
    NativePath path{std::u16string(folder), {}};
    if (!folder.ends_with(u'\\') && !folder.ends_with(u'/'))
        path.wide += u'\\';
    path.wide += name;
    return path;
}

Result<NativePath> archive_path(Call& call, files::FileSystem& files) {
    NativePath path = VELL_TRY(call.path(1));
    const ItemKind kind = files.kind_of(path);
    if (kind != ItemKind::File)
        return Failure{kind == ItemKind::Folder ? ErrorCode::IsAFolder : ErrorCode::NotFound};
    return path;
}

Result<NativePath> destination_folder(Call& call, System& system, const NativePath& archive) {
    if (call.text(2).empty()) {
        NativePath full = VELL_TRY(files::full_path(system.tree(), archive));
        full.wide.resize(full.wide.find_last_of(u"\\/") + 1);
        return full;
    }
    NativePath folder = VELL_TRY(files::path_to_change(call.path(2)));
    switch (system.files().kind_of(folder)) {
    case ItemKind::File:
        return Failure{ErrorCode::AlreadyExists};
    case ItemKind::None:
        return Failure{ErrorCode::NotAFolder};
    case ItemKind::Folder:
        break;
    }
    return folder;
}

// A file's name without "/", or a folder's with one at its end only.
bool is_at_top(std::u16string_view name) {
    return name.find(u'/') >= name.size() - 1;
}

// Expands one archive into one folder.
class Expansion {
  public:
    Expansion(System& system, const NativePath& archive, ZipReader& reader, const Options& options,
              const NameDecoder& decode)
        : system_(system), archive_(archive), reader_(reader), options_(options), decode_(decode) {}

    // Decides on the folder, checks what is known to come, and makes the folder where that is due.
    Result<void> choose_target(const NativePath& destination);
    Result<void> run();

  private:
    // What stands at the top of the archive. The names are counted as they are listed; the paths of
    // the first ones are empty where there are none.
    struct TopItems {
        std::size_t count = 0;
        std::u16string first_file;
        std::u16string first_folder;
    };

    TopItems top_items() const;
    Result<void> expand_into(const NativePath& folder, FollowLink follow);
    Result<void> make_archive_folder(const NativePath& folder);
    Result<void> check_top_item(const std::u16string& path, bool is_file);
    Result<std::u16string> path_of(const EntryInfo& entry) const;
    Result<void> expand(std::uint32_t index, const EntryInfo& entry);
    Result<void> check_room(const NativePath& destination, const NativePath& target);
    Result<void> make_folder(HeldItem& parent, std::u16string_view name, std::u16string_view path);
    Result<std::unique_ptr<files::HeldFile>> open_file(HeldItem& parent, std::u16string_view name,
                                                       std::u16string_view path);

    ItemKind kind_of(const NativePath& path) { return system_.files().kind_of(path); }

    System& system_;
    const NativePath& archive_;
    ZipReader& reader_;
    const Options options_;
    const NameDecoder& decode_;
    std::u16string target_;
    std::optional<HeldFolders> folders_; // of the target
};

Expansion::TopItems Expansion::top_items() const {
    TopItems items;
    for (std::uint32_t i = 0; i < reader_.entry_count(); ++i) {
        const EntryInfo entry = *reader_.entry(i);
        const std::u16string decoded = decoded_name(entry, options_.encoding, decode_);
        std::u16string_view name = decoded;
        items.count += is_at_top(name) ? 1 : 0;
        // The items of an archive of "." stand behind "./", and replace what is there all the same.
        while (name.starts_with(u"./") || name.starts_with(u'/'))
            name.remove_prefix(name.find(u'/') + 1);
        if (!is_at_top(name))
            continue;
        std::u16string& first = name.ends_with(u'/') ? items.first_folder : items.first_file;
        if (!first.empty())
            continue;
        if (auto path = path_of(entry)) // the expansion gets to what has none
            first = *std::move(path);
    }
    return items;
}

Result<void> Expansion::make_archive_folder(const NativePath& folder) {
    if (kind_of(folder) == ItemKind::File) {
        if (!options_.overwrite)
            return Failure{ErrorCode::AlreadyExists};
        return {}; // expanding into it fails
    }
    const Result<void> made = system_.tree().create_folder(folder);
    if (!made && !(options_.overwrite && made.error() == ErrorCode::AlreadyExists))
        return made;
    return {};
}

Result<void> Expansion::check_top_item(const std::u16string& path, bool is_file) {
    if (path.empty())
        return {};
    const ItemKind kind = kind_of(joined(target_, path));
    const bool folder_for_file = is_file && kind == ItemKind::Folder;
    if (folder_for_file || (kind != ItemKind::None && !options_.overwrite))
        return Failure{ErrorCode::AlreadyExists};
    return {};
}

// From here on the target is that very folder.
Result<void> Expansion::expand_into(const NativePath& folder, FollowLink follow) {
    auto held = system_.tree().hold(folder, follow);
    if (held && (*held)->is_link())
        return Failure{ErrorCode::BadName};
    target_ = folder.wide;
    // One that could not be held fails with the first item in it, whose own faults come first.
    Result<HeldFolders::Held> top = Failure{ErrorCode::TargetNotFound};
    if (held && (*held)->kind() == ItemKind::Folder)
        top = HeldFolders::Held(*std::move(held));
    else if (!held)
        top = Failure{target_error(held.error())};
    folders_.emplace(std::move(top), target_);
    return {};
}

Result<void> Expansion::choose_target(const NativePath& destination) {
    target_ = destination.wide;
    const TopItems items = top_items();
    if (items.count < 2 || !options_.create_archive_folder) {
        VELL_TRY(check_top_item(items.first_file, true));
        VELL_TRY(check_top_item(items.first_folder, false));
        VELL_TRY(check_room(destination, destination));
        return expand_into(destination, FollowLink::Yes);
    }
    std::u16string_view name = files::last_name(archive_.wide);
    name = name.substr(0, name.rfind(u'.'));
    name = files::without_cut_ending(name);
    const NativePath folder =
        VELL_TRY(files::path_to_make(joined(target_, without_device_name(name))));
    VELL_TRY(check_room(destination, folder));
    VELL_TRY(make_archive_folder(folder));
    return expand_into(folder, name.empty() ? FollowLink::Yes : FollowLink::No);
}

Result<void> Expansion::check_room(const NativePath& destination, const NativePath& target) {
    const auto path_of_entry = [&](const EntryInfo& entry) -> Result<NativePath> {
        return joined(target.wide, VELL_TRY(path_of(entry)));
    };
    return archive::check_room(system_, reader_, destination, path_of_entry);
}

Result<std::u16string> Expansion::path_of(const EntryInfo& entry) const {
    return entry_path(entry, decoded_name(entry, options_.encoding, decode_));
}

Result<void> Expansion::run() {
    for (std::uint32_t i = 0; i < reader_.entry_count(); ++i)
        VELL_TRY(expand(i, *reader_.entry(i)));
    return {};
}

Result<void> Expansion::expand(std::uint32_t index, const EntryInfo& entry) {
    const std::u16string path = VELL_TRY(path_of(entry));
    if (path.empty())
        return {}; // the target folder itself
    const std::size_t separator = path.rfind(u'\\');
    const std::size_t end = separator == path.npos ? 0 : separator;
    const HeldFolders::Held parent =
        VELL_TRY(folders_->folder(std::u16string_view(path).substr(0, end)));
    const std::u16string_view name = name_as_made(target_, files::last_name(path));
    if (entry.is_folder)
        return make_folder(*parent, name, path);
    const auto file = VELL_TRY(open_file(*parent, name, path));
    return reader_.extract_to_file(index, *file);
}

Result<std::unique_ptr<files::HeldFile>>
Expansion::open_file(HeldItem& parent, std::u16string_view name, std::u16string_view path) {
    // Mostly there is no file yet, and nothing else to ask for.
    auto opened = parent.open_new(name);
    if (!opened && opened.error() == ErrorCode::AlreadyExists) {
        // Held, it is still the same when it is emptied.
        const auto there = parent.hold(name);
        if (there && (*there)->is_link())
            return Failure{ErrorCode::BadName};
        if (system_.files().is_same_file(joined(target_, path), archive_))
            return Failure{ErrorCode::TargetDenied};
        opened = parent.open_emptied(name);
    }
    if (!opened)
        return Failure{target_error(opened.error())};
    return opened;
}

Result<void> Expansion::make_folder(HeldItem& parent, std::u16string_view name,
                                    std::u16string_view path) {
    auto folder = parent.make_folder(name);
    const bool is_there = !folder && folder.error() == ErrorCode::AlreadyExists;
    if (is_there)
        folder = parent.hold(name);
    if (!folder)
        return Failure{target_error(folder.error())};
    if ((*folder)->is_link())
        return Failure{ErrorCode::BadName};
    if ((*folder)->kind() == ItemKind::File)
        return Failure{ErrorCode::TargetNotFound};
    if (is_there && !options_.overwrite)
        return Failure{ErrorCode::FolderExists};
    folders_->add(path, *std::move(folder));
    return {};
}

} // namespace

Result<void> unzip(Call& call, System& system) {
    const NameDecoder decode = [&call](std::string_view bytes, params::TextEncoding encoding) {
        return call.decode(bytes, encoding);
    };
    const Options options = options_of(call);
    const NativePath archive = VELL_TRY(archive_path(call, system.files()));
    const NativePath destination = VELL_TRY(destination_folder(call, system, archive));
    ZipReader reader = VELL_TRY(open_archive(system, archive));
    VELL_TRY(reader.check_overlaps());
    VELL_TRY(reader.check_limits(system.limits()));
    Expansion expansion(system, archive, reader, options, decode);
    VELL_TRY(expansion.choose_target(destination));
    VELL_TRY(expansion.run());
    call.set_done();
    return {};
}

} // namespace vell::archive
