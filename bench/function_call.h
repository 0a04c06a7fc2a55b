// One call of a function through the dispatcher, to be made again and again.
#pragma once

#include "src/host/bridge/host_data.h"
#include "src/host/entry/dispatcher.h"

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string_view>

namespace vell::bench {

inline constexpr std::int16_t get_metadata = 4260;

class FunctionCall {
  public:
    FunctionCall(std::int16_t id, std::initializer_list<std::u16string_view> parameters) : id_(id) {
        for (const std::u16string_view parameter : parameters) {
            host::Data data;
            host::store_text(data.get(), host::Text(parameter));
            host::host_call(FM_DataVect_PushBack, vector_,
                            static_cast<const fm::Data*>(data.get()));
        }
    }
    FunctionCall(const FunctionCall&) = delete;
    FunctionCall& operator=(const FunctionCall&) = delete;
    ~FunctionCall() {
        fm::Status status;
        FM_DataVect_Delete(vector_, &status);
    }

    const fm::DataVect* parameters() const { return vector_; }
    fm::Data* result() { return result_.get(); }

    fm::Errcode dispatch() { return host::dispatch(id_, nullptr, vector_, result_.get()); }

    // Ends the program when the function reports an error: its time would mean nothing.
    void run() {
        if (dispatch() == 0 && !begins_with_error())
            return;
        std::fprintf(stderr, "function %d failed\n", id_);
        std::exit(2);
    }

  private:
    bool begins_with_error() {
        const fm::Text* text = host::text_of(result());
        if (host::host_call(FM_Text_GetSize, text) < 2)
            return false;
        char16_t start[2];
        host::host_call(FM_Text_GetUnicode, text, start, 0u, 2u);
        return start[0] == u'$' && start[1] == u'$';
    }

    std::int16_t id_;
    fm::DataVect* vector_ = host::host_call(FM_DataVect_Constructor1);
    host::Data result_;
};

} // namespace vell::bench
