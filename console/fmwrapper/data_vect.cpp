// Data vectors: the parameters of a call.
#include "console/fmwrapper/objects.h"

using namespace vell;
using console::checked;
using console::guarded;

namespace {

const fm::Data& element(const fm::DataVect* self, std::uint32_t position) {
    if (position >= checked(self).elements.size())
        throw console::BadCall();
    return *self->elements[position];
}

} // namespace

fm::DataVect* FM_DataVect_Constructor1(fm::Status* status) {
    return console::create<fm::DataVect>(__func__, status);
}

void FM_DataVect_Delete(fm::DataVect* self, fm::Status* status) {
    console::destroy(self, status);
}

std::uint32_t FM_DataVect_Size(const fm::DataVect* self, fm::Status* status) {
    return guarded(__func__, status,
                   [&] { return static_cast<std::uint32_t>(checked(self).elements.size()); });
}

void FM_DataVect_PushBack(fm::DataVect* self, const fm::Data* data, fm::Status* status) {
    guarded(__func__, status, [&] {
        checked(self).elements.push_back(std::make_unique<const fm::Data>(checked(data)));
    });
}

const fm::Data* FM_DataVect_At(const fm::DataVect* self, std::uint32_t position,
                               fm::Status* status) {
    return guarded(__func__, status, [&] { return &element(self, position); });
}

const fm::Text* FM_DataVect_AtAsText(const fm::DataVect* self, std::uint32_t position,
                                     fm::Status* status) {
    return guarded(__func__, status, [&] { return &element(self, position).as_text(); });
}

const fm::FixPt* FM_DataVect_AtAsNumber(const fm::DataVect* self, std::uint32_t position,
                                        fm::Status* status) {
    return guarded(__func__, status, [&] { return &element(self, position).as_number(); });
}

const fm::DateTime* FM_DataVect_AtAsTimeStamp(const fm::DataVect* self, std::uint32_t position,
                                              fm::Status* status) {
    return guarded(__func__, status, [&] { return &element(self, position).as_time_stamp(); });
}

const fm::BinaryData* FM_DataVect_AtAsBinaryData(const fm::DataVect* self, std::uint32_t position,
                                                 fm::Status* status) {
    return guarded(__func__, status, [&] { return &element(self, position).as_binary(); });
}
