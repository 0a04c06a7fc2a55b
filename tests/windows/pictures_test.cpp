// Pictures by Windows' imaging component, and icons of real files.
#include "console/host/host_objects.h"
#include "src/host/bridge/container.h"
#include "src/host/entry/dispatcher.h"
#include "src/windows/desktop/com.h"
#include "src/windows/pictures/gdi.h"
#include "src/windows/pictures/source_stream.h"
#include "src/windows/system.h"
#include "tests/portable/icon_builder.h"
#include "tests/portable/real_files.h"
#include "tests/windows/plugin_fixture.h"

#include <wincodec.h>

#include <cstring>

namespace vell::test {
namespace {

using namespace pictures;

PictureSystem& system_pictures() {
    return windows::system().pictures();
}

std::string text_of(const PictureLayout& layout) {
    EXPECT_TRUE(layout.model == ColourModel::Gray || layout.model == ColourModel::Rgb);
    return std::string(layout.model == ColourModel::Gray ? "gray " : "rgb ") +
           (layout.has_alpha ? "1 " : "0 ") + std::to_string(layout.component_size);
}

// The bytes of all rows; fewer where one cannot be read.
std::string all_rows(PictureRows& rows) {
    const PictureLayout& layout = rows.layout();
    std::string all;
    std::vector<std::byte> row(layout.row_size());
    for (std::uint32_t y = 0; y < layout.height && rows.read_row(row); ++y)
        all.append(reinterpret_cast<const char*>(row.data()), row.size());
    return all;
}

template <typename T>
std::string as_bytes(const std::vector<T>& values) {
    std::string bytes(values.size() * sizeof(T), '\0');
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

// A TIFF file with a frame for each row of pixels in a format; empty where there is no encoder.
struct Frame {
    const GUID* format;
    UINT width;
    std::string row;
    std::vector<WICColor> palette = {};
};

HRESULT add_frame(IWICImagingFactory& factory, IWICBitmapEncoder& encoder, const Frame& source) {
    ComPtr<IWICBitmapFrameEncode> frame;
    ComPtr<IWICPalette> palette;
    HRESULT result = encoder.CreateNewFrame(&frame, nullptr);
    if (FAILED(result) || FAILED(result = frame->Initialize(nullptr)) ||
        FAILED(result = frame->SetSize(source.width, 1)))
        return result;
    WICPixelFormatGUID format = *source.format;
    if (FAILED(result = frame->SetPixelFormat(&format)))
        return result;
    EXPECT_TRUE(format == *source.format);
    if (!source.palette.empty()) {
        std::vector<WICColor> colours = source.palette;
        factory.CreatePalette(&palette);
        palette->InitializeCustom(colours.data(), static_cast<UINT>(colours.size()));
        frame->SetPalette(palette.Get());
    }
    std::string row = source.row;
    result = frame->WritePixels(1, static_cast<UINT>(row.size()), static_cast<UINT>(row.size()),
                                reinterpret_cast<BYTE*>(row.data()));
    return FAILED(result) ? result : frame->Commit();
}

std::string tiff_of(const std::vector<Frame>& frames) {
    const ComApartment apartment;
    ComPtr<IWICImagingFactory> factory;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IStream> stream;
    if (FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                IID_PPV_ARGS(&factory))) ||
        FAILED(CreateStreamOnHGlobal(nullptr, TRUE, &stream)) ||
        FAILED(factory->CreateEncoder(GUID_ContainerFormatTiff, nullptr, &encoder)) ||
        FAILED(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache)))
        return {};
    for (const Frame& frame : frames)
        EXPECT_GE(add_frame(*factory.Get(), *encoder.Get(), frame), 0);
    if (FAILED(encoder->Commit()))
        return {};
    STATSTG status{};
    stream->Stat(&status, STATFLAG_NONAME);
    std::string bytes(static_cast<std::size_t>(status.cbSize.QuadPart), '\0');
    ULONG done = 0;
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &done);
    return bytes;
}

