// A file in memory that nobody else can reach, for libraries that open what they write by name. What such a library
// opened on a disk could be a link to somebody else's file by then.
#pragma once

#include <string>

namespace QE {

class MEMORY_FILE {
public:
    /// Empty. Not open when the system has no room for it.
    MEMORY_FILE();
    MEMORY_FILE(MEMORY_FILE const&) = delete;
    MEMORY_FILE& operator=(MEMORY_FILE const&) = delete;
    ~MEMORY_FILE();

    bool is_open() const { return descriptor_ >= 0; }
    /// By which this process opens it.
    std::string name() const;
    /// To read with what was written.
    int descriptor() const { return descriptor_; }

private:
    int descriptor_ = -1;
};

}  // namespace QE
