#include "src/policy/guarded_files.h"

#include "src/policy/limited.h"

namespace vell::policy {

using files::File;
using files::ItemKind;
using files::Permission;
using files::Replace;

namespace {

// The folder that holds the listed one stays where it is meanwhile.
class LimitedReader : public files::FolderReader {
  public:
    LimitedReader(std::unique_ptr<FolderReader> reader, Place place)
        : reader_(std::move(reader)), place_(std::move(place)) {}

    Result<std::size_t, files::SystemError> read(std::span<files::FolderEntry> entries) override {
        if (const auto time = check_time(); !time)
            return Failure{files::SystemError{number(time.error()), time.error()}};
        return reader_->read(entries);
    }

  private:
    std::unique_ptr<FolderReader> reader_;
    Place place_;
};

} // namespace

// What an open file leads to is checked before a byte of it is read, written or cut off.
Result<GuardedFiles::FilePointer> GuardedFiles::checked(Result<FilePointer> opened,
                                                        const Place& place, Access access) {
    FilePointer file = VELL_TRY(std::move(opened));
    VELL_TRY(guard_.check_open(*file, place, access));
    return FilePointer(std::make_unique<LimitedFile<File>>(std::move(file)));
}

Result<GuardedFiles::FilePointer> GuardedFiles::open(const NativePath& path,
                                                     Permission permission) {
    VELL_TRY(check_time());
    const Access access = permission == Permission::Write ? Access::Write : Access::Read;
    const Place place = VELL_TRY(guard_.place(path, access));
    return checked(inner().open(place.path, permission), place, access);
}

Result<GuardedFiles::FilePointer> GuardedFiles::open_shared(const NativePath& path) {
    VELL_TRY(check_time());
    const Place place = VELL_TRY(guard_.place(path, Access::Read));
    return checked(inner().open_shared(place.path), place, Access::Read);
}

// Made at a final path, where a link would not be followed.
Result<GuardedFiles::FilePointer> GuardedFiles::open_new(const NativePath& path) {
    VELL_TRY(check_time());
    const Place place = VELL_TRY(guard_.place(path, Access::Write, LastLink::Itself));
    return checked(inner().open_new(place.path), place, Access::Write);
}

Result<GuardedFiles::FilePointer> GuardedFiles::open_to_write(const NativePath& path) {
    VELL_TRY(check_time());
    const Place place = VELL_TRY(guard_.place(path, Access::Write));
    return checked(inner().open_to_write(place.path), place, Access::Write);
}

// In two steps, so that no file is emptied that turns out to stand elsewhere.
Result<GuardedFiles::FilePointer> GuardedFiles::open_emptied(const NativePath& path) {
    VELL_TRY(check_time());
    const Place place = VELL_TRY(guard_.place(path, Access::Write));
    if (inner().kind_of(place.path) == ItemKind::None)
        return checked(inner().open_new(place.path), place, Access::Write);
    FilePointer file = VELL_TRY(checked(inner().open_to_write(place.path), place, Access::Write));
    VELL_TRY(file->set_end_of_file());
    return file;
}

Result<void> GuardedFiles::create_new(const NativePath& path) {
    VELL_TRY(check_time());
    const Place place = VELL_TRY(guard_.place(path, Access::Write, LastLink::Itself));
    return inner().create_new(place.path);
}

// Whoever makes, copies or moves folders looks at those above, too, and is not refused for that.
Result<Place> GuardedFiles::place_to_compare(const NativePath& path) {
    if (guard_.leads_to_root(path))
        return Place{path};
    return guard_.place(path, Access::Read);
}

ItemKind GuardedFiles::kind_of(const NativePath& path) {
    const auto place = place_to_compare(path);
    return place ? inner().kind_of(place->path) : ItemKind::None;
}

bool GuardedFiles::is_same_file(const NativePath& a, const NativePath& b) {
    const auto first = place_to_compare(a);
    const auto second = place_to_compare(b);
    return first && second && inner().is_same_file(first->path, second->path);
}

Result<void> GuardedFiles::copy(const NativePath& source, const NativePath& target,
                                Replace replace) {
    VELL_TRY(check_time());
    const Place from = VELL_TRY(guard_.place(source, Access::Read));
    const Place to = VELL_TRY(guard_.place(target, Access::Write));
    return inner().copy(from.path, to.path, replace);
}

Result<void> GuardedFiles::rename(const NativePath& source, const NativePath& target,
                                  Replace replace) {
    const Place from = VELL_TRY(guard_.place(source, Access::Delete, LastLink::Itself));
    const Place to = VELL_TRY(guard_.place(target, Access::Write, LastLink::Itself));
    return inner().rename(from.path, to.path, replace);
}

Result<void> GuardedFiles::replace(const NativePath& source, const NativePath& target) {
    const Place from = VELL_TRY(guard_.place(source, Access::Delete, LastLink::Itself));
    const Place to = VELL_TRY(guard_.place(target, Access::Write));
    return inner().replace(from.path, to.path);
}

Result<void> GuardedFiles::remove(const NativePath& path) {
    const Place place = VELL_TRY(guard_.place(path, Access::Delete, LastLink::Itself));
    return inner().remove(place.path);
}

Result<files::NativePath> GuardedFiles::temporary_name(std::u16string_view extension) {
    NativePath path = VELL_TRY(inner().temporary_name(extension));
    guard_.add_own(path);
    return path;
}

Result<GuardedFiles::FilePointer> GuardedFiles::open_private(const NativePath& path,
                                                             const NativePath& like) {
    VELL_TRY(check_time());
    const Place place = VELL_TRY(guard_.place(path, Access::Write, LastLink::Itself));
    const Place model = VELL_TRY(guard_.place(like, Access::Read));
    return checked(inner().open_private(place.path, model.path), place, Access::Write);
}

Result<GuardedFiles::FilePointer> GuardedFiles::open_temporary() {
    FilePointer file = VELL_TRY(inner().open_temporary());
    return FilePointer(std::make_unique<LimitedFile<File>>(std::move(file)));
}

Result<std::unique_ptr<files::FolderReader>, files::SystemError>
GuardedFiles::open_folder(const std::u16string& path) {
    const auto failed = [](ErrorCode code) {
        return Failure{files::SystemError{number(code), code}};
    };
    if (const auto time = check_time(); !time)
        return failed(time.error());
    auto place = guard_.place({path, std::nullopt}, Access::Read);
    if (!place)
        return failed(place.error());
    // The system is to say itself what it has against a path that is allowed.
    auto reader = VELL_TRY(system_.folders().open_folder(place->path.wide));
    return std::unique_ptr<files::FolderReader>(
        std::make_unique<LimitedReader>(std::move(reader), *std::move(place)));
}

} // namespace vell::policy
