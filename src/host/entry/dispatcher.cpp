#include "src/host/entry/dispatcher.h"

#include "src/host/bridge/call_origin.h"
#include "src/host/bridge/host_call_object.h"
#include "src/host/entry/running_calls.h"
#include "src/host/entry/the_plugin.h"
#include "src/windows/error_windows.h"
#include "src/windows/process/guarded_call.h"

#include <optional>

namespace vell::host {
namespace {

class DispatchedCall : public plugin::HostCall {
  public:
    DispatchedCall(std::int16_t id, const fm::ExprEnv* environment, const fm::DataVect* parameters,
                   fm::Data* result)
        : id_(id), environment_(environment), parameters_(parameters), result_(result) {}

    policy::CallOrigin origin() override { return origin_of(environment_); }
    params::Call& open(bool is_step) override {
        return call_.emplace(plugin_, environment_, parameters_, result_, is_step);
    }
    void set_result(std::string_view text) override { store_text(result_, Text(text)); }

    void serve() {
        std::optional<NoErrorWindows> quiet;
        if (!plugin_.state.can_ask_user)
            quiet.emplace();
        errcode_ = plugin_.serve(id_, *this);
    }
    fm::Errcode errcode() const { return errcode_; }

  private:
    plugin::Plugin& plugin_ = the_plugin();
    std::int16_t id_;
    const fm::ExprEnv* environment_;
    const fm::DataVect* parameters_;
    fm::Data* result_;
    std::optional<HostCallObject> call_;
    fm::Errcode errcode_ = 0;
};

} // namespace

fm::Errcode dispatch(std::int16_t id, const fm::ExprEnv* environment,
                     const fm::DataVect* parameters, fm::Data* result) {
    const RunningCall running;
    DispatchedCall call(id, environment, parameters, result);
    guarded_call([](void* argument) { static_cast<DispatchedCall*>(argument)->serve(); }, &call);
    return call.errcode();
}

} // namespace vell::host
