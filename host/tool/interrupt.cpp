#include "host/tool/interrupt.hpp"

#include <system_error>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP};

sigset_t signal_set() {
    sigset_t set;
    sigemptyset(&set);
    for (int const signal : ending_signals)
        sigaddset(&set, signal);
    return set;
}

}  // namespace

INTERRUPT::INTERRUPT() {
    sigset_t const set = signal_set();
    sigprocmask(SIG_BLOCK, &set, &earlier_mask_);
    descriptor_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor_ < 0)
        throw std::system_error(errno, std::generic_category(), "signalfd");
}

INTERRUPT::~INTERRUPT() {
    // A signal that came last of all is not to end the program after all is done.
    count();
    close(descriptor_);
    sigprocmask(SIG_SETMASK, &earlier_mask_, nullptr);
}

int INTERRUPT::count() {
    signalfd_siginfo info;
    while (read(descriptor_, &info, sizeof info) == sizeof info)
        ++count_;
    return count_;
}

bool INTERRUPT::wait(int milliseconds) {
    pollfd entry = {descriptor_, POLLIN, 0};
    poll(&entry, 1, milliseconds);
    return count() > 0;
}

void INTERRUPT::restore_signals() {
    sigset_t const set = signal_set();
    for (int const signal : ending_signals)
        std::signal(signal, SIG_DFL);
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
}

}  // namespace tool
