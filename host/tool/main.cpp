// The command `zab`: reads the command line, finds the subcommand and runs it. The only place that turns what happened
// into an exit status.
#include "host/tool/command.hpp"
#include "host/tool/command_surface.hpp"
#include "host/tool/plugin_call.hpp"

#include <CLI/CLI.hpp>

#include <QCoreApplication>
#include <QTextCodec>

#include <clocale>
#include <csignal>
#include <exception>
#include <map>
#include <new>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace tool;

std::vector<std::unique_ptr<COMMAND>> make_commands() {
    std::vector<std::unique_ptr<COMMAND>> commands;
    commands.push_back(make_command_init());
    commands.push_back(make_command_build());
    commands.push_back(make_command_plan());
    commands.push_back(make_command_explain());
    commands.push_back(make_command_rules());
    commands.push_back(make_command_info());
    commands.push_back(make_command_view());
    commands.push_back(make_command_compare());
    commands.push_back(make_command_imgdb());
    commands.push_back(make_command_clean());
    return commands;
}

constexpr char const* exit_codes = R"(
Exit status:
  0    everything was built, or the question answered
  1    an action failed, or a picture cannot be had
  2    wrong use, or a wrong project or rule file
  3    the surroundings fail: plug-in, disk
  4    a mistake in this program
  130  interrupted)";

void declare_common(CLI::App& app, COMMON_OPTIONS& options) {
    std::map<std::string, COLOR_MODE> const modes = {
        {"auto", COLOR_MODE::automatic}, {"always", COLOR_MODE::always}, {"never", COLOR_MODE::never}};
    app.add_option("-C", options.directory, "The project's folder; without it the nearest one with a zab.toml upwards")
        ->type_name("DIR");
    app.add_option("--plugin", options.plugin, "The plug-in; without it the one installed with this program")
        ->type_name("FILE");
    app.add_flag("-v,--verbose", options.verbose, "Tell more");
    app.add_flag("-q,--quiet", options.quiet, "Tell of failures only");
    app.add_option("--color", options.color, "Colour in messages: auto, always or never")
        ->transform(CLI::Transformer(modes).description(""))
        ->check(CLI::IsMember({COLOR_MODE::automatic, COLOR_MODE::always, COLOR_MODE::never}).description(""))
        ->type_name("WHEN");
}

CLI::App const* find_subcommand(CLI::App const& app, std::string const& name) {
    for (CLI::App const* const subcommand : app.get_subcommands({}))
        if (subcommand->get_name() == name)
            return subcommand;
    return nullptr;
}

