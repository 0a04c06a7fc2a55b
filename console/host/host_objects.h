// Owners of the host's objects for the console's side of the interface, and the way between them
// and the values of the calculation language.
#pragma once

#include "console/calc/value.h"
#include "src/host/bridge/fm_api.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace vell::console {

// A call to the host library reported a failure while the console itself was at work.
class HostCallError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The status word of one call; `check` throws when the call failed.
class CallStatus {
  public:
    operator fm::Status*() { return &status_; }
    void check() const;

  private:
    fm::Status status_;
};

struct HostObjectDeleter {
    void operator()(fm::Text* object) const;
    void operator()(fm::Data* object) const;
    void operator()(fm::DataVect* object) const;
    void operator()(fm::BinaryData* object) const;
    void operator()(fm::DateTime* object) const;
    void operator()(fm::FixPt* object) const;
    void operator()(fm::QuadChar* object) const;
    void operator()(fm::Locale* object) const;
    void operator()(fm::ExprEnv* object) const;
};

template <typename T>
using HostObject = std::unique_ptr<T, HostObjectDeleter>;
using HostText = HostObject<fm::Text>;
using HostData = HostObject<fm::Data>;
using HostDataVector = HostObject<fm::DataVect>;
using HostBinaryData = HostObject<fm::BinaryData>;
using HostQuadChar = HostObject<fm::QuadChar>;
using HostEnvironment = HostObject<fm::ExprEnv>;

HostText make_text(std::u16string_view text);
HostData make_data(); // empty
HostDataVector make_data_vector();
HostBinaryData make_binary_data();
HostQuadChar make_quad_char(std::string_view four_characters);
HostEnvironment make_environment();

std::u16string text_of(const fm::Text* text);

HostData to_data(const Value& value);
void assign(fm::Data* data, const Value& value);
Value to_value(const fm::Data* data);

// A container value of the calculation language: a copy of the host's.
class HostContainer : public Container {
  public:
    explicit HostContainer(const fm::BinaryData* source);
    explicit HostContainer(HostBinaryData data) : data_(std::move(data)) {}

    const fm::BinaryData* get() const { return data_.get(); }
    std::u16string file_name() const override;

  private:
    HostBinaryData data_;
};

} // namespace vell::console
