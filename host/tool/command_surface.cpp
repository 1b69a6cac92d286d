#include "host/tool/command_surface.hpp"

#include <CLI/CLI.hpp>

namespace tool {

namespace {

COMMAND_SURFACE describe_command(CLI::App const& app) {
    COMMAND_SURFACE command = {app.get_name(), app.get_description(), {}, {}};
    for (CLI::Option const* const option : app.get_options()) {
        OPTION_SURFACE surface;
        for (std::string const& name : option->get_snames())
            surface.names.push_back('-' + name);
        for (std::string const& name : option->get_lnames())
            surface.names.push_back("--" + name);
        surface.description = option->get_description();
        if (surface.names.empty()) {
            surface.value = option->get_name(true);
            command.positionals.push_back(surface);
            continue;
        }
        if (option->get_items_expected_max() > 0)
            surface.value = option->get_type_name();
        // These are the only values that are words of a fixed list.
        if (surface.value == "WHEN")
            surface.choices = {"auto", "always", "never"};
        if (surface.value == "SHELL")
            surface.choices = {"bash", "zsh", "fish"};
        command.options.push_back(surface);
    }
    return command;
}

}  // namespace

PROGRAM_SURFACE describe_program(CLI::App const& app) {
    PROGRAM_SURFACE surface = {describe_command(app), {}};
    for (CLI::App const* const command : app.get_subcommands({}))
        surface.commands.push_back(describe_command(*command));
    return surface;
}

}  // namespace tool
