// The working folder, opened once for a build: whatever its name leads to later, targets go into the folder that was
// there at the start. A working root that is a link by the user's choice is followed then and not again.
#pragma once

#include "host/tool/build_session.hpp"

namespace tool {

class WORKING_ROOT {
public:
    WORKING_ROOT() = default;
    WORKING_ROOT(WORKING_ROOT const&) = delete;
    WORKING_ROOT& operator=(WORKING_ROOT const&) = delete;
    ~WORKING_ROOT();

    /// Makes the folder if it must, and hands it to everything in this process that writes outputs, for as long as this
    /// lives. Where there can be no folder, the actions find out and say so.
    void open(BUILD_SESSION const& session);

private:
    void hand_out(char const* path, OUTPUT_LISTENER* written) const;

    SET_OUTPUT_ROOT* plugins_own_ = nullptr;
    int descriptor_ = -1;
};

}  // namespace tool
