// Lets calls through, and keeps them waiting while somebody looks at the process.
#pragma once

#include <cstddef>
#include <mutex>
#include <shared_mutex>

namespace vell::soak {

class Gate {
  public:
    // A call is under way for the life of the object.
    [[nodiscard]] std::shared_lock<std::shared_mutex> pass() {
        const std::lock_guard turn(turn_);
        ++calls_;
        return std::shared_lock(inside_);
    }

    // Looks, with the number of calls until now, while none is under way and none begins.
    template <typename Look>
    auto closed(Look look) {
        const std::lock_guard turn(turn_);
        const std::lock_guard alone(inside_);
        return look(calls_);
    }

  private:
    std::mutex turn_;
    std::shared_mutex inside_;
    std::size_t calls_ = 0;
};

} // namespace vell::soak
