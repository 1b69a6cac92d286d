// What the command line accepts, as plain values: what its help is made from, taken out so that the manual page and the
// shells' completions are made from it too and never tell of an option that is not there.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tool {

struct OPTION_SURFACE {
    /// "-j", "--jobs"; empty for a positional argument.
    std::vector<std::string> names;
    /// What stands for its value in the help, "N"; empty for a flag. The name of a positional argument.
    std::string value;
    std::string description;
    /// The words that the value may be; empty when it may be anything.
    std::vector<std::string> choices;
};

struct COMMAND_SURFACE {
    std::string name;
    std::string summary;
    std::vector<OPTION_SURFACE> options;
    std::vector<OPTION_SURFACE> positionals;
};

/// The program itself, with the options of every command, and then its commands in the order of the help.
struct PROGRAM_SURFACE {
    COMMAND_SURFACE program;
    std::vector<COMMAND_SURFACE> commands;
};

PROGRAM_SURFACE describe_program(CLI::App const& app);

/// Scripts for "bash", "zsh" and "fish"; empty for other shells.
std::string completion_script(PROGRAM_SURFACE const& surface, std::string const& shell);

/// In the man macros of roff. `version` stands at its foot.
std::string manual_page(PROGRAM_SURFACE const& surface, std::string const& version);

}  // namespace tool
