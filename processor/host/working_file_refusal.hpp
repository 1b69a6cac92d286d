// What a host throws through an action that announces a working file which it must not write: the file is another's.
// Its text is a whole line for people.
#pragma once

#include "processor/host/export.hpp"

#include <stdexcept>

class ZAB_SHARED_API WORKING_FILE_REFUSAL : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~WORKING_FILE_REFUSAL() override;
};
