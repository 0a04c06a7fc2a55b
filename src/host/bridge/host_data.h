// Values of the host: a parameter, a result, or one that the plug-in makes.
#pragma once

#include "src/host/bridge/container.h"
#include "src/host/bridge/host_date_time.h"
#include "src/host/bridge/host_number.h"
#include "src/host/bridge/host_values.h"

namespace vell::host {

// A value that the plug-in makes, to hand it to the host.
class Data : public HostObject<fm::Data> {
  public:
    Data();
};

fm::NativeType native_type(const fm::Data* data);
const fm::Text* text_of(const fm::Data* data); // owned by the data

// The parameters of a call, which the host owns. Positions count from 0 and must be below size().
class ParameterVector {
  public:
    explicit ParameterVector(const fm::DataVect* vector);

    std::uint32_t size() const { return size_; }
    const fm::Data* at(std::uint32_t position) const;
    const fm::Text* text(std::uint32_t position) const;
    const fm::FixPt* number(std::uint32_t position) const;
    const fm::DateTime* time_stamp(std::uint32_t position) const;
    const fm::BinaryData* container(std::uint32_t position) const;

  private:
    const fm::DataVect* vector_;
    std::uint32_t size_;
};

// Ways to store a value, such as the result of a call.
void store_text(fm::Data* target, const Text& text);
void store_number(fm::Data* target, const Number& number);
void store_date(fm::Data* target, const DateTime& date);
void store_time(fm::Data* target, const DateTime& time);
void store_time_stamp(fm::Data* target, const DateTime& time_stamp);
void store_container(fm::Data* target, const Container& container);

} // namespace vell::host
