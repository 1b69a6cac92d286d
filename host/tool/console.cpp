#include "host/tool/console.hpp"

#include "host/framework/printable.hpp"

#include <QDir>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include <unistd.h>

namespace tool {

namespace {

/// A message of this program's own lines: they end where it ends them.
QString printable_lines(QString const& text) {
    QStringList lines = text.split(u'\n');
    for (QString& line : lines)
        line = framework::printable(line);
    return lines.join(u'\n');
}

}  // namespace

void CONSOLE::set_color(COLOR_MODE mode) {
    auto const is_set = [](char const* name) {
        char const* const value = std::getenv(name);
        return value && *value;
    };
    char const* const terminal = std::getenv("TERM");
    error_is_terminal_ = isatty(STDERR_FILENO) && !(terminal && std::string_view(terminal) == "dumb");
    // https://no-color.org
    colored_ =
        mode == COLOR_MODE::always || (mode == COLOR_MODE::automatic && error_is_terminal_ && !is_set("NO_COLOR"));
}

void CONSOLE::write(std::FILE* stream, QString const& line) {
    std::lock_guard const guard(mutex_);
    if (clear_)
        clear_();
    QByteArray const bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    if (draw_)
        draw_();
}

void CONSOLE::result(QString const& line) {
    write(stdout, line);
}

void CONSOLE::message(QString const& line) {
    write(stderr, line);
}

void CONSOLE::error(QString const& text) {
    message(QStringLiteral("zab: ") + paint(COLOR::red, QStringLiteral("error:")) + u' ' + printable_lines(text));
}

void CONSOLE::warning(QString const& text) {
    if (verbosity_ != VERBOSITY::quiet)
        message(QStringLiteral("zab: ") + paint(COLOR::yellow, QStringLiteral("warning:")) + u' ' +
                printable_lines(text));
}

void CONSOLE::report(framework::DIAGNOSTICS const& diagnostics) {
    for (framework::DIAGNOSTIC const& diagnostic : diagnostics) {
        bool const is_error = diagnostic.severity == framework::DIAGNOSTIC::SEVERITY::error;
        if (is_error || verbosity_ != VERBOSITY::quiet)
            message(paint(is_error ? COLOR::red : COLOR::yellow,
                          framework::printable(framework::format(diagnostic, shown(diagnostic.path)))));
    }
    auto const left_out = [&](framework::DIAGNOSTIC::SEVERITY severity) {
        return std::max(diagnostics.count(severity), framework::DIAGNOSTICS::most_kept) -
               framework::DIAGNOSTICS::most_kept;
    };
    if (std::size_t const warnings = left_out(framework::DIAGNOSTIC::SEVERITY::warning))
        warning(QStringLiteral("%1 more warnings like these").arg(warnings));
    if (std::size_t const errors = left_out(framework::DIAGNOSTIC::SEVERITY::error))
        error(QStringLiteral("%1 more errors like these").arg(errors));
}

QString CONSOLE::paint(COLOR color, QString const& text) const {
    if (!colored_ || color == COLOR::none)
        return text;
    char const* const code = color == COLOR::red      ? "31"
                             : color == COLOR::green  ? "32"
                             : color == COLOR::yellow ? "33"
                                                      : "2";
    return QStringLiteral("\x1b[%1m%2\x1b[0m").arg(QLatin1String(code), text);
}

QString CONSOLE::shown(QString const& path) {
    QString const here = QDir::currentPath();
    return framework::printable(path.startsWith(here + u'/') ? path.mid(here.size() + 1) : path);
}

void CONSOLE::set_line_in_progress(std::function<void()> clear, std::function<void()> draw) {
    std::lock_guard const guard(mutex_);
    if (clear_)
        clear_();
    clear_ = std::move(clear);
    draw_ = std::move(draw);
}

void CONSOLE::write_raw(QString const& text) {
    QByteArray const bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

bool CONSOLE::flush_results() {
    return std::fflush(stdout) == 0 && !std::ferror(stdout);
}

}  // namespace tool
