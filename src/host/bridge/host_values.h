// Owners of the host's objects, and the one way to call the host's functions.
#pragma once

#include "src/host/bridge/fm_api.h"
#include "src/params/encodings.h"

#include <cstdint>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace vell::host {

// The host could not allocate memory for a call.
class HostAllocationFailure : public std::bad_alloc {
  public:
    const char* what() const noexcept override { return "bad allocation"; }
};

// The host reported a failure that it does not explain.
class HostFailure : public std::exception {
  public:
    const char* what() const noexcept override { return "host failure"; }
};

// The host did not convert a text to an encoding, which may lack a character of it.
class EncodingFailure : public HostFailure {};

inline void throw_on_failure(const fm::Status& status) {
    switch (static_cast<fm::StatusCode>(status.code)) {
    case fm::StatusCode::Ok:
        return;
    case fm::StatusCode::AllocationFailure:
        throw HostAllocationFailure();
    default:
        throw HostFailure();
    }
}

// Calls a function of the host with a status word of its own. Throws HostAllocationFailure or
// HostFailure when the host reports one; otherwise gives back what the function returned.
template <typename Function, typename... Arguments>
auto host_call(Function* function, Arguments... arguments) {
    fm::Status status;
    if constexpr (std::is_void_v<decltype(function(arguments..., &status))>) {
        function(arguments..., &status);
        throw_on_failure(status);
    } else {
        auto result = function(arguments..., &status);
        throw_on_failure(status);
        return result;
    }
}

// A call that answers with an error code of the host beside its status; 0 is success.
template <typename Function, typename... Arguments>
void host_call_or_throw(Function* function, Arguments... arguments) {
    if (host_call(function, arguments...) != 0)
        throw HostFailure();
}

inline void release(fm::Text* object, fm::Status* status) {
    FM_Text_Delete(object, status);
}
inline void release(fm::Data* object, fm::Status* status) {
    FM_Data_Delete(object, status);
}
inline void release(fm::BinaryData* object, fm::Status* status) {
    FM_BinaryData_Delete(object, status);
}
inline void release(fm::DateTime* object, fm::Status* status) {
    FM_DateTime_Delete(object, status);
}
inline void release(fm::FixPt* object, fm::Status* status) {
    FM_FixPt_Delete(object, status);
}
inline void release(fm::QuadChar* object, fm::Status* status) {
    FM_QuadChar_Delete(object, status);
}
inline void release(fm::CharacterStyle* object, fm::Status* status) {
    FM_CharacterStyle_Delete(object, status);
}
inline void release(fm::Color* object, fm::Status* status) {
    FM_Color_Delete(object, status);
}

// Owns one object of the host. Neither copied nor moved: it is passed by reference.
template <typename T>
class HostObject {
  public:
    HostObject(const HostObject&) = delete;
    HostObject& operator=(const HostObject&) = delete;
    ~HostObject() {
        fm::Status status;
        release(object_, &status);
    }

    T* get() { return object_; }
    const T* get() const { return object_; }

  protected:
    // Takes what a constructor call of the host returned.
    explicit HostObject(T* object) : object_(object) {
        if (!object)
            throw HostAllocationFailure();
    }

  private:
    T* object_;
};

// Text of the host: UTF-16, with styles.
class Text : public HostObject<fm::Text> {
  public:
    Text();
    explicit Text(std::u16string_view units);
    // A literal of the plug-in: ASCII.
    explicit Text(std::string_view literal);

    // Takes the bytes in one of the host's encodings (not BytesOnly); below 4 GiB.
    void assign_bytes(std::string_view bytes, params::TextEncoding encoding);
    void assign(std::u16string_view units);
    void append(const Text& other);
    std::u16string to_utf16() const;
};

// A text that the host owns, as this side's strings. Characters that the encoding lacks become what
// the host puts in their place.
std::u16string to_utf16(const fm::Text* text);
std::string to_bytes(const fm::Text* text, params::TextEncoding encoding);

// A four-character code; `code` is read as on disk ("FNAM"), `mac_type` has the first character in
// its most significant byte.
class QuadChar : public HostObject<fm::QuadChar> {
  public:
    QuadChar();
    explicit QuadChar(const char (&code)[5]);
    explicit QuadChar(std::uint32_t mac_type);
    std::uint32_t mac_type() const;
};

// Of four characters.
constexpr std::uint32_t mac_type(std::string_view code) {
    std::uint32_t type = 0;
    for (const char c : code)
        type = type << 8 | static_cast<unsigned char>(c);
    return type;
}

} // namespace vell::host