TEST(SystemPictures, FramesOfEveryFormatKeepTheirNumbers) {
    const std::vector<WICColor> palette = {0xFF010203, 0xFF040506};
    const std::vector<std::uint16_t> words = {1, 2, 3, 40000, 50000, 60000};
    const std::vector<std::uint16_t> with_alpha = {1, 2, 3, 65535, 50000, 60000, 7, 30000};
    const std::string grays("\x00\x80\xFF", 3);
    const struct {
        Frame frame;
        std::string layout; // model, whether with alpha, bytes of a component
        std::string row;
    } cases[] = {
        {{&GUID_WICPixelFormat8bppGray, 3, grays}, "gray 0 1", grays},
        {{&GUID_WICPixelFormat24bppBGR, 2, "\x01\x02\x03\x04\x05\x06"},
         "rgb 0 1",
         "\x03\x02\x01\x06\x05\x04"},
        {{&GUID_WICPixelFormat32bppBGRA, 1, "\x01\x02\x03\x80"}, "rgb 1 1", "\x03\x02\x01\x80"},
        {{&GUID_WICPixelFormat48bppRGB, 2, as_bytes(words)}, "rgb 0 2", as_bytes(words)},
        {{&GUID_WICPixelFormat64bppRGBA, 2, as_bytes(with_alpha)}, "rgb 1 2", as_bytes(with_alpha)},
        {{&GUID_WICPixelFormat8bppIndexed, 3, std::string("\x01\x00\x01", 3), palette},
         "rgb 0 1",
         "\x04\x05\x06\x01\x02\x03\x04\x05\x06"},
        {{&GUID_WICPixelFormatBlackWhite, 3, "\xA0"}, "gray 0 1", std::string("\xFF\x00\xFF", 3)},
    };
    std::vector<Frame> frames;
    for (const auto& c : cases)
        frames.push_back(c.frame);
    const std::string file = tiff_of(frames);
    ASSERT_FALSE(file.empty());
    BytesInMemory bytes(file);
    for (std::uint32_t i = 0; i < std::size(cases); ++i) {
        const auto rows = system_pictures().decode(bytes, i);
        ASSERT_TRUE(rows) << i << ' ' << number(rows.error());
        EXPECT_EQ(text_of((*rows)->layout()), cases[i].layout) << i;
        EXPECT_EQ(all_rows(**rows), cases[i].row) << i;
    }
    EXPECT_EQ(system_pictures().decode(bytes, 7).error(), ErrorCode::BadParameter);
    BytesInMemory text("this is a text and no picture");
    EXPECT_EQ(system_pictures().decode(text, 0).error(), ErrorCode::NotSupported);
}

double cpu_seconds() {
    FILETIME created, ended, kernel, user;
    GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user);
    const auto ticks = [](const FILETIME& time) {
        return static_cast<double>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
    };
    return (ticks(kernel) + ticks(user)) / 1e7;
}

TEST(SystemPictures, RealFilesAreReadOrRefusedInBoundedTime) {
    const auto files = test::real_files({"picture", "picture-hostile"});
    if (files.empty())
        GTEST_SKIP() << test::no_real_files;
    std::size_t shown = 0;
    for (const auto& path : files) {
        const std::string file = test::bytes_of(path);
        BytesInMemory bytes(file);
        const double start = cpu_seconds();
        const auto rows = system_pictures().decode(bytes, 0);
        shown += rows && !all_rows(**rows).empty();
        EXPECT_LT(cpu_seconds() - start, 10.0) << path; // less than one, where nothing is amiss
    }
    EXPECT_GT(shown, files.size() / 2);
}

TEST(SystemPictures, StreamsOverBytesKeepToTheirRules) {
    ComPtr<IStream> kept;
    {
        BytesInMemory bytes("0123456789");
        const windows::SourceStream source(bytes);
        IStream* const stream = source.get();
        char read[20] = {};
        ULONG count = 0;
        LARGE_INTEGER move{};
        ULARGE_INTEGER position{};
        move.QuadPart = -3;
        EXPECT_EQ(stream->Seek(move, STREAM_SEEK_END, &position), S_OK);
        EXPECT_EQ(position.QuadPart, 7u);
        ComPtr<IStream> clone;
        EXPECT_EQ(stream->Clone(&clone), S_OK);
        EXPECT_EQ(stream->Read(read, 20, &count), S_FALSE);
        EXPECT_EQ(std::string(read, count), "789");
        EXPECT_EQ(clone->Read(read, 2, nullptr), S_OK); // from its own position
        EXPECT_EQ(std::string(read, 2), "78");
        move.QuadPart = -11;
        EXPECT_EQ(stream->Seek(move, STREAM_SEEK_CUR, nullptr), STG_E_INVALIDFUNCTION);
        EXPECT_EQ(stream->Seek(move, 9, nullptr), STG_E_INVALIDFUNCTION);
        EXPECT_EQ(stream->Write("x", 1, &count), STG_E_ACCESSDENIED);
        EXPECT_EQ(stream->Read(nullptr, 1, &count), STG_E_INVALIDPOINTER);
        move.QuadPart = 1000;
        EXPECT_EQ(stream->Seek(move, STREAM_SEEK_SET, nullptr), S_OK);
        EXPECT_EQ(stream->Read(read, 1, &count), S_FALSE);
        EXPECT_EQ(count, 0u);
        STATSTG status{};
        EXPECT_EQ(stream->Stat(&status, STATFLAG_NONAME), S_OK);
        EXPECT_EQ(status.cbSize.QuadPart, 10u);
        ComPtr<IStream> target;
        ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, &target), S_OK);
        ULARGE_INTEGER all{};
        all.QuadPart = 100;
        ULARGE_INTEGER written{};
        EXPECT_EQ(clone->CopyTo(target.Get(), all, nullptr, &written), S_OK);
        EXPECT_EQ(written.QuadPart, 1u);
        kept = clone;
    }
    char read = 0;
    LARGE_INTEGER start{};
    EXPECT_EQ(kept->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_TRUE(FAILED(kept->Read(&read, 1, nullptr))); // the bytes are gone
}