EXIT_CODE run(int argc, char** argv) {
    CONSOLE console;
    console.set_color(COLOR_MODE::automatic);
    COMMON_OPTIONS options;
    std::vector<std::unique_ptr<COMMAND>> const commands = make_commands();

    CLI::App app("Builds a project's source images into textures.", "zab");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", "zab " ZAB_VERSION, "Print the version and exit");
    app.footer(exit_codes);
    // Common options may stand before the subcommand and behind it.
    app.fallthrough();
    app.require_subcommand(0, 1);
    declare_common(app, options);
    std::map<CLI::App*, COMMAND*> subcommands;
    for (auto const& command : commands) {
        CLI::App* const subcommand = app.add_subcommand(command->name(), command->summary());
        subcommand->footer("Options of every command, here or before it: -C DIR, --plugin FILE, -v, -q, --color WHEN "
                           "(see: zab help)");
        command->declare(*subcommand);
        subcommands[subcommand] = command.get();
    }
    std::string topic;
    CLI::App* const help = app.add_subcommand("help", "Print the help of a command and exit");
    help->add_option("COMMAND", topic, "The command; without it, the help of all of them");
    std::string shell;
    help->add_option("--completions", shell, "Print the completions for a shell: bash, zsh or fish")
        ->type_name("SHELL");
    bool wants_manual = false;
    help->add_flag("--man", wants_manual, "Print the manual page, for man -l");

    auto const show_help = [&](CLI::App const* asked) {
        // The program's own help() answers with that of the command that was given, which is "help" itself.
        std::string const text = asked == &app ? app.get_formatter()->make_help(&app, "zab", CLI::AppFormatMode::Normal)
                                               : asked->help("zab");
        console.result(QString::fromStdString(text).trimmed());
        return EXIT_CODE::success;
    };
    auto const refuse = [&](QString const& text) {
        std::string const where = app.get_subcommands().empty() ? "" : app.get_subcommands().front()->get_name() + ' ';
        console.error(text);
        console.message(QString::fromStdString("See: zab " + where + "--help"));
        return EXIT_CODE::wrong_use;
    };
    try {
        app.parse(argc, argv);
    } catch (CLI::CallForHelp const&) {
        return show_help(app.get_subcommands().empty() ? &app : app.get_subcommands().front());
    } catch (CLI::CallForVersion const& version) {
        console.result(QString::fromUtf8(version.what()));
        return EXIT_CODE::success;
    } catch (CLI::ParseError const& error) {
        return refuse(QString::fromUtf8(error.what()).trimmed());
    }

    if (app.get_subcommands().empty()) {
        console.message(QString::fromStdString(app.help()).trimmed());
        return EXIT_CODE::wrong_use;
    }
    if (help->parsed() && (wants_manual || !shell.empty())) {
        PROGRAM_SURFACE const surface = describe_program(app);
        std::string const text = wants_manual ? manual_page(surface, ZAB_VERSION) : completion_script(surface, shell);
        if (text.empty())
            return refuse(QStringLiteral("there are no completions for \"%1\"").arg(argument(shell)));
        console.result(QString::fromStdString(text).trimmed());
        return CONSOLE::flush_results() ? EXIT_CODE::success : EXIT_CODE::environment;
    }
    if (help->parsed()) {
        CLI::App const* const asked = topic.empty() ? &app : find_subcommand(app, topic);
        return asked ? show_help(asked) : refuse(QStringLiteral("there is no command \"%1\"").arg(argument(topic)));
    }
    if (options.quiet && options.verbose)
        return refuse(QStringLiteral("-q and -v exclude each other"));

    console.set_color(options.color);
    console.set_verbosity(options.quiet ? VERBOSITY::quiet : options.verbose ? VERBOSITY::verbose : VERBOSITY::normal);
    CONTEXT context{options, console};
    EXIT_CODE code = subcommands.at(app.get_subcommands().front())->run(context);
    if (!CONSOLE::flush_results() && code == EXIT_CODE::success) {
        console.error(QStringLiteral("the results could not be written to standard output"));
        code = EXIT_CODE::environment;
    }
    return code;
}

// Whoever starts the program may have closed these; the next files that it opened would take their places, and messages
// would land in them.
bool open_standard_streams() {
    int file = STDIN_FILENO;
    while (file >= 0 && file <= STDERR_FILENO)
        file = open("/dev/null", O_RDWR);
    return file >= 0 && close(file) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (!open_standard_streams())
        return static_cast<int>(EXIT_CODE::environment);
    // A file that may not grow any more is an error like others (EFBIG), and no reason to die.
    std::signal(SIGXFSZ, SIG_IGN);
    install_crash_messages();
    // File names are UTF-8 whatever the locale says, and numbers in files have points.
    QCoreApplication const application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    try {
        return static_cast<int>(run(argc, argv));
    } catch (std::bad_alloc const&) {
        CONSOLE().error(QStringLiteral("not enough memory"));
        return static_cast<int>(EXIT_CODE::environment);
    } catch (std::exception const& exception) {
        CONSOLE().error(QStringLiteral("internal error: ") + QString::fromUtf8(exception.what()));
    } catch (...) {
        CONSOLE().error(QStringLiteral("internal error"));
    }
    return static_cast<int>(EXIT_CODE::internal);
}
