// The command's voice: results on standard output, everything else on standard error, colour where it is wanted.
// Several threads may speak; a line comes out whole.
#pragma once

#include "host/framework/diagnostic.hpp"

#include <QString>

#include <cstdio>
#include <functional>
#include <mutex>

namespace tool {

enum class COLOR_MODE { automatic, always, never };
enum class VERBOSITY { quiet, normal, verbose };
enum class COLOR { none, red, green, yellow, faint };

class CONSOLE {
public:
    void set_color(COLOR_MODE mode);
    void set_verbosity(VERBOSITY verbosity) { verbosity_ = verbosity; }
    VERBOSITY verbosity() const { return verbosity_; }

    /// A line of what the command was asked for.
    void result(QString const& line);
    /// A line for the person who waits. May hold line ends.
    void message(QString const& line);
    /// "zab: error: text" and "zab: warning: text".
    void error(QString const& text);
    void warning(QString const& text);
    /// Every diagnostic on its line; quiet leaves warnings out.
    void report(framework::DIAGNOSTICS const& diagnostics);

    /// The text in that colour, for standard error.
    QString paint(COLOR color, QString const& text) const;
    bool error_is_terminal() const { return error_is_terminal_; }

    /// A path as this console shows it: relative to the current folder when it lies in it, and printable.
    static QString shown(QString const& path);

    /// Runs before and after a message is written, so that a line in the making (progress) can step aside.
    void set_line_in_progress(std::function<void()> clear, std::function<void()> draw);
    /// Text for the line in progress: no line end is added. Call from `draw` and `clear` alone, or under `lock`.
    void write_raw(QString const& text);
    std::unique_lock<std::mutex> lock() { return std::unique_lock(mutex_); }

    /// Whether all that went to standard output has arrived.
    static bool flush_results();

private:
    void write(std::FILE* stream, QString const& line);

    std::mutex mutex_;
    std::function<void()> clear_;
    std::function<void()> draw_;
    VERBOSITY verbosity_ = VERBOSITY::normal;
    bool error_is_terminal_ = false;
    bool colored_ = false;
};

}  // namespace tool