// A square bitmap of one colour for an icon, 32 bits deep.
std::string square(std::uint32_t size, const std::string& blue_green_red_alpha) {
    std::string rows;
    for (std::uint32_t i = 0; i < size * size; ++i)
        rows += blue_green_red_alpha;
    rows += std::string(std::size_t{(size + 31) / 32 * 4} * size, '\0');
    return test::icon_bitmap(size, size, 32, {}, rows);
}

class Icons : public PluginWithFolder {
  protected:
    // The colour of a picture of one colour; a code; "mixed".
    std::string colour_of(const std::u16string& item, std::uint32_t size,
                          IconOf what = IconOf::Item) {
        const auto icon = system_pictures().icon({item, {}}, what, size);
        if (!icon)
            return std::to_string(number(icon.error()));
        EXPECT_EQ(icon->width, size);
        EXPECT_EQ(icon->height, size);
        EXPECT_TRUE(icon->has_alpha);
        EXPECT_EQ(icon->pixels.size(), std::size_t{size} * size * 4);
        for (std::size_t i = 4; i < icon->pixels.size(); ++i)
            if (icon->pixels[i] != icon->pixels[i - 4])
                return "mixed";
        char text[9];
        std::snprintf(text, sizeof text, "%02X%02X%02X%02X", icon->pixels[0], icon->pixels[1],
                      icon->pixels[2], icon->pixels[3]);
        return text;
    }
    std::u16string icon_file() {
        return folder.file(L"two \u65E5.ico", test::icon_file({square(16, "\x01\x02\x03\x80"),
                                                               square(48, "\x0A\x0B\x0C\xFF")}));
    }
};

TEST_F(Icons, FilesShowTheBestOfTheirPictures) {
    const std::u16string file = icon_file();
    EXPECT_EQ(colour_of(file, 16), "03020180");
    EXPECT_EQ(colour_of(file, 17), "0C0B0AFF");
    EXPECT_EQ(colour_of(file, 48), "0C0B0AFF");
    EXPECT_EQ(colour_of(file, 256), "0C0B0AFF");

    // A link shows its own icon, or what its target shows.
    const auto make_link = [&](const char16_t* switches, const std::u16string& target,
                               const wchar_t* name) {
        EXPECT_EQ(call(u"VlFile_CreateAlias", {switches, target, path(name)}), u"0");
        return path(name);
    };
    const std::u16string text = folder.file(L"a.txt", "x");
    const std::u16string plain_link = make_link(u"", text, L"plain.lnk");
    EXPECT_NE(colour_of(plain_link, 32), "0C0B0AFF");
    const std::u16string own_icon = u"-Icon=\"" + file + u"\"";
    EXPECT_EQ(colour_of(make_link(own_icon.c_str(), text, L"own.lnk"), 16), "03020180");
}

TEST_F(Icons, EverythingThatExistsHasOne) {
    wchar_t windows[MAX_PATH];
    GetWindowsDirectoryW(windows, MAX_PATH);
    const std::u16string notepad = to_utf16(windows) + u"\\notepad.exe";
    const std::u16string long_path = folder.file(deep_name + L"x.txt", "x");
    for (const auto& item : {folder.file(L"x.unknown-kind", "x"), path(), notepad, long_path,
                             std::u16string(u"C:\\"), std::u16string(u"C:/windows")})
        for (const std::uint32_t size : {16u, 31u, 256u})
            EXPECT_EQ(colour_of(item, size), "mixed") << size;
    EXPECT_EQ(colour_of(path(L"none.txt"), 32), "-43");
    EXPECT_EQ(colour_of(path(L"none\\none.txt"), 32), "-120");
    for (const char16_t* name : {u"none.txt", u"Q:\\none\\none.exe", u"none"})
        EXPECT_EQ(colour_of(name, 32, IconOf::Extension), "mixed");
    // Contents do not matter where only the name does.
    EXPECT_NE(colour_of(icon_file(), 16, IconOf::Extension), "03020180");
    // What is no icon but for its name.
    EXPECT_EQ(colour_of(folder.file(L"broken.ico", "not an icon"), 32), "mixed");
}

