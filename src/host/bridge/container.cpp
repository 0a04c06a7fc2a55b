#include "src/host/bridge/container.h"

#include "src/host/bridge/late_entry_points.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <vector>

namespace vell::host {
namespace {

constexpr std::uint32_t piece_size = 64 * 1024;

// By what a user put into the container: a file itself before the pictures that represent it.
constexpr std::array main_stream_types{
    mac_type("FILE"), mac_type("ZLIB"), mac_type("PDF "), mac_type("JPEG"), mac_type("PNGf"),
    mac_type("GIFf"), mac_type("BMPf"), mac_type("EPS "), mac_type("META"), mac_type("snd "),
};

std::optional<std::int32_t> stream_index(const fm::BinaryData* container, std::uint32_t type) {
    const QuadChar quad_char(type);
    const std::int32_t index = host_call(FM_BinaryData_GetIndex, container, quad_char.get());
    return index < 0 ? std::nullopt : std::optional(index);
}

void read_stream(const fm::BinaryData* container, std::int32_t index, std::uint32_t offset,
                 std::span<char> buffer) {
    host_call_or_throw(FM_BinaryData_GetData, container, index, offset,
                       static_cast<std::uint32_t>(buffer.size()),
                       static_cast<void*>(buffer.data()));
}

// Calls `take` with each piece of the stream until it fails or the stream ends.
template <typename Take>
Result<void> for_each_piece(const fm::BinaryData* container, std::int32_t index, Take take) {
    const std::uint32_t size = host_call(FM_BinaryData_GetSize, container, index);
    std::vector<char> buffer(std::min(size, piece_size));
    for (std::uint32_t offset = 0; offset < size;) {
        const std::span piece(buffer.data(), std::min(size - offset, piece_size));
        read_stream(container, index, offset, piece);
        VELL_TRY(take(std::string_view(piece.data(), piece.size())));
        offset += static_cast<std::uint32_t>(piece.size());
    }
    return {};
}

// Expands gzip or zlib data given in pieces.
class Inflater {
  public:
    explicit Inflater(const params::ByteSink& sink) : sink_(sink), buffer_(piece_size) {
        constexpr int detect_header = 32;
        if (inflateInit2(&stream_, MAX_WBITS + detect_header) != Z_OK)
            throw std::bad_alloc();
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() { inflateEnd(&stream_); }

    Result<void> take(std::string_view piece) {
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
        stream_.avail_in = static_cast<uInt>(piece.size());
        do {
            stream_.next_out = reinterpret_cast<Bytef*>(buffer_.data());
            stream_.avail_out = piece_size;
            const int code = inflate(&stream_, Z_NO_FLUSH);
            ended_ = ended_ || code == Z_STREAM_END;
            if (code != Z_OK && code != Z_STREAM_END && code != Z_BUF_ERROR)
                return Failure{ErrorCode::CompressedDataDamaged};
            VELL_TRY(sink_({buffer_.data(), piece_size - stream_.avail_out}));
        } while (!ended_ && (stream_.avail_in > 0 || stream_.avail_out == 0));
        return {};
    }

    bool ended() const { return ended_; }

  private:
    const params::ByteSink& sink_;
    std::vector<char> buffer_;
    z_stream stream_{};
    bool ended_ = false;
};

// A stream where it lies.
class StreamBytes final : public ByteSource {
  public:
    StreamBytes(const fm::BinaryData* container, std::int32_t index)
        : container_(container), index_(index),
          size_(host_call(FM_BinaryData_GetSize, container, index)) {}

    std::uint64_t size() const override { return size_; }
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        if (position >= size_)
            return std::size_t{0};
        const std::size_t count = std::min<std::uint64_t>(bytes.size(), size_ - position);
        read_stream(container_, index_, static_cast<std::uint32_t>(position), bytes.first(count));
        return count;
    }

  private:
    const fm::BinaryData* container_;
    std::int32_t index_;
    std::uint32_t size_;
};

// A stream that had to be expanded.
class ExpandedBytes final : public ByteSource {
  public:
    explicit ExpandedBytes(std::string bytes) : bytes_(std::move(bytes)), view_(bytes_) {}

