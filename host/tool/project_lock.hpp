// One build of a project at a time: a lock that the kernel keeps for as long as the tool or one of its workers lives,
// so that none is ever left behind.
#pragma once

#include "host/tool/build_session.hpp"

namespace tool {

class PROJECT_LOCK {
public:
    PROJECT_LOCK() = default;
    PROJECT_LOCK(PROJECT_LOCK const&) = delete;
    PROJECT_LOCK& operator=(PROJECT_LOCK const&) = delete;
    ~PROJECT_LOCK();

    /// Makes the state folder if need be and takes its lock. While another process holds it: says which, and waits, or
    /// with `waits` false answers with an error. What is not success has been said.
    EXIT_CODE acquire(QString const& state_folder, bool waits, CONSOLE& console);

private:
    int descriptor_ = -1;
};

/// Opens the session's project, takes its lock, and removes what a build that was killed left half done: it must be
/// gone before anybody looks at the folders.
EXIT_CODE open_exclusively(CONTEXT& context, BUILD_SESSION& session, bool waits, PROJECT_LOCK& lock);

}  // namespace tool
