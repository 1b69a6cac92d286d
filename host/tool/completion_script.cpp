// Completions for three shells: commands at the first word, then the options of the command and of all commands, the
// words that an option takes, and file names for everything else.
#include "host/tool/command_surface.hpp"

#include <algorithm>

namespace tool {

namespace {

std::string joined(std::vector<std::string> const& words, char const* between = " ") {
    std::string text;
    for (std::string const& word : words)
        text += (text.empty() ? "" : between) + word;
    return text;
}

std::vector<std::string> command_names(PROGRAM_SURFACE const& surface) {
    std::vector<std::string> names;
    for (COMMAND_SURFACE const& command : surface.commands)
        names.push_back(command.name);
    return names;
}

std::vector<std::string> option_names(COMMAND_SURFACE const& command) {
    std::vector<std::string> names;
    for (OPTION_SURFACE const& option : command.options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return names;
}

// Whether a file name stands behind the option; a folder's is one too.
bool takes_file(OPTION_SURFACE const& option) {
    return option.value == "FILE" || option.value == "PNG" || option.value == "DIR";
}

// Every option of the program, each once, that `wanted` asks for.
template <typename WANTED>
std::vector<OPTION_SURFACE> all_options(PROGRAM_SURFACE const& surface, WANTED const& wanted) {
    std::vector<OPTION_SURFACE> options;
    auto const add = [&](COMMAND_SURFACE const& command) {
        for (OPTION_SURFACE const& option : command.options)
            if (wanted(option) && std::none_of(options.begin(), options.end(), [&](OPTION_SURFACE const& known) {
                    return known.names == option.names;
                }))
                options.push_back(option);
    };
    add(surface.program);
    std::for_each(surface.commands.begin(), surface.commands.end(), add);
    return options;
}

std::string bash_script(PROGRAM_SURFACE const& surface) {
    std::string text = "# bash completion for zab\n"
                       "_zab() {\n"
                       "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command= i\n"
                       "    case $before in\n";
    for (OPTION_SURFACE const& option : all_options(surface, [](auto const& each) { return !each.value.empty(); })) {
        text += "        " + joined(option.names, "|") + ")\n            COMPREPLY=(";
        if (!option.choices.empty())
            text += "$(compgen -W '" + joined(option.choices) + "' -- \"$word\")";
        else if (takes_file(option))
            text += std::string("$(compgen -") + (option.value == "DIR" ? "d" : "f") + " -- \"$word\")";
        text += ")\n            return ;;\n";
    }
    text += "    esac\n"
            "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
            "        case ${COMP_WORDS[i]} in\n"
            "            " +
            joined(command_names(surface), "|") +
            ") command=${COMP_WORDS[i]}; break ;;\n"
            "        esac\n"
            "    done\n"
            "    local options='" +
            joined(option_names(surface.program)) +
            "'\n"
            "    case $command in\n";
    for (COMMAND_SURFACE const& command : surface.commands)
        text += "        " + command.name + ") options+=' " + joined(option_names(command)) + "' ;;\n";
    text += "    esac\n"
            "    if [[ $word == -* ]]; then\n"
            "        COMPREPLY=($(compgen -W \"$options\" -- \"$word\"))\n"
            "    elif [[ -z $command || $command == help ]]; then\n"
            "        COMPREPLY=($(compgen -W '" +
            joined(command_names(surface)) +
            "' -- \"$word\"))\n"
            "    else\n"
            "        local IFS=$'\\n'\n"
            "        COMPREPLY=($(compgen -f -- \"$word\"))\n"
            "    fi\n"
            "}\n"
            "complete -o filenames -F _zab zab\n";
    return text;
}

// Inside single quotes.
std::string quoted(std::string const& text) {
    std::string safe;
    for (char const letter : text)
        safe += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    return '\'' + safe + '\'';
}

std::string zsh_option(OPTION_SURFACE const& option) {
    std::string description;
    for (char const letter : option.description)
        description +=
            letter == '[' || letter == ']' || letter == ':' ? std::string("\\") + letter : std::string(1, letter);
    std::string value;
    if (!option.value.empty()) {
        value = ':' + option.value + ':';
        if (!option.choices.empty())
            value += '(' + joined(option.choices) + ')';
        else if (option.value == "DIR")
            value += "_files -/";
        else if (takes_file(option))
            value += "_files";
    }
    std::string text;
    for (std::string const& name : option.names)
        text += " \\\n            " + quoted("*" + name + "[" + description + "]" + value);
    return text;
}

std::string zsh_script(PROGRAM_SURFACE const& surface) {
    std::string text = "#compdef zab\n"
                       "_zab() {\n"
                       "    local -a zab_commands\n"
                       "    zab_commands=(\n";
    for (COMMAND_SURFACE const& command : surface.commands)
        text += "        " + quoted(command.name + ":" + command.summary) + "\n";
    text += "    )\n"
            "    local command word\n"
            "    for word in ${words[2,CURRENT-1]}; do\n"
            "        (( ${zab_commands[(I)$word:*]} )) && command=$word && break\n"
            "    done\n"
            "    local -a common\n"
            "    common=(";
    for (OPTION_SURFACE const& option : surface.program.options)
        text += zsh_option(option);
    text += "\n    )\n"
            "    case $command in\n";
    for (COMMAND_SURFACE const& command : surface.commands) {
        text += "        " + command.name + ") _arguments $common";
        for (OPTION_SURFACE const& option : command.options)
            text += zsh_option(option);
        text += command.name == "help" ? " '*:command:_describe command zab_commands' ;;\n" : " '*:file:_files' ;;\n";
    }
    text += "        *) _arguments $common '*:command:{_describe command zab_commands}' ;;\n"
            "    esac\n"
            "}\n"
            "_zab \"$@\"\n";
    return text;
}

std::string fish_option(OPTION_SURFACE const& option, std::string const& condition) {
    std::string text = "complete -c zab" + (condition.empty() ? "" : " -n " + quoted(condition));
    for (std::string const& name : option.names)
        text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    if (!option.choices.empty())
        text += " -x -a " + quoted(joined(option.choices));
    else if (takes_file(option))
        text += " -r";
    else if (!option.value.empty())
        text += " -x";
    return text + " -d " + quoted(option.description) + '\n';
}

std::string fish_script(PROGRAM_SURFACE const& surface) {
    std::string const names = joined(command_names(surface));
    std::string const none_yet = "not __fish_seen_subcommand_from " + names;
    std::string text = "# fish completion for zab\n";
    for (OPTION_SURFACE const& option : surface.program.options)
        text += fish_option(option, "");
    for (COMMAND_SURFACE const& command : surface.commands)
        text += "complete -c zab -f -n " + quoted(none_yet) + " -a " + command.name + " -d " + quoted(command.summary) +
                '\n';
    text += "complete -c zab -f -n '__fish_seen_subcommand_from help' -a " + quoted(names) + '\n';
    for (COMMAND_SURFACE const& command : surface.commands)
        for (OPTION_SURFACE const& option : command.options)
            text += fish_option(option, "__fish_seen_subcommand_from " + command.name);
    return text;
}

}  // namespace

std::string completion_script(PROGRAM_SURFACE const& surface, std::string const& shell) {
    if (shell == "bash")
        return bash_script(surface);
    if (shell == "zsh")
        return zsh_script(surface);
    return shell == "fish" ? fish_script(surface) : std::string();
}

}  // namespace tool
