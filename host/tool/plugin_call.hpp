// A plug-in is code of somebody else's that runs inside this program. While the tool asks it for its actions there is
// no worker in between, so what goes wrong there becomes one line that names the plug-in, and a status.
#pragma once

#include "host/tool/console.hpp"
#include "host/tool/exit_code.hpp"

#include <functional>

namespace tool {

/// From now on a crash of this process (a signal, or an `exit` in a plug-in) says one line and ends it: with
/// `environment` inside a PLUGIN_CALL, and else with `internal`. For the tool alone; a worker's end is told by the
/// tool.
void install_crash_messages();
/// For a child process: signals act on it as they do on a fresh one.
void remove_crash_messages();

/// While one lives, the plug-in's code runs. They may be nested.
class PLUGIN_CALL {
public:
    explicit PLUGIN_CALL(QString const& plugin);
    PLUGIN_CALL(PLUGIN_CALL const&) = delete;
    PLUGIN_CALL& operator=(PLUGIN_CALL const&) = delete;
    ~PLUGIN_CALL();

private:
    QByteArray const text_;
    char const* const former_;
};

/// Does the work inside a PLUGIN_CALL. What is thrown there, other than for want of memory, has been said.
EXIT_CODE call_plugin(QString const& plugin, CONSOLE& console, std::function<EXIT_CODE()> const& work);

}  // namespace tool
