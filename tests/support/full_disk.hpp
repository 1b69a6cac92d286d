// What a full disk does to a program: while this lives, writes to files beyond so many bytes do not arrive.
#pragma once

#include <csignal>

#include <sys/resource.h>

class FULL_DISK {
public:
    explicit FULL_DISK(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit const tight{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &tight);
    }
    FULL_DISK(FULL_DISK const&) = delete;
    FULL_DISK& operator=(FULL_DISK const&) = delete;
    ~FULL_DISK() { setrlimit(RLIMIT_FSIZE, &before_); }

private:
    rlimit before_{};
};
