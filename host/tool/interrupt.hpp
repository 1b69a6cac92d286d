// Ctrl-C and its relatives while actions run: the first asks the running action to stop, the second ends the program at
// once, after whatever the action had half written is removed.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace tool {

/// While one of these is alive, SIGINT, SIGTERM and SIGHUP come to it and to nobody else. The thread that makes it and
/// every thread started afterwards has them blocked.
class INTERRUPT {
public:
    INTERRUPT();
    INTERRUPT(INTERRUPT const&) = delete;
    INTERRUPT& operator=(INTERRUPT const&) = delete;
    ~INTERRUPT();

    bool is_requested() const { return requested_; }

    /// What to do when a signal comes: `stop` for the first (called at once when it has come already), `clean_up` for
    /// the second, just before the program ends. Both run on another thread.
    void set_handlers(std::function<void()> stop, std::function<void()> clean_up);

private:
    void wait();

    struct THREAD;
    std::unique_ptr<THREAD> thread_;
    std::mutex mutex_;
    std::function<void()> stop_;
    std::function<void()> clean_up_;
    std::atomic<bool> requested_{false};
    std::atomic<bool> ending_{false};
};

}  // namespace tool
