// Shell links over the shell's COM objects, which read and write them in memory: so the paths of
// the link files themselves may have any length.
#include "src/system/shell_links.h"
#include "src/windows/desktop/com.h"
#include "src/windows/desktop/item_list.h"
#include "src/windows/parts.h"
#include "src/windows/text.h"

#include <shlobj.h>

namespace vell::windows {

using namespace files;

namespace {

// An alias's texts may have 65,535 characters, of which programs get at most as many as this.
constexpr int text_capacity = 32'768;

using LinkPointer = ComPtr<IShellLinkW>;

Result<void> create_link_object(LinkPointer& link) {
    return check_hresult(
        CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&link)));
}

// A stream over memory that grows, at its start.
Result<void> create_stream(ComPtr<IStream>& stream, std::string_view bytes) {
    VELL_TRY(check_hresult(CreateStreamOnHGlobal(nullptr, TRUE, stream.GetAddressOf())));
    ULONG written = 0;
    VELL_TRY(
        check_hresult(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written)));
    return check_hresult(stream->Seek({}, STREAM_SEEK_SET, nullptr));
}

Result<std::string> contents_of(IStream& stream) {
    STATSTG status{};
    VELL_TRY(check_hresult(stream.Stat(&status, STATFLAG_NONAME)));
    VELL_TRY(check_hresult(stream.Seek({}, STREAM_SEEK_SET, nullptr)));
    std::string bytes(static_cast<std::size_t>(status.cbSize.QuadPart), '\0');
    ULONG done = 0;
    VELL_TRY(check_hresult(stream.Read(bytes.data(), static_cast<ULONG>(bytes.size()), &done)));
    bytes.resize(done);
    return bytes;
}

Result<void> load(LinkPointer& link, std::string_view bytes) {
    VELL_TRY(create_link_object(link));
    ComPtr<IPersistStream> persistent;
    VELL_TRY(check_hresult(link->QueryInterface(IID_PPV_ARGS(&persistent))));
    ComPtr<IStream> stream;
    VELL_TRY(create_stream(stream, bytes));
    const HRESULT loaded = persistent->Load(stream.Get());
    if (FAILED(loaded) && loaded != E_OUTOFMEMORY)
        return Failure{ErrorCode::CorruptStructure}; // what the system says of it is no file's code
    return check_hresult(loaded);
}

// What `get` writes to a buffer; empty where it fails.
template <typename Get>
std::u16string text_from(Get get) {
    std::wstring text(text_capacity, L'\0');
    if (FAILED(get(text.data(), text_capacity)))
        return {};
    text.resize(text.find(L'\0'));
    return to_utf16(text);
}

// The path by the names of the target's item list, which are Unicode.
std::u16string path_of_item_list(LinkPointer& link) {
    PIDLIST_ABSOLUTE list = nullptr;
    if (link->GetIDList(&list) != S_OK)
        return {};
    const UniqueItemList items(list);
    return text_from([&](wchar_t* text, int) {
        return SHGetPathFromIDListW(items.get(), text) ? S_OK : E_FAIL;
    });
}

std::u16string target_of(LinkPointer& link) {
    std::u16string path = text_from(
        [&](wchar_t* text, int capacity) { return link->GetPath(text, capacity, nullptr, 0); });
    // Wine keeps the path itself in the ANSI code page, with "?" for what that lacks.
    constexpr std::size_t verbatim_length = 4; // of "\\?\"
    if (path.find(u'?', verbatim_length) == std::u16string::npos)
        return path;
    std::u16string unicode_path = path_of_item_list(link);
    return unicode_path.empty() ? path : unicode_path;
}

int show_command_of_link(WindowState window) {
    switch (window) {
    case WindowState::Minimized:
        return SW_SHOWMINNOACTIVE; // the one of MS-SHLLINK 2.1, ShowCommand
    case WindowState::Maximized:
        return SW_SHOWMAXIMIZED;
    default:
        return SW_SHOWNORMAL; // links know no hidden windows
    }
}

class Win32ShellLinks : public ShellLinks {
  public:
    Result<std::string> make(const ShellLink& wanted) override {
        const ComApartment apartment;
        LinkPointer link;
        VELL_TRY(create_link_object(link));
        VELL_TRY(check_hresult(link->SetPath(as_wide(wanted.target))));
        VELL_TRY(check_hresult(link->SetShowCmd(show_command_of_link(wanted.window))));
        if (!wanted.arguments.empty())
            VELL_TRY(check_hresult(link->SetArguments(as_wide(wanted.arguments))));
        if (!wanted.description.empty())
            VELL_TRY(check_hresult(link->SetDescription(as_wide(wanted.description))));
        if (!wanted.working_folder.empty())
            VELL_TRY(check_hresult(link->SetWorkingDirectory(as_wide(wanted.working_folder))));
        if (!wanted.icon.empty())
            VELL_TRY(check_hresult(link->SetIconLocation(as_wide(wanted.icon), wanted.icon_index)));

        ComPtr<IPersistStream> persistent;
        VELL_TRY(check_hresult(link->QueryInterface(IID_PPV_ARGS(&persistent))));
        ComPtr<IStream> stream;
        VELL_TRY(create_stream(stream, {}));
        VELL_TRY(check_hresult(persistent->Save(stream.Get(), TRUE)));
        return contents_of(*stream.Get());
    }

    Result<ShellLink> read(std::string_view bytes) override {
        const ComApartment apartment;
        LinkPointer link;
        VELL_TRY(load(link, bytes));
        ShellLink found;
        found.target = target_of(link);
        found.arguments = text_from(
            [&](wchar_t* text, int capacity) { return link->GetArguments(text, capacity); });
        found.description = text_from(
            [&](wchar_t* text, int capacity) { return link->GetDescription(text, capacity); });
        found.working_folder = text_from(
            [&](wchar_t* text, int capacity) { return link->GetWorkingDirectory(text, capacity); });
        int index = 0;
        found.icon = text_from([&](wchar_t* text, int capacity) {
            return link->GetIconLocation(text, capacity, &index);
        });
        found.icon_index = index;
        return found;
    }

    std::u16string track(std::string_view bytes) override {
        const ComApartment apartment;
        LinkPointer link;
        constexpr DWORD most_milliseconds = 3000;
        const DWORD flags =
            static_cast<DWORD>(SLR_NO_UI | SLR_NOUPDATE | SLR_NOSEARCH) | most_milliseconds << 16;
        if (!load(link, bytes) || link->Resolve(nullptr, flags) != S_OK)
            return {};
        return target_of(link);
    }
};

} // namespace

ShellLinks& links() {
    static Win32ShellLinks instance;
    return instance;
}

} // namespace vell::windows
