#include "src/windows/pictures/shell_pictures.h"

#include "src/base/ascii.h"
#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"
#include "src/pictures/decoding/icon_file.h"
#include "src/windows/com_object.h"
#include "src/windows/desktop/com.h"
#include "src/windows/error_windows.h"
#include "src/windows/pictures/gdi.h"
#include "src/windows/pictures/icon_decoder.h"
#include "src/windows/pictures/icon_resource.h"
#include "src/windows/storage/path.h"
#include "src/windows/text.h"

#include <shellapi.h>
#include <shlobj.h>

#include <algorithm>
#include <array>
#include <atomic>

namespace vell::windows {
namespace {

using namespace pictures;

constexpr std::size_t longest_extension = 130;

// What the shell is asked about: an item that is there, or a name that stands for all of its kind.
struct Subject {
    std::wstring path;
    DWORD attributes = FILE_ATTRIBUTE_NORMAL;
    bool by_name = false;

    bool is_folder() const { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
    bool has_extension(std::u16string_view extension) const {
        return equal_ignoring_case(std::u16string_view(files::extension_of(to_utf16(path))),
                                   extension);
    }
};

// A name with the extension of the path, where there need not be anything.
Subject subject_by_extension(const params::NativePath& path, DWORD attributes) {
    const std::u16string extension(files::extension_of(path.wide).substr(0, longest_extension));
    std::wstring name = L"C:\\x";
    if (!extension.empty() && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        name += L'.' + to_wide(extension);
    return {name, attributes, true};
}

// The shell takes no "/" and no long paths: items there are shown by their names alone.
Result<Subject> subject_of(const params::NativePath& path, IconOf what) {
    if (what == IconOf::Extension)
        return subject_by_extension(path, FILE_ATTRIBUTE_NORMAL);
    const DWORD attributes = GetFileAttributesW(win32_path(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return Failure{last_error()};
    const std::wstring full = VELL_TRY(full_wide_path(to_wide(path.wide)));
    if (full.size() > files::longest_shell_path)
        return subject_by_extension(path, attributes);
    return Subject{full, attributes, false};
}

// Tells the shell of a file that it then does not look for.
class FileDescription final : public ComObject<IFileSystemBindData> {
  public:
    explicit FileDescription(DWORD attributes) { data_.dwFileAttributes = attributes; }

    HRESULT STDMETHODCALLTYPE SetFindData(const WIN32_FIND_DATAW* data) override {
        if (!data)
            return E_POINTER;
        data_ = *data;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetFindData(WIN32_FIND_DATAW* data) override {
        if (!data)
            return E_POINTER;
        *data = data_;
        return S_OK;
    }

  private:
    WIN32_FIND_DATAW data_{};
};

// Null where it cannot be had.
ComPtr<IBindCtx> context_without_file(DWORD attributes) {
    ComPtr<FileDescription> description;
    description.Attach(new FileDescription(attributes));
    ComPtr<IBindCtx> context;
    BIND_OPTS options{};
    options.cbStruct = sizeof options;
    options.grfMode = STGM_CREATE;
    std::wstring name = STR_FILE_SYS_BIND_DATA;
    if (FAILED(CreateBindCtx(0, &context)) || FAILED(context->SetBindOptions(&options)) ||
        FAILED(context->RegisterObjectParam(name.data(), description.Get())))
        return nullptr;
    return context;
}

// Wine gives a bitmap of zeros, which an opaque picture becomes.
bool is_blank(const Picture& picture) {
    const auto is_colour = [&](std::size_t i) {
        return i % picture.components() != 3 && picture.pixels[i] != 0;
    };
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        if (is_colour(i))
            return false;
    return !picture.has_alpha;
}

// What the shell's own pictures are; NoPicture where it has none.
Result<Picture> shell_image(const Subject& subject, std::uint32_t size, SIIGBF flags) {
    static std::atomic<bool> is_implemented = true; // not in every system
    if (!is_implemented)
        return Failure{ErrorCode::NoPicture};
    ComPtr<IBindCtx> context;
    if (subject.by_name)
        context = context_without_file(subject.attributes);
    ComPtr<IShellItemImageFactory> factory;
    if (FAILED(SHCreateItemFromParsingName(subject.path.c_str(), context.Get(),
                                           IID_PPV_ARGS(&factory))))
        return Failure{ErrorCode::NoPicture};
    HBITMAP bitmap = nullptr;
    const auto length = static_cast<LONG>(size);
    const HRESULT result = factory->GetImage({length, length}, flags, &bitmap);
    const UniqueBitmap owner(bitmap);
    // The shell of Windows has an icon for everything, and none that is blank; a thumbnail may fail
    // for reasons of its file.
    const bool wants_icon = (flags & SIIGBF_ICONONLY) != 0;
    if (FAILED(result)) {
        if (wants_icon && result == E_NOTIMPL)
            is_implemented = false;
        return Failure{ErrorCode::NoPicture};
    }
    Picture picture = VELL_TRY(picture_of(owner.get()));
    if (!is_blank(picture))
        return picture;
    if (wants_icon)
        is_implemented = false;
    return Failure{ErrorCode::NoPicture};
}

// A file with icons, and which of them.
struct IconPlace {
    std::wstring file;
    int index = 0;
};

std::wstring expanded(const wchar_t* text) {
    std::array<wchar_t, 2 * MAX_PATH> buffer{};
    const DWORD length =
        ExpandEnvironmentStringsW(text, buffer.data(), static_cast<DWORD>(buffer.size()));
    return length == 0 || length > buffer.size() ? text : buffer.data();
}

// Where the shell says that the icon is; an empty path where it does not.
IconPlace place_by_shell(const Subject& subject) {
    SHFILEINFOW info{};
    const UINT by_name = subject.by_name ? SHGFI_USEFILEATTRIBUTES : 0;
    if (!SHGetFileInfoW(subject.path.c_str(), subject.attributes, &info, sizeof info,
                        SHGFI_ICONLOCATION | by_name))
        return {};
    return {expanded(info.szDisplayName), info.iIcon};
}

struct Link {
    IconPlace icon; // without a file: that of the target
    std::wstring target;
};

// Nothing is looked for: what the link says counts, even where it is outdated.
Result<Link> read_link(const std::wstring& path) {
    ComPtr<IShellLinkW> link;
    VELL_TRY(check_hresult(
        CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&link))));
    ComPtr<IPersistFile> file;
    VELL_TRY(check_hresult(link->QueryInterface(IID_PPV_ARGS(&file))));
    VELL_TRY(check_hresult(file->Load(path.c_str(), STGM_READ | STGM_SHARE_DENY_NONE)));
    Link found;
    std::array<wchar_t, 2 * MAX_PATH> text{};
    const auto capacity = static_cast<int>(text.size());
    if (SUCCEEDED(link->GetIconLocation(text.data(), capacity, &found.icon.index)))
        found.icon.file = expanded(text.data());
    text.fill(0);
    if (SUCCEEDED(link->GetPath(text.data(), capacity, nullptr, 0)))
        found.target = expanded(text.data());
    return found;
}

bool is_on_network(const std::wstring& path) {
    return path.starts_with(L"\\\\") || GetDriveTypeW(path.substr(0, 3).c_str()) == DRIVE_REMOTE;
}

// The bytes of a file, as long as it is not larger than icons are.
Result<std::string> contents_of_icon_file(const std::wstring& path) {
    constexpr std::uint64_t largest = 32 << 20;
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, share_all, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!file || !GetFileSizeEx(file.get(), &size))
        return Failure{last_error()};
    if (static_cast<std::uint64_t>(size.QuadPart) > largest)
        return Failure{ErrorCode::PictureTooLarge};
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD done = 0;
    if (!ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr))
        return Failure{last_error()};
    bytes.resize(done);
    return bytes;
}

// What Windows takes out of programs of other kinds, too.
Result<Picture> private_icon(const IconPlace& place, std::uint32_t size) {
    HICON icon = nullptr;
    UINT number = 0;
    const int length = static_cast<int>(size);
    const bool fits = place.file.size() < MAX_PATH;
    const UINT count = fits ? PrivateExtractIconsW(place.file.c_str(), place.index, length, length,
                                                   &icon, &number, 1, 0)
                            : 0;
    const UniqueIcon owner(icon);
    if (count == 0 || !owner)
        return Failure{ErrorCode::NoPicture};
    return picture_of(owner.get());
}

// The shell counts its own icons by their numbers; in Wine, others come before them.
IconPlace in_numbers(const IconPlace& place) {
    constexpr int most_numbered = 30;
    const std::u16string name(files::last_name(to_utf16(place.file)));
    const bool is_counted = place.index >= 0 && place.index < most_numbered &&
                            equal_ignoring_case(std::u16string_view(name), u"shell32.dll");
    return {place.file, is_counted ? -1 - place.index : place.index};
}

Result<Picture> icon_at(const IconPlace& wanted, std::uint32_t size) {
    const IconPlace place = in_numbers(wanted);
    if (place.file.empty())
        return Failure{ErrorCode::NoPicture};
    auto bytes = icon_resource(place.file, place.index);
    if (!bytes && place.index == 0)
        bytes = contents_of_icon_file(place.file);
    if (bytes) {
        BytesInMemory source(*bytes);
        if (auto picture = decode_icon(source, size))
            return picture;
    }
    return private_icon(place, size);
}

Result<Picture> icon_of_handle(const Subject& subject) {
    SHFILEINFOW info{};
    const UINT by_name = subject.by_name ? SHGFI_USEFILEATTRIBUTES : 0;
    if (!SHGetFileInfoW(subject.path.c_str(), subject.attributes, &info, sizeof info,
                        SHGFI_ICON | SHGFI_LARGEICON | by_name))
        return Failure{ErrorCode::NoPicture};
    const UniqueIcon icon(info.hIcon);
    return picture_of(icon.get());
}

// Of folders and files that the system knows nothing else of.
IconPlace plain_icon(const Subject& subject) {
    constexpr int folder_number = -4;
    return {L"shell32.dll", subject.is_folder() ? folder_number : 0};
}

Subject by_name(const Subject& subject) {
    return subject_by_extension({to_utf16(subject.path), {}}, subject.attributes);
}

Result<Picture> own_icon(const Subject& subject, std::uint32_t size);

Result<Picture> icon_of_link(const Subject& subject, std::uint32_t size) {
    const Link link = VELL_TRY(read_link(subject.path));
    if (!link.icon.file.empty())
        if (auto picture = icon_at(link.icon, size))
            return picture;
    if (link.target.empty())
        return Failure{ErrorCode::NoPicture};
    // A server that does not answer would keep us waiting.
    Subject target{link.target, FILE_ATTRIBUTE_NORMAL, false};
    const DWORD attributes = is_on_network(link.target) ? INVALID_FILE_ATTRIBUTES
                                                        : GetFileAttributesW(link.target.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return own_icon(by_name(target), size);
    target.attributes = attributes;
    if (target.has_extension(u"lnk"))
        target = by_name(target);
    return own_icon(target, size);
}

// Found without the shell's own pictures.
Result<Picture> own_icon(const Subject& subject, std::uint32_t size) {
    if (!subject.by_name && !subject.is_folder() && subject.has_extension(u"lnk"))
        if (auto picture = icon_of_link(subject, size))
            return picture;
    const bool is_program = subject.has_extension(u"exe") || subject.has_extension(u"scr");
    if (!subject.by_name && is_program)
        if (auto picture = icon_at({subject.path, 0}, size))
            return picture;
    if (auto picture = icon_at(place_by_shell(subject), size))
        return picture;
    if (!subject.by_name)
        if (auto picture = icon_at(place_by_shell(by_name(subject)), size))
            return picture;
    if (auto picture = icon_of_handle(subject))
        return picture;
    return icon_at(plain_icon(subject), size);
}

// A file that holds nothing else is its own icon, at every size that it has.
Result<Picture> icon_of_icon_file(const Subject& subject, std::uint32_t size) {
    const bool is_one = !subject.by_name && !subject.is_folder() &&
                        (subject.has_extension(u"ico") || subject.has_extension(u"cur"));
    if (!is_one)
        return Failure{ErrorCode::NoPicture};
    const std::string bytes = VELL_TRY(contents_of_icon_file(subject.path));
    BytesInMemory source(bytes);
    return decode_icon(source, size);
}

Result<Picture> find_icon(const Subject& subject, std::uint32_t size) {
    if (auto picture = icon_of_icon_file(subject, size))
        return picture;
    constexpr SIIGBF flags = SIIGBF_ICONONLY | SIIGBF_SCALEUP;
    if (auto picture = shell_image(subject, size, flags))
        return picture;
    return own_icon(subject, size);
}

} // namespace

Result<Picture> shell_thumbnail(const params::NativePath& path, std::uint32_t size) {
    const NoErrorWindows no_windows;
    const ComApartment apartment;
    const auto subject = subject_of(path, IconOf::Item);
    if (!subject || subject->by_name || subject->is_folder())
        return Failure{ErrorCode::NoPicture};
    const auto picture = shell_image(*subject, size, SIIGBF_THUMBNAILONLY);
    if (!picture)
        return Failure{ErrorCode::NoPicture};
    return std::max(picture->width, picture->height) > size ? fitted(*picture, size) : *picture;
}

Result<Picture> shell_icon(const params::NativePath& path, IconOf what, std::uint32_t size) {
    const NoErrorWindows no_windows;
    const ComApartment apartment;
    const Subject subject = VELL_TRY(subject_of(path, what));
    return fitted_to_square(VELL_TRY(find_icon(subject, size)), size);
}

} // namespace vell::windows
