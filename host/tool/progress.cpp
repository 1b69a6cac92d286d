#include "host/tool/progress.hpp"

#include <algorithm>

#include <sys/ioctl.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr std::chrono::milliseconds interval(100);
// Before that a guess at the rest is worth nothing.
constexpr std::chrono::seconds before_estimate(2);

int terminal_width() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

// Unicode Standard Annex 11, the blocks that are wide throughout.
int columns_of(uint character) {
    switch (QChar::category(character)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
        return 0;
    default:
        break;
    }
    bool const is_wide = (character >= 0x1100 && character <= 0x115f) || (character >= 0x2e80 && character <= 0xa4cf) ||
                         (character >= 0xac00 && character <= 0xd7a3) || (character >= 0xf900 && character <= 0xfaff) ||
                         (character >= 0xfe30 && character <= 0xfe6f) || (character >= 0xff01 && character <= 0xff60) ||
                         (character >= 0x1f300 && character <= 0x1faff) ||
                         (character >= 0x20000 && character <= 0x3fffd);
    return is_wide ? 2 : 1;
}

}  // namespace

QString cut_to_width(QString const& text, int columns) {
    static QString const ending = QStringLiteral("...");
    QVector<uint> characters = text.toUcs4();
    int width = 0;
    // Where to cut if the text turns out too long.
    int cut = 0;
    for (int i = 0; i < characters.size(); ++i) {
        if (QChar::category(characters[i]) == QChar::Other_Control)
            characters[i] = '?';
        width += columns_of(characters[i]);
        if (width + ending.size() <= columns)
            cut = i + 1;
    }
    if (width <= columns)
        return QString::fromUcs4(characters.constData(), characters.size());
    return (QString::fromUcs4(characters.constData(), cut) + ending).left(std::max(0, columns));
}

PROGRESS_LINE::PROGRESS_LINE(CONSOLE& console)
    : console_(console),
      is_active_(console.error_is_terminal() && console.verbosity() != VERBOSITY::quiet) {
}

PROGRESS_LINE::~PROGRESS_LINE() {
    stop();
}

void PROGRESS_LINE::run_started(PLAN const& plan) {
    total_ = plan.actions.size();
    begin_ = CLOCK::now();
    last_ = begin_;
    if (is_active_)
        console_.set_line_in_progress([this] { clear(); }, {});
}

void PROGRESS_LINE::action_started(PLANNED_ACTION const& planned) {
    running_.push_back({&planned, -1});
}

void PROGRESS_LINE::progress(PLANNED_ACTION const& planned, int value, int maximum) {
    for (RUNNING& running : running_)
        if (running.planned == &planned && maximum > 0)
            running.percent = static_cast<int>(qint64(100) * std::clamp(value, 0, maximum) / maximum);
}

void PROGRESS_LINE::action_finished(PLANNED_ACTION const& planned, ACTION_RESULT const& result) {
    std::erase_if(running_, [&](RUNNING const& running) { return running.planned == &planned; });
    ++finished_;
    failed_ += result.status == ACTION_RESULT::STATUS::failed ? 1 : 0;
}

void PROGRESS_LINE::action_is_up_to_date(PLANNED_ACTION const&) {
    auto const lock = console_.lock();
    ++finished_;
}

void PROGRESS_LINE::run_finished(RUN_COUNTS const&) {
    stop();
}

void PROGRESS_LINE::time_passed() {
    CLOCK::time_point const now = CLOCK::now();
    if (!is_active_ || now - last_ < interval)
        return;
    QString const line = text();
    auto const lock = console_.lock();
    if (is_drawn_ && line == drawn_)
        return;
    console_.write_raw(QStringLiteral("\r\x1b[K") + line);
    is_drawn_ = true;
    drawn_ = line;
    last_ = now;
}

void PROGRESS_LINE::clear() {
    if (is_drawn_)
        console_.write_raw(QStringLiteral("\r\x1b[K"));
    is_drawn_ = false;
}

void PROGRESS_LINE::stop() {
    if (is_active_)
        console_.set_line_in_progress({}, {});
    is_active_ = false;
}

QString PROGRESS_LINE::time_left() const {
    CLOCK::duration const passed = CLOCK::now() - begin_;
    if (finished_ == 0 || passed < before_estimate)
        return {};
    auto const left = passed / static_cast<qint64>(finished_) * static_cast<qint64>(total_ - finished_);
    qint64 const seconds = std::chrono::duration_cast<std::chrono::seconds>(left).count();
    QString const minutes_and_seconds =
        QStringLiteral("%1:%2").arg(seconds / 60 % 60, 2, 10, QChar(u'0')).arg(seconds % 60, 2, 10, QChar(u'0'));
    return seconds < 3600 ? QStringLiteral(" about %1 left").arg(minutes_and_seconds)
                          : QStringLiteral(" about %1:%2 left").arg(seconds / 3600).arg(minutes_and_seconds);
}

QString PROGRESS_LINE::text() const {
    QString line = QStringLiteral("[%1/%2]").arg(finished_).arg(total_);
    if (failed_ > 0)
        line += QStringLiteral(" %1 failed").arg(failed_);
    line += time_left();
    QStringList names;
    for (RUNNING const& running : running_)
        names += running.percent < 0 ? running.planned->name
                                     : QStringLiteral("%1 %2%").arg(running.planned->name).arg(running.percent);
    if (!names.isEmpty())
        line += u' ' + names.join(QStringLiteral(", "));
    // A line that wraps could not be taken back.
    return cut_to_width(line, terminal_width() - 1);
}

}  // namespace tool
