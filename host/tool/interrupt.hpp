// Ctrl-C and its relatives as something that can be waited for, together with other descriptors and without a thread:
// the tool must stay single-threaded, because it forks.
#pragma once

#include <csignal>

namespace tool {

/// While one of these is alive, SIGINT, SIGTERM and SIGHUP come to it and to nobody else.
class INTERRUPT {
public:
    INTERRUPT();
    INTERRUPT(INTERRUPT const&) = delete;
    INTERRUPT& operator=(INTERRUPT const&) = delete;
    ~INTERRUPT();

    /// Becomes readable when a signal has come.
    int descriptor() const { return descriptor_; }
    /// How many have come since this object was made.
    int count();
    /// Waits so long for a signal at most. Whether one has come.
    bool wait(int milliseconds);

    /// For a child process: signals act on it as they do on a fresh one.
    static void restore_signals();

private:
    sigset_t earlier_mask_;
    int descriptor_ = -1;
    int count_ = 0;
};

}  // namespace tool
