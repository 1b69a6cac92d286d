// zab(1): what people look up with man. Commands and options come from the command line itself; what is the same for
// all commands stands here.
#include "host/tool/command_surface.hpp"

namespace tool {

namespace {

constexpr char const* constant_sections = R"(.SH EXIT STATUS
.TP
.B 0
Everything was built or up to date, or the question was answered.
.TP
.B 1
An action failed, or a picture cannot be read.
.TP
.B 2
Wrong use, or a project file, rule file or data folder that is wrong or cannot be read.
.TP
.B 3
The surroundings fail: the plug\-in does not load, a disk is full, another build runs.
.TP
.B 4
A mistake in the program.
.TP
.B 130
Interrupted.
.SH FILES
.TP
.I zab.toml
The project file; commands use the nearest one at or above the current folder.
.TP
.I zab_rules.toml
Rules for the folder that it lies in and for those below.
.TP
.I .zab/
The build state, beside the project file. It may be deleted while no build runs.
.SH ENVIRONMENT
.TP
.B NO_COLOR
When set and not empty, messages have no colour unless
.B \-\-color
asks for it.
.TP
.B TERM
On a terminal of the kind
.I dumb
no line is written anew.
.SH SIGNALS
The first
.B SIGINT
or
.B SIGTERM
asks the running actions to stop and ends them after half a second; the second ends them at once. What was finished stays,
what was not is removed. After a
.B SIGKILL
the next build removes it.
)";

// A leading point or apostrophe is a request to roff, a backslash begins an escape, and a bare "-" may become a hyphen.
std::string escaped(std::string const& text) {
    std::string safe = !text.empty() && (text[0] == '.' || text[0] == '\'') ? "\\&" : "";
    for (char const letter : text)
        safe += letter == '\\' ? std::string("\\e") : letter == '-' ? std::string("\\-") : std::string(1, letter);
    return safe;
}

std::string option_entry(OPTION_SURFACE const& option) {
    std::string text = ".TP\n";
    std::string names;
    for (std::string const& name : option.names)
        names += (names.empty() ? "\\fB" : ", \\fB") + escaped(name) + "\\fR";
    text += names;
    if (!option.value.empty())
        text += (names.empty() ? "\\fI" : " \\fI") + escaped(option.value) + "\\fR";
    return text + '\n' + escaped(option.description) + ".\n";
}

}  // namespace

std::string manual_page(PROGRAM_SURFACE const& surface, std::string const& version) {
    std::string text = ".TH ZAB 1 \"\" \"zab " + escaped(version) + "\" \"User Commands\"\n";
    text += ".SH NAME\nzab \\- builds a project's source images into textures\n";
    text += ".SH SYNOPSIS\n.B zab\n[\\fIOPTIONS\\fR] \\fICOMMAND\\fR [\\fIOPTIONS\\fR] [\\fIARGUMENTS\\fR]\n";
    text += ".SH DESCRIPTION\nReads a project file, loads the texture plug\\-in, and builds what the project's rules "
            "ask for. "
            "Results go to standard output, progress and messages to standard error.\n";
    text += ".SH OPTIONS\nOf every command, in front of it or behind it:\n";
    for (OPTION_SURFACE const& option : surface.program.options)
        text += option_entry(option);
    text += ".SH COMMANDS\n";
    for (COMMAND_SURFACE const& command : surface.commands) {
        text += ".SS " + escaped(command.name) + '\n' + escaped(command.summary) + ".\n";
        for (OPTION_SURFACE const& positional : command.positionals)
            text += option_entry(positional);
        for (OPTION_SURFACE const& option : command.options)
            if (option.names.back() != "--help")
                text += option_entry(option);
    }
    return text + constant_sections;
}

}  // namespace tool
