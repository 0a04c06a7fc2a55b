#include "src/archive/zip_functions.h"
#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"
#include "src/files/tree/item_names.h"
#include "src/system/system.h"

namespace vell::archive {
namespace {

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

    // Decides on the folder, makes it where that is due, and checks what is known to come.
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
    Result<void> make_archive_folder(const NativePath& folder);
    Result<void> check_top_item(const std::u16string& path, bool is_file);
    Result<std::u16string> path_of(const EntryInfo& entry) const;
    Result<void> expand(std::uint32_t index, const EntryInfo& entry);
    Result<void> prepare_parent(std::u16string_view parent);
    Result<void> make_folder(const NativePath& path);

    ItemKind kind_of(const NativePath& path) { return system_.files().kind_of(path); }

    System& system_;
    const NativePath& archive_;
    ZipReader& reader_;
    const Options options_;
    const NameDecoder& decode_;
    std::u16string target_;
    // A folder below the target that is there, and no link on the way to it; empty for none.
    std::u16string ready_;
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

Result<void> Expansion::choose_target(const NativePath& destination) {
    target_ = destination.wide;
    const TopItems items = top_items();
    if (items.count < 2 || !options_.create_archive_folder) {
        VELL_TRY(check_top_item(items.first_file, true));
        return check_top_item(items.first_folder, false);
    }
    std::u16string_view name = files::last_name(archive_.wide);
    name = name.substr(0, name.rfind(u'.'));
    name = files::without_cut_ending(name);
    const NativePath folder =
        VELL_TRY(files::path_to_make(joined(target_, without_device_name(name))));
    VELL_TRY(make_archive_folder(folder));
    if (!name.empty() && system_.tree().is_link(folder))
        return Failure{ErrorCode::BadName};
    target_ = folder.wide;
    return {};
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
    if (separator != path.npos)
        VELL_TRY(prepare_parent(std::u16string_view(path).substr(0, separator)));
    const NativePath item = joined(target_, path);
    return entry.is_folder ? make_folder(item)
                           : reader_.extract_to_file(index, system_, item, &archive_);
}

// Makes the folder that an item stands in; the one above it has to be there. One that cannot be
// made shows when the item is.
Result<void> Expansion::prepare_parent(std::u16string_view parent) {
    if (parent == ready_)
        return {};
    for (std::size_t end = 0; end < parent.size();) {
        end = std::min(parent.find(u'\\', end + 1), parent.size());
        const std::u16string_view above = parent.substr(0, end);
        const bool is_known =
            ready_.starts_with(above) && (ready_.size() == end || ready_[end] == u'\\');
        if (!is_known && system_.tree().is_link(joined(target_, above)))
            return Failure{ErrorCode::BadName};
    }
    const NativePath folder = joined(target_, parent);
    if (kind_of(folder) == ItemKind::Folder || system_.tree().create_folder(folder))
        ready_ = parent;
    return {};
}

Result<void> Expansion::make_folder(const NativePath& path) {
    const Result<void> made = system_.tree().create_folder(path);
    if (made)
        return {};
    if (made.error() != ErrorCode::AlreadyExists)
        return Failure{target_error(made.error())};
    if (system_.tree().is_link(path))
        return Failure{ErrorCode::BadName};
    if (kind_of(path) == ItemKind::File)
        return Failure{ErrorCode::TargetNotFound};
    if (!options_.overwrite)
        return Failure{ErrorCode::FolderExists};
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
