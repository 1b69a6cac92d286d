// A handler may call little (signal-safety(7)), so the line is put together beforehand.
#include "host/tool/plugin_call.hpp"

#include "host/framework/printable.hpp"

#include <QFile>

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>

#include <unistd.h>

namespace tool {

namespace {

constexpr int deadly_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

/// What the line begins with while a plug-in runs; null while none does.
char const* volatile s_blamed = nullptr;

void say(char const* text) {
    [[maybe_unused]] ssize_t const written = write(STDERR_FILENO, text, std::strlen(text));
}

[[noreturn]] void end(char const* how) {
    char const* const blamed = s_blamed;
    say(blamed ? blamed : "zab: error: internal error: ");
    say(how);
    say("\n");
    _exit(static_cast<int>(blamed ? EXIT_CODE::environment : EXIT_CODE::internal));
}

void take_signal(int signal) {
    end(signal == SIGSEGV  ? "it crashed (SIGSEGV)"
        : signal == SIGBUS ? "it crashed (SIGBUS)"
        : signal == SIGFPE ? "it crashed (SIGFPE)"
        : signal == SIGILL ? "it crashed (SIGILL)"
                           : "it gave up (SIGABRT)");
}

void take_exit() {
    if (s_blamed)
        end("it ended the program");
}

}  // namespace

void install_crash_messages() {
    // A stack that has overflown has no room for a handler.
    static std::array<char, 65536> stack;
    stack_t const other = {stack.data(), 0, stack.size()};
    sigaltstack(&other, nullptr);
    struct sigaction action = {};
    action.sa_handler = &take_signal;
    action.sa_flags = SA_ONSTACK;
    for (int const signal : deadly_signals) {
        // A sanitizer that listens already has more to say.
        struct sigaction former = {};
        if (sigaction(signal, nullptr, &former) == 0 && former.sa_handler == SIG_DFL)
            sigaction(signal, &action, nullptr);
    }
    std::atexit(&take_exit);
}

void remove_crash_messages() {
    s_blamed = nullptr;
    for (int const signal : deadly_signals) {
        struct sigaction former = {};
        if (sigaction(signal, nullptr, &former) == 0 && former.sa_handler == &take_signal)
            std::signal(signal, SIG_DFL);
    }
}

PLUGIN_CALL::PLUGIN_CALL(QString const& plugin)
    : text_("zab: error: the plug-in " + CONSOLE::shown(plugin).toUtf8() + " failed while it was asked for actions: "),
      former_(s_blamed) {
    s_blamed = text_.constData();
}

PLUGIN_CALL::~PLUGIN_CALL() {
    s_blamed = former_;
}

EXIT_CODE call_plugin(QString const& plugin, CONSOLE& console, std::function<EXIT_CODE()> const& work) {
    QString cause = QStringLiteral("unknown exception");
    try {
        PLUGIN_CALL const call(plugin);
        return work();
    } catch (std::bad_alloc const&) {
        throw;
    } catch (std::exception const& exception) {
        cause = QString::fromUtf8(exception.what());
    } catch (...) {
    }
    console.error(QStringLiteral("the plug-in %1 failed while it was asked for actions: %2")
                      .arg(CONSOLE::shown(plugin), framework::printable(cause)));
    return EXIT_CODE::environment;
}

}  // namespace tool
