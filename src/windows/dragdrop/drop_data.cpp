#include "src/windows/dragdrop/drop_data.h"

#include "src/dragdrop/dropped_data.h"
#include "src/windows/desktop/com.h"
#include "src/windows/storage/private_items.h"
#include "src/windows/system.h"
#include "src/windows/text.h"

#include <ole2.h>
#include <shlobj.h>

#include <algorithm>
#include <limits>
#include <optional>

namespace vell::dragdrop {
namespace {

using files::FileSystem;
using files::NativePath;
using files::Permission;

CLIPFORMAT descriptor_format() {
    static const UINT format = RegisterClipboardFormatW(CFSTR_FILEDESCRIPTORW);
    return static_cast<CLIPFORMAT>(format);
}

CLIPFORMAT contents_format() {
    static const UINT format = RegisterClipboardFormatW(CFSTR_FILECONTENTS);
    return static_cast<CLIPFORMAT>(format);
}

FORMATETC format_of(CLIPFORMAT format, DWORD media, LONG index = -1) {
    return {format, nullptr, DVASPECT_CONTENT, index, media};
}

// What a data object handed over, to be released.
class Medium {
  public:
    Medium() = default;
    Medium(const Medium&) = delete;
    Medium& operator=(const Medium&) = delete;
    ~Medium() { ReleaseStgMedium(&medium_); }

    bool get(IDataObject& data, FORMATETC format) {
        return data.GetData(&format, &medium_) == S_OK;
    }
    const STGMEDIUM* operator->() const { return &medium_; }

  private:
    STGMEDIUM medium_{};
};

struct LockKind {
    using Type = HGLOBAL;
    static HGLOBAL empty() { return nullptr; }
    static void close(HGLOBAL memory) { GlobalUnlock(memory); }
};

// The bytes of a block of global memory for the life of the object.
class LockedBytes {
  public:
    explicit LockedBytes(HGLOBAL memory) {
        const void* start = memory ? GlobalLock(memory) : nullptr;
        if (!start)
            return;
        lock_ = UniqueResource<LockKind>(memory);
        bytes_ = {static_cast<const char*>(start), GlobalSize(memory)};
    }
    std::string_view bytes() const { return bytes_; }

