// A thread that waits for the signals does what a signal handler must not: take locks and call the action.
#include "host/tool/interrupt.hpp"

#include "host/tool/exit_code.hpp"

#include <csignal>
#include <thread>

#include <pthread.h>
#include <unistd.h>

namespace tool {

namespace {

sigset_t signals() {
    sigset_t set;
    sigemptyset(&set);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&set, signal);
    return set;
}

}  // namespace

struct INTERRUPT::THREAD {
    sigset_t earlier_mask;
    std::thread thread;
};

INTERRUPT::INTERRUPT() : thread_(std::make_unique<THREAD>()) {
    sigset_t const set = signals();
    pthread_sigmask(SIG_BLOCK, &set, &thread_->earlier_mask);
    thread_->thread = std::thread([this] { wait(); });
}

INTERRUPT::~INTERRUPT() {
    ending_ = true;
    pthread_kill(thread_->thread.native_handle(), SIGTERM);
    thread_->thread.join();
    pthread_sigmask(SIG_SETMASK, &thread_->earlier_mask, nullptr);
}

void INTERRUPT::wait() {
    sigset_t const set = signals();
    while (true) {
        int signal = 0;
        if (sigwait(&set, &signal) != 0 || ending_)
            return;
        std::lock_guard const guard(mutex_);
        if (requested_) {
            if (clean_up_)
                clean_up_();
            _exit(static_cast<int>(EXIT_CODE::interrupted));
        }
        requested_ = true;
        if (stop_)
            stop_();
    }
}

void INTERRUPT::set_handlers(std::function<void()> stop, std::function<void()> clean_up) {
    std::lock_guard const guard(mutex_);
    stop_ = std::move(stop);
    clean_up_ = std::move(clean_up);
    if (requested_ && stop_)
        stop_();
}

}  // namespace tool
