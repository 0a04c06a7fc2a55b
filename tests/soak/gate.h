// Lets calls through, and keeps them waiting while somebody looks at the process.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace vell::soak {

class Gate {
  public:
    // A call is under way for the life of the object.
    class Pass {
      public:
        explicit Pass(Gate& gate) : gate_(gate) { gate_.enter(); }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        ~Pass() { gate_.leave(); }

      private:
        Gate& gate_;
    };

    // No call is under way for the life of the object.
    class Closed {
      public:
        explicit Closed(Gate& gate) : gate_(gate) { gate_.close(); }
        Closed(const Closed&) = delete;
        Closed& operator=(const Closed&) = delete;
        ~Closed() { gate_.open(); }

      private:
        Gate& gate_;
    };

    std::size_t calls() const { return calls_; } // while it is closed

  private:
    void enter() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !closed_; });
        ++inside_;
        ++calls_;
    }
    void leave() {
        const std::lock_guard lock(mutex_);
        if (--inside_ == 0)
            changed_.notify_all();
    }
    void close() {
        std::unique_lock lock(mutex_);
        closed_ = true;
        changed_.wait(lock, [this] { return inside_ == 0; });
    }
    void open() {
        const std::lock_guard lock(mutex_);
        closed_ = false;
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool closed_ = false;
    std::size_t inside_ = 0;
    std::size_t calls_ = 0;
};

} // namespace vell::soak
