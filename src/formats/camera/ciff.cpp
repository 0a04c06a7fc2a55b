#include "src/formats/camera/ciff.h"

#include <array>
#include <string_view>

namespace vell::formats::ciff {
namespace {

struct Header {
    static constexpr std::size_t size = 14;
    static constexpr std::string_view signature_text = "HEAPCCDR";

    std::uint16_t byte_order = 0;
    std::uint32_t header_length = 0;
    std::array<char, 8> file_signature{};

    static constexpr auto fields() {
        return std::tuple{Field{0, &Header::byte_order}, Field{2, &Header::header_length},
                          Field{6, &Header::file_signature}};
    }
};

struct Entry {
    static constexpr std::size_t size = 10;
    static constexpr std::uint16_t in_the_entry = 0x4000; // of eight bytes
    static constexpr std::uint16_t place_bits = 0xC000;
    static constexpr std::uint16_t kind_bits = 0x3800;

    std::uint16_t type = 0;
    std::uint32_t length = 0;
    std::uint32_t offset = 0; // in the heap

    static constexpr auto fields() {
        return std::tuple{Field{0, &Entry::type}, Field{2, &Entry::length},
                          Field{6, &Entry::offset}};
    }
    bool is_heap() const { return (type & kind_bits) == 0x2800 || (type & kind_bits) == 0x3000; }
};

constexpr int deepest_heap = 8;

Read<void> read_heap(Window heap, int depth, File& file) {
    if (heap.size() < sizeof(std::uint32_t))
        return fault(Damage::CutOff);
    heap.seek(heap.size() - sizeof(std::uint32_t));
    heap.seek(VELL_TRY(heap.read_integer<std::uint32_t>(file.order)));
    const auto count = VELL_TRY(heap.read_integer<std::uint16_t>(file.order));
    for (unsigned i = 0; i < count && file.records.size() < most_records; ++i) {
        const std::uint64_t start = heap.position();
        const auto entry = VELL_TRY(heap.read_record<Entry>(file.order));
        const bool is_inside = (entry.type & Entry::place_bits) == Entry::in_the_entry;
        const RecordType type{static_cast<std::uint16_t>(entry.type & ~Entry::place_bits)};
        const Window data = is_inside ? heap.part(start + sizeof entry.type, 8)
                                      : heap.part(entry.offset, entry.length);
        file.records.push_back({type, data});
        if (entry.is_heap() && !is_inside && depth < deepest_heap)
            VELL_TRY(if_sound(read_heap(data, depth + 1, file)));
    }
    return {};
}

} // namespace

Read<File> File::read(const Window& file) {
    std::array<char, Header::size> start{};
    Window first = file.from(0);
    VELL_TRY(first.read(start));
    const std::string_view bytes(start.data(), start.size());
    File read;
    if (bytes.starts_with("MM"))
        read.order = ByteOrder::Big;
    const auto header = read_record<Header>(bytes, read.order);
    if (!header || std::string_view(header->file_signature.data(), header->file_signature.size()) !=
                       Header::signature_text)
        return fault(Damage::Absent);
    VELL_TRY(if_sound(read_heap(file.from(header->header_length), 0, read)));
    return read;
}

} // namespace vell::formats::ciff
