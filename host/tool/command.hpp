// One subcommand: what it is called, its options, and what it does. Each stands in a file of its own, command_*.cpp;
// the options that every command has are in COMMON_OPTIONS, so that a flag means the same thing everywhere.
#pragma once

#include "host/tool/console.hpp"
#include "host/tool/exit_code.hpp"

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tool {

struct COMMON_OPTIONS {
    /// The project's folder; empty: the nearest one at or above the current folder.
    std::string directory;
    /// The plug-in; empty: the one that was installed with this program.
    std::string plugin;
    bool verbose = false;
    bool quiet = false;
    COLOR_MODE color = COLOR_MODE::automatic;
};

struct CONTEXT {
    COMMON_OPTIONS const& options;
    CONSOLE& console;
};

class COMMAND {
public:
    virtual ~COMMAND() = default;

    virtual char const* name() const = 0;
    /// One line.
    virtual char const* summary() const = 0;
    /// Adds the command's own options to its place on the command line.
    virtual void declare(CLI::App& app) = 0;
    virtual EXIT_CODE run(CONTEXT& context) = 0;
};

std::unique_ptr<COMMAND> make_command_init();
std::unique_ptr<COMMAND> make_command_build();
std::unique_ptr<COMMAND> make_command_plan();
std::unique_ptr<COMMAND> make_command_explain();
std::unique_ptr<COMMAND> make_command_rules();
std::unique_ptr<COMMAND> make_command_info();
std::unique_ptr<COMMAND> make_command_view();
std::unique_ptr<COMMAND> make_command_compare();
std::unique_ptr<COMMAND> make_command_imgdb();
std::unique_ptr<COMMAND> make_command_clean();

/// The path as it was given on the command line.
inline QString argument(std::string const& text) {
    return QString::fromStdString(text);
}

}  // namespace tool