    std::uint64_t size() const override { return view_.size(); }
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        return view_.read_at(position, bytes);
    }

  private:
    std::string bytes_;
    BytesInMemory view_;
};

} // namespace

Container::Container() : HostObject(host_call(FM_BinaryData_Constructor1)) {}
Container::Container(const fm::BinaryData* source)
    : HostObject(host_call(FM_BinaryData_Constructor2, source)) {}

void Container::assign(const fm::BinaryData* source) {
    host_call(FM_BinaryData_operatorAS, get(), source);
}

void Container::add_stream(const QuadChar& type, std::string_view bytes) {
    if (bytes.size() > 0xFFFFFFFF)
        throw std::bad_alloc();
    host_call_or_throw(FM_BinaryData_Add, get(), type.get(),
                       static_cast<std::uint32_t>(bytes.size()),
                       static_cast<const void*>(bytes.data()));
}

void Container::add_file_name(std::u16string_view name) {
    if (const auto add = late_entry_points().add_fnam_data) {
        const Text text(name);
        host_call_or_throw(add, get(), text.get());
    }
}

void Container::add_size(ImageSize size) {
    if (const auto add = late_entry_points().add_size_data)
        host_call_or_throw(add, get(), size.width, size.height);
}

void add_file(Container& container, const QuadChar& type, std::u16string_view name,
              std::string_view bytes, ImageSize size) {
    container.add_file_name(name);
    container.add_size(size);
    container.add_stream(type, bytes);
}

std::uint32_t stream_type(const fm::BinaryData* container, std::int32_t index) {
    QuadChar type;
    host_call(FM_BinaryData_GetType, container, index, type.get());
    return type.mac_type();
}

std::optional<std::int32_t> main_stream(const fm::BinaryData* container) {
    if (const auto main = stream_index(container, mac_type("MAIN"));
        main && host_call(FM_BinaryData_GetSize, container, *main) >= 4) {
        std::array<char, 4> type{};
        read_stream(container, *main, 0, type);
        const std::uint32_t named = mac_type({type.data(), type.size()});
        if (const auto index = stream_index(container, named))
            return index;
    }
    for (const std::uint32_t type : main_stream_types)
        if (const auto index = stream_index(container, type))
            return index;
    return std::nullopt;
}

Result<void> read_main_stream(const fm::BinaryData* container, const params::ByteSink& sink) {
    const auto index = main_stream(container);
    if (!index)
        return Failure{ErrorCode::NotFound};
    if (stream_type(container, *index) != mac_type("ZLIB"))
        return for_each_piece(container, *index, sink);

    Inflater inflater(sink);
    VELL_TRY(for_each_piece(container, *index,
                            [&](std::string_view piece) { return inflater.take(piece); }));
    if (!inflater.ended())
        return Failure{ErrorCode::CompressedDataDamaged};
    return {};
}

Result<std::unique_ptr<ByteSource>> open_main_stream(const fm::BinaryData* container) {
    const auto index = main_stream(container);
    if (!index)
        return Failure{ErrorCode::NotFound};
    if (stream_type(container, *index) != mac_type("ZLIB"))
        return std::unique_ptr<ByteSource>(std::make_unique<StreamBytes>(container, *index));
    std::string bytes;
    VELL_TRY(read_main_stream(container, [&](std::string_view piece) {
        bytes += piece;
        return Result<void>();
    }));
    return std::unique_ptr<ByteSource>(std::make_unique<ExpandedBytes>(std::move(bytes)));
}

std::u16string file_name(const fm::BinaryData* container) {
    const auto get_names = late_entry_points().get_fnam_data;
    if (!get_names || !stream_index(container, mac_type("FNAM")))
        return {};
    Text names;
    host_call_or_throw(get_names, container, names.get());
    std::u16string name = names.to_utf16();
    name.resize(std::min(name.size(), name.find(u'\r')));
    return name.substr(name.find_last_of(u"/\\:") + 1);
}

} // namespace vell::host
