// Containers from files and back.
#pragma once

#include "console/host/host_objects.h"
#include "src/base/result.h"

#include <string>
#include <vector>

namespace vell::console {

// An image becomes a stream of its kind with its size beside it, any other file a "FILE" stream;
// the name goes into "FNAM". Takes a Windows path or the host's own form ("/C:/dir/file",
// "filewin:/C:/dir/file"). The error is a message.
Result<HostBinaryData, std::string> read_container_file(std::u16string_view path);

struct ContainerStream {
    std::string type; // four characters
    std::uint32_t size = 0;
    std::int32_t index = 0;
};

std::vector<ContainerStream> streams_of(const fm::BinaryData* container);

struct MainStream {
    std::string type; // four characters
    std::vector<std::byte> bytes;
};

// The stream that "MAIN" names, otherwise chosen by type; compressed bytes are expanded.
Result<MainStream, std::string> main_stream_of(const fm::BinaryData* container);

// Writes that stream to a file and returns its type.
Result<std::string, std::string> save_main_stream(const fm::BinaryData* container,
                                                  const std::wstring& path);

// The host's path forms as a Windows path.
std::wstring windows_path(std::u16string_view path);

} // namespace vell::console
