#include "console/host/container_file.h"

#include "console/host/image_size.h"
#include "console/host/plugin_file.h"
#include "console/host/wide_text.h"
#include "console/model/unicode.h"

#include <windows.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>

namespace vell::console {

namespace {

using ByteVector = std::vector<std::byte>;

Result<ByteVector, std::string> file_bytes(const std::wstring& path) {
    std::error_code code;
    const std::uintmax_t size = std::filesystem::file_size(path, code);
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (code || !file)
        return Failure{"there is no readable file " + narrow(path)};
    if (size > std::numeric_limits<std::uint32_t>::max())
        return Failure{narrow(path) + " is larger than a container can hold"};
    ByteVector bytes(static_cast<std::size_t>(size));
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (file.gcount() != static_cast<std::streamsize>(bytes.size()))
        return Failure{narrow(path) + " cannot be read to its end"};
    return bytes;
}

void add_stream(fm::BinaryData* container, std::string_view type, const ByteVector& bytes) {
    const HostQuadChar code = make_quad_char(type);
    CallStatus status;
    FM_BinaryData_Add(container, code.get(), static_cast<std::uint32_t>(bytes.size()), bytes.data(),
                      status);
    status.check();
}

ByteVector stream_bytes(const fm::BinaryData* container, const ContainerStream& stream) {
    ByteVector bytes(stream.size);
    CallStatus status;
    FM_BinaryData_GetData(container, stream.index, 0, stream.size, bytes.data(), status);
    status.check();
    return bytes;
}

const ContainerStream* find_stream(const std::vector<ContainerStream>& streams,
                                   std::string_view type) {
    const auto found = std::find_if(streams.begin(), streams.end(),
                                    [type](const auto& stream) { return stream.type == type; });
    return found == streams.end() ? nullptr : &*found;
}

const ContainerStream* main_stream(const fm::BinaryData* container,
                                   const std::vector<ContainerStream>& streams) {
    constexpr std::string_view by_preference[] = {"FILE", "ZLIB", "PDF ", "JPEG", "PNGf",
                                                  "GIFf", "BMPf", "EPS ", "META", "snd "};
    if (const ContainerStream* main = find_stream(streams, "MAIN"); main && main->size >= 4) {
        const ByteVector name = stream_bytes(container, *main);
        const std::string type(reinterpret_cast<const char*>(name.data()), 4);
        if (const ContainerStream* named = find_stream(streams, type))
            return named;
    }
    for (std::string_view type : by_preference) {
        if (const ContainerStream* stream = find_stream(streams, type))
            return stream;
    }
    return nullptr;
}

// Expands a gzip or zlib stream.
Result<ByteVector, std::string> expanded(ByteVector compressed) {
    constexpr int any_header = 15 + 32; // largest window, the header found out
    z_stream state{};
    if (inflateInit2(&state, any_header) != Z_OK)
        return Failure{std::string("out of memory")};
    state.next_in = reinterpret_cast<Bytef*>(compressed.data());
    state.avail_in = static_cast<uInt>(compressed.size());
    ByteVector bytes;
    int code = Z_OK;
    while (code == Z_OK) {
        constexpr std::size_t piece = 1 << 16;
        const std::size_t filled = bytes.size();
        bytes.resize(filled + piece);
        state.next_out = reinterpret_cast<Bytef*>(bytes.data() + filled);
        state.avail_out = piece;
        code = inflate(&state, Z_NO_FLUSH);
        bytes.resize(bytes.size() - state.avail_out);
    }
    inflateEnd(&state);
    if (code != Z_STREAM_END)
        return Failure{std::string("the compressed stream of the container is damaged")};
    return bytes;
}

} // namespace

std::wstring windows_path(std::u16string_view path) {
    constexpr std::u16string_view prefixes[] = {u"filewin:", u"imagewin:", u"moviewin:",
                                                u"file:",    u"image:",    u"movie:"};
    for (std::u16string_view prefix : prefixes) {
        if (equal_ignoring_case(path.substr(0, prefix.size()), prefix)) {
            path.remove_prefix(prefix.size());
            break;
        }
    }
    if (path.size() >= 3 && path[0] == u'/' && path[2] == u':') // "/C:/dir"
        path.remove_prefix(1);
    std::wstring result = to_wide(path);
    std::replace(result.begin(), result.end(), L'/', L'\\');
    return result;
}

Result<HostBinaryData, std::string> read_container_file(std::u16string_view path) {
    const std::wstring native = windows_path(path);
    const ByteVector bytes = VELL_TRY(file_bytes(native));
    HostBinaryData container = make_binary_data();
    const HostText name = make_text(std::filesystem::path(native).filename().u16string());
    CallStatus status;
    FM_BinaryData_AddFNAMData(container.get(), name.get(), status);
    status.check();
    const auto image = image_size(bytes);
    if (image) {
        constexpr std::int32_t largest = std::numeric_limits<std::int16_t>::max();
        FM_BinaryData_AddSIZEData(
            container.get(), static_cast<std::int16_t>(std::min(image->width, largest)),
            static_cast<std::int16_t>(std::min(image->height, largest)), status);
        status.check();
    }
    add_stream(container.get(), image ? image->stream_type : "FILE", bytes);
    return container;
}

std::vector<ContainerStream> streams_of(const fm::BinaryData* container) {
    CallStatus status;
    const std::int32_t count = FM_BinaryData_GetCount(container, status);
    status.check();
    const HostQuadChar type = make_quad_char("    ");
    std::vector<ContainerStream> streams;
    for (std::int32_t i = 0; i < count; ++i) {
        FM_BinaryData_GetType(container, i, type.get(), status);
        status.check();
        const std::uint32_t code = FM_QuadChar_GetMacType(type.get(), status);
        status.check();
        ContainerStream stream{{}, FM_BinaryData_GetSize(container, i, status), i};
        status.check();
        for (int shift = 24; shift >= 0; shift -= 8)
            stream.type += static_cast<char>(code >> shift & 0xFF);
        streams.push_back(std::move(stream));
    }
    return streams;
}

Result<MainStream, std::string> main_stream_of(const fm::BinaryData* container) {
    const std::vector<ContainerStream> streams = streams_of(container);
    const ContainerStream* stream = main_stream(container, streams);
    if (!stream)
        return Failure{std::string("the container has no stream that could be saved")};
    ByteVector bytes = stream_bytes(container, *stream);
    if (stream->type == "ZLIB")
        bytes = VELL_TRY(expanded(std::move(bytes)));
    return MainStream{stream->type, std::move(bytes)};
}

Result<std::string, std::string> save_main_stream(const fm::BinaryData* container,
                                                  const std::wstring& path) {
    MainStream stream = VELL_TRY(main_stream_of(container));
    std::ofstream file(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(stream.bytes.data()),
               static_cast<std::streamsize>(stream.bytes.size()));
    file.close();
    if (!file)
        return Failure{narrow(path) + " cannot be written"};
    return std::move(stream.type);
}

} // namespace vell::console
