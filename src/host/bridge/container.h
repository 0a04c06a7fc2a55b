// Container values of the host: streams, at most one of each four-character type.
#pragma once

#include "src/base/byte_source.h"
#include "src/base/result.h"
#include "src/host/bridge/host_values.h"
#include "src/params/call.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vell::host {

struct ImageSize {
    std::int16_t width = 0;
    std::int16_t height = 0;
};

// A container that the plug-in makes.
class Container : public HostObject<fm::BinaryData> {
  public:
    Container();
    explicit Container(const fm::BinaryData* source); // a copy
    void assign(const fm::BinaryData* source);

    void add_stream(const QuadChar& type, std::string_view bytes); // below 4 GiB
    // Hosts before API 51 have neither a name nor a size: nothing is added there.
    void add_file_name(std::u16string_view name);
    void add_size(ImageSize size);
};

// Fills `container` with a file: its bytes as the stream `type` ("FILE", "JPEG" …), its name, and
// its size (0 × 0 for what is no image).
void add_file(Container& container, const QuadChar& type, std::u16string_view name,
              std::string_view bytes, ImageSize size);

// The type of a stream as QuadChar::mac_type has it.
std::uint32_t stream_type(const fm::BinaryData* container, std::int32_t index);

// The stream that counts as the container's contents, as an index: the one that "MAIN" names where
// it does, otherwise the first present of FILE, ZLIB, "PDF ", JPEG, PNGf, GIFf, BMPf, "EPS ", META,
// "snd ". nullopt when there is none.
std::optional<std::int32_t> main_stream(const fm::BinaryData* container);

// Hands the main stream's bytes to `sink`, piece by piece; a "ZLIB" stream (RFC 1952) is expanded.
// NotFound without a main stream, CompressedDataDamaged, or the sink's own failure.
Result<void> read_main_stream(const fm::BinaryData* container, const params::ByteSink& sink);

// The main stream's bytes, to be read at any place while the container is there. An expanded stream
// is held in memory, others are not. Fails like read_main_stream.
Result<std::unique_ptr<ByteSource>> open_main_stream(const fm::BinaryData* container);

// The name of the file in the container, without folders; empty when it has none.
std::u16string file_name(const fm::BinaryData* container);

} // namespace vell::host