  private:
    UniqueResource<LockKind> lock_;
    std::string_view bytes_;
};

std::u16string decode_narrow(std::string_view bytes) {
    const int length = static_cast<int>(std::min<std::size_t>(bytes.size(), 32'767));
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    const int written = MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, text.data(), length);
    text.resize(static_cast<std::size_t>(std::max(written, 0)));
    return to_utf16(text);
}

std::vector<ContentsItem> items_in(IDataObject& data) {
    Medium medium;
    if (!medium.get(data, format_of(descriptor_format(), TYMED_HGLOBAL)) ||
        medium->tymed != TYMED_HGLOBAL)
        return {};
    return described_items(LockedBytes(medium->hGlobal).bytes());
}

// What a drop may still write.
class Room {
  public:
    explicit Room(std::uint64_t bytes) : left_(bytes) {}
    Result<void> take(std::uint64_t bytes) {
        exceeded_ |= bytes > left_;
        if (exceeded_)
            return Failure{ErrorCode::ResourceTooLarge};
        left_ -= bytes;
        return {};
    }
    bool is_exceeded() const { return exceeded_; }

  private:
    std::uint64_t left_;
    bool exceeded_ = false;
};

Result<void> copy_stream(IStream& stream, std::optional<std::uint64_t> size, files::File& file,
                         Room& room) {
    stream.Seek({}, STREAM_SEEK_SET, nullptr); // some sources hand it over at its end
    std::uint64_t left = size.value_or(std::numeric_limits<std::uint64_t>::max());
    std::string buffer(64 * 1024, '\0');
    while (left > 0) {
        const ULONG wanted = static_cast<ULONG>(std::min<std::uint64_t>(left, buffer.size()));
        ULONG got = 0;
        VELL_TRY(check_hresult(stream.Read(buffer.data(), wanted, &got)));
        if (got == 0 || got > wanted)
            break;
        VELL_TRY(room.take(got));
        VELL_TRY(file.write(std::string_view(buffer).substr(0, got)));
        left -= got;
    }
    return {};
}

// A message of a mail program: the storage becomes a compound file.
Result<void> write_storage(IStorage& storage, const NativePath& path, Room& room) {
    ComPtr<IStorage> copy;
    VELL_TRY(check_hresult(StgCreateDocfile(as_wide(path.wide),
                                            STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE, 0,
                                            copy.GetAddressOf())));
    VELL_TRY(check_hresult(storage.CopyTo(0, nullptr, nullptr, copy.Get())));
    VELL_TRY(check_hresult(copy->Commit(STGC_DEFAULT)));
    copy.Reset();
    const auto file = VELL_TRY(windows::system().files().open(path, Permission::Read));
    return room.take(VELL_TRY(file->size()));
}

Result<void> write_contents(const Medium& medium, const ContentsItem& item, const NativePath& path,
                            Room& room) {
    if (medium->tymed == TYMED_ISTORAGE)
        return write_storage(*medium->pstg, path, room);
    FileSystem& files = windows::system().files();
    VELL_TRY(files.create_new(path));
    const auto file = VELL_TRY(files.open(path, Permission::Write));
    if (medium->tymed == TYMED_ISTREAM) {
        VELL_TRY(copy_stream(*medium->pstm, item.size, *file, room));
    } else if (medium->tymed == TYMED_HGLOBAL) {
        const LockedBytes locked(medium->hGlobal);
        // A block of memory may be longer than what was put into it.
        const std::string_view bytes =
            locked.bytes().substr(0, item.size.value_or(locked.bytes().size()));
        VELL_TRY(room.take(bytes.size()));
        VELL_TRY(file->write(bytes));
    } else {
        return Failure{ErrorCode::NotSupported};
    }
    return file->close();
}

std::optional<std::u16string> new_folder() {
    const auto path = windows::system().files().temporary_name(u"drop");
    windows::PrivateAccess access;
    if (!path || !CreateDirectoryW(as_wide(path->wide), access.get()))
        return std::nullopt;
    return path->wide;
}

} // namespace

Offer offer_of(IDataObject& data, bool wants_mail) {
    FORMATETC files = format_of(CF_HDROP, TYMED_HGLOBAL);
    Offer offer{.files = data.QueryGetData(&files) == S_OK};
    if (wants_mail && !offer.files) {
        FORMATETC descriptors = format_of(descriptor_format(), TYMED_HGLOBAL);
        offer.mail = data.QueryGetData(&descriptors) == S_OK;
    }
    return offer;
}

std::vector<std::u16string> paths_in(IDataObject& data) {
    Medium medium;
    if (!medium.get(data, format_of(CF_HDROP, TYMED_HGLOBAL)) || medium->tymed != TYMED_HGLOBAL)
        return {};
    return dropped_paths(LockedBytes(medium->hGlobal).bytes(), decode_narrow);
}

std::vector<std::u16string> WrittenFiles::write(IDataObject& data) {
    const std::vector<ContentsItem> items = items_in(data);
    const auto path_of_folder =
        items.empty() || items.size() > limits_.items ? std::nullopt : new_folder();
    if (!path_of_folder)
        return {};
    const auto folder = std::make_shared<Folder>(*path_of_folder);
    FreshNames names;
    Room room(limits_.bytes);
    folders_.push_back(folder);
    for (std::size_t i = 0; i < items.size() && !room.is_exceeded(); ++i) {
        if (items[i].is_folder)
            continue;
        const NativePath path{folder->path() + u"\\" + names.name_for(items[i].name), std::nullopt};
        Medium medium;
        if (!medium.get(data,
                        format_of(contents_format(), TYMED_ISTREAM | TYMED_ISTORAGE | TYMED_HGLOBAL,
                                  static_cast<LONG>(i))))
            continue;
        if (write_contents(medium, items[i], path, room))
            folder->files.push_back(path.wide);
        else
            DeleteFileW(as_wide(path.wide)); // half a message is none
    }
    if (room.is_exceeded()) {
        std::erase(folders_, folder);
        return {};
    }
    return folder->files;
}

WrittenFiles::Folder::~Folder() {
    for (const std::u16string& file : files)
        DeleteFileW(as_wide(file));
    RemoveDirectoryW(as_wide(path_));
}

} // namespace vell::dragdrop