TEST_F(Icons, AreContainersOnServersToo) {
    PluginHostOptions options;
    options.application_type = server;
    start(options);
    const std::vector<Value> arguments = {u"-MaxSize=48", icon_file(), u"mine"};
    const auto result = host().call_body(4307, host::dispatch, arguments);
    ASSERT_TRUE(result);
    const console::ContainerPtr value = console::to_value(result->get()).container();
    const auto* const container = dynamic_cast<const console::HostContainer*>(value.get());
    ASSERT_TRUE(container);
    EXPECT_EQ(container->file_name(), u"mine.png");
    std::string png;
    const auto read = host::read_main_stream(container->get(), [&](std::string_view piece) {
        png += piece;
        return Result<void>();
    });
    ASSERT_TRUE(read);
    BytesInMemory bytes(png);
    const auto rows = system_pictures().decode(bytes, 0); // by another decoder than wrote it
    ASSERT_TRUE(rows);
    EXPECT_EQ((*rows)->layout().width, 48u);
    EXPECT_TRUE(all_rows(**rows).starts_with("\x0C\x0B\x0A"));
}

TEST_F(Icons, NothingIsLeftBehind) {
    const std::u16string file = icon_file();
    const std::u16string text = folder.file(L"a.txt", "x");
    const std::string tiff =
        tiff_of({{&GUID_WICPixelFormat24bppBGR, 2, "\x01\x02\x03\x04\x05\x06"}});
    const auto work = [&] {
        colour_of(file, 32);
        colour_of(text, 32);
        colour_of(u"x.bmp", 32, IconOf::Extension);
        BytesInMemory bytes(tiff);
        EXPECT_TRUE(system_pictures().decode(bytes, 0));
        EXPECT_EQ(system_pictures().shell_thumbnail({text, {}}, 64).error(), ErrorCode::NoPicture);
    };
    const auto counts = [] {
        DWORD handles = 0;
        GetProcessHandleCount(GetCurrentProcess(), &handles);
        return std::array{GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS),
                          GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS), handles};
    };
    work();
    const auto before = counts();
    for (int i = 0; i < 200; ++i)
        work();
    const auto after = counts();
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_LE(after[i], before[i] + 10) << i;
}

TEST_F(Icons, ThreadsDoNotMeet) {
    const std::u16string file = icon_file();
    const std::u16string text = folder.file(L"a.txt", "x");
    const std::string expected = colour_of(text, 32);
    in_threads(4, [&](std::size_t) {
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(colour_of(file, 16), "03020180");
            EXPECT_EQ(colour_of(text, 32), expected);
        }
    });
}

// Handles of icons, which Windows gives for what its shell draws itself.
TEST(IconHandles, AlphaAndMasksAreKept) {
    using Bytes = std::vector<std::uint8_t>;
    const struct {
        const char* what;
        Bytes colours; // none for an icon that is its mask
        Bytes mask;    // rows of 16 bits
        Bytes pixels;
    } cases[] = {
        {"alpha",
         {1, 2, 3, 128, 4, 5, 6, 255, 7, 8, 9, 255, 10, 11, 12, 64},
         {0x80, 0, 0, 0},
         {3, 2, 1, 128, 6, 5, 4, 255, 9, 8, 7, 255, 12, 11, 10, 64}},
        {"mask",
         {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 0},
         {0x80, 0, 0, 0},
         {0, 0, 0, 0, 6, 5, 4, 255, 9, 8, 7, 255, 12, 11, 10, 255}},
        {"mask above, and below it white on the right",
         {},
         {0x80, 0, 0, 0, 0x40, 0, 0x40, 0},
         {0, 0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 255, 255, 255, 255, 255}},
    };
    for (const auto& [what, colours, mask, pixels] : cases) {
        ICONINFO info{};
        info.fIcon = TRUE;
        info.hbmColor = colours.empty() ? nullptr : CreateBitmap(2, 2, 1, 32, colours.data());
        info.hbmMask = CreateBitmap(2, static_cast<int>(mask.size() / 2), 1, 1, mask.data());
        const windows::UniqueIcon icon(CreateIconIndirect(&info));
        DeleteObject(info.hbmColor);
        DeleteObject(info.hbmMask);
        if (!icon)
            GTEST_SKIP() << "no icons without a display";
        const auto picture = windows::picture_of(icon.get());
        ASSERT_TRUE(picture) << what;
        EXPECT_EQ(picture->pixels, pixels) << what;
    }
}

} // namespace
} // namespace vell::test
