// Container values: streams by four-character type.
#include "console/fmwrapper/objects.h"

#include <algorithm>
#include <cstring>

using namespace vell;
using console::checked;
using console::guarded;
using console::HostError;

namespace vell::fm {

std::int32_t BinaryData::index_of(std::uint32_t type) const {
    const auto found = std::find_if(streams.begin(), streams.end(),
                                    [type](const Stream& stream) { return stream.type == type; });
    return found == streams.end() ? -1 : static_cast<std::int32_t>(found - streams.begin());
}

void BinaryData::put(std::uint32_t type, const void* bytes, std::size_t size) {
    const auto* first = static_cast<const std::byte*>(bytes);
    auto content = std::make_shared<const std::vector<std::byte>>(first, first + size);
    if (const std::int32_t index = index_of(type); index >= 0)
        streams[static_cast<std::size_t>(index)].bytes = std::move(content);
    else
        streams.push_back({type, std::move(content)});
}

} // namespace vell::fm

namespace vell::console {

// The stream holds the list's UTF-16 units.
std::u16string file_name_list(const fm::BinaryData& binary) {
    const std::int32_t index = binary.index_of(fnam_stream);
    if (index < 0)
        return {};
    const auto& bytes = *binary.streams[static_cast<std::size_t>(index)].bytes;
    std::u16string list(bytes.size() / sizeof(char16_t), u'\0');
    if (!list.empty())
        std::memcpy(list.data(), bytes.data(), list.size() * sizeof(char16_t));
    return list;
}

} // namespace vell::console

namespace {

const fm::BinaryData::Stream* stream_at(const fm::BinaryData* self, std::int32_t index) {
    const auto& streams = checked(self).streams;
    const auto position = static_cast<std::size_t>(index);
    return index < 0 || position >= streams.size() ? nullptr : &streams[position];
}

} // namespace

fm::BinaryData* FM_BinaryData_Constructor1(fm::Status* status) {
    return console::create<fm::BinaryData>(__func__, status);
}

fm::BinaryData* FM_BinaryData_Constructor2(const fm::BinaryData* source, fm::Status* status) {
    return guarded(__func__, status,
                   [&] { return console::counted(new fm::BinaryData(checked(source))); });
}

void FM_BinaryData_Delete(fm::BinaryData* self, fm::Status* status) {
    console::destroy(self, status);
}

fm::BinaryData* FM_BinaryData_operatorAS(fm::BinaryData* self, const fm::BinaryData* source,
                                         fm::Status* status) {
    return guarded(__func__, status, [&] { return &(checked(self) = checked(source)); });
}

std::int32_t FM_BinaryData_GetCount(const fm::BinaryData* self, fm::Status* status) {
    return guarded(__func__, status,
                   [&] { return static_cast<std::int32_t>(checked(self).streams.size()); });
}

std::int32_t FM_BinaryData_GetIndex(const fm::BinaryData* self, const fm::QuadChar* type,
                                    fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).index_of(checked(type).type); });
}

void FM_BinaryData_GetType(const fm::BinaryData* self, std::int32_t index, fm::QuadChar* type,
                           fm::Status* status) {
    guarded(__func__, status, [&] {
        const auto* stream = stream_at(self, index);
        checked(type).type = stream != nullptr ? stream->type : 0;
    });
}

std::uint32_t FM_BinaryData_GetSize(const fm::BinaryData* self, std::int32_t index,
                                    fm::Status* status) {
    return guarded(__func__, status, [&] {
        const auto* stream = stream_at(self, index);
        return stream != nullptr ? static_cast<std::uint32_t>(stream->bytes->size())
                                 : std::uint32_t{0};
    });
}

fm::Errcode FM_BinaryData_GetData(const fm::BinaryData* self, std::int32_t index,
                                  std::uint32_t offset, std::uint32_t amount, void* buffer,
                                  fm::Status* status) {
    return guarded(__func__, status, [&] {
        const auto* stream = stream_at(self, index);
        if (stream == nullptr || offset > stream->bytes->size() ||
            amount > stream->bytes->size() - offset)
            return number(HostError::BadParameter);
        if (amount != 0) {
            if (buffer == nullptr)
                return number(HostError::BadParameter);
            std::memcpy(buffer, stream->bytes->data() + offset, amount);
        }
        return number(HostError::None);
    });
}

fm::Errcode FM_BinaryData_Add(fm::BinaryData* self, const fm::QuadChar* type, std::uint32_t amount,
                              const void* buffer, fm::Status* status) {
    return guarded(__func__, status, [&] {
        if (buffer == nullptr && amount != 0)
            return number(HostError::BadParameter);
        checked(self).put(checked(type).type, buffer, amount);
        return number(HostError::None);
    });
}

fm::Errcode FM_BinaryData_GetFNAMData(const fm::BinaryData* self, fm::Text* file_path_list,
                                      fm::Status* status) {
    return guarded(__func__, status, [&] {
        if (checked(self).index_of(console::fnam_stream) < 0)
            return number(HostError::BadParameter);
        checked(file_path_list) = {console::file_name_list(*self), {}};
        return number(HostError::None);
    });
}

fm::Errcode FM_BinaryData_AddFNAMData(fm::BinaryData* self, const fm::Text* file_path_list,
                                      fm::Status* status) {
    return guarded(__func__, status, [&] {
        const std::u16string& list = checked(file_path_list).units.get();
        checked(self).put(console::fnam_stream, list.data(), list.size() * sizeof(char16_t));
        return number(HostError::None);
    });
}

fm::Errcode FM_BinaryData_GetSIZEData(const fm::BinaryData* self, std::int16_t* width,
                                      std::int16_t* height, fm::Status* status) {
    return guarded(__func__, status, [&] {
        const auto* stream = stream_at(self, checked(self).index_of(console::size_stream));
        std::int16_t sides[2];
        if (stream == nullptr || stream->bytes->size() < sizeof sides)
            return number(HostError::BadParameter);
        std::memcpy(sides, stream->bytes->data(), sizeof sides);
        checked(width) = sides[0];
        checked(height) = sides[1];
        return number(HostError::None);
    });
}

fm::Errcode FM_BinaryData_AddSIZEData(fm::BinaryData* self, std::int16_t width, std::int16_t height,
                                      fm::Status* status) {
    return guarded(__func__, status, [&] {
        const std::int16_t sides[2] = {width, height};
        checked(self).put(console::size_stream, sides, sizeof sides);
        return number(HostError::None);
    });
}
