#include "platform/qe/memory_file.hpp"

#include <cstdio>

#include <sys/mman.h>
#include <unistd.h>

namespace QE {

MEMORY_FILE::MEMORY_FILE() {
#ifdef MFD_CLOEXEC
    descriptor_ = memfd_create("zab", MFD_CLOEXEC);
#else
    if (std::FILE* const file = std::tmpfile()) {
        descriptor_ = dup(fileno(file));
        std::fclose(file);
    }
#endif
}

MEMORY_FILE::~MEMORY_FILE() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

std::string MEMORY_FILE::name() const {
    return "/dev/fd/" + std::to_string(descriptor_);
}

}  // namespace QE
