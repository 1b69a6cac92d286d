#include "host/tool/journal_lines.hpp"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include <algorithm>
#include <array>
#include <memory>

namespace tool {

namespace {

constexpr std::array event_names = {"started", "writes", "ended"};

// An action names its targets in one line. What is longer was not written by a build, and is read in pieces that are no
// lines.
constexpr qint64 longest_line = 1 << 20;

QLatin1String name_of(JOURNAL_EVENT event) {
    return QLatin1String(event_names[static_cast<std::size_t>(event)]);
}

qint64 time_of(QJsonObject const& line) {
    // As far as a JSON number tells one millisecond from the next.
    constexpr double latest = 9007199254740992.0;
    return static_cast<qint64>(std::clamp(line.value(QStringLiteral("time")).toDouble(), 0.0, latest));
}

void take_files(QJsonObject const& line, UNFINISHED_ACTION& action) {
    for (QJsonValue const& path : line.value(QStringLiteral("files")).toArray())
        if (QString const file = path.toString(); !file.isEmpty())
            action.files += file;
}

}  // namespace

QByteArray journal_line(JOURNAL_EVENT event, int action, QStringList const& files, qint64 time) {
    QJsonObject line = {{QStringLiteral("what"), name_of(event)}, {QStringLiteral("id"), action}};
    if (event == JOURNAL_EVENT::started)
        line.insert(QStringLiteral("time"), time);
    if (!files.isEmpty())
        line.insert(QStringLiteral("files"), QJsonArray::fromStringList(files));
    return QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
}

std::vector<UNFINISHED_ACTION> read_journal(QIODevice& journal) {
    QMap<int, UNFINISHED_ACTION> running;
    auto const text = std::make_unique_for_overwrite<char[]>(longest_line);
    while (true) {
        qint64 const length = journal.readLine(text.get(), longest_line);
        if (length <= 0)
            break;
        QJsonObject const line =
            QJsonDocument::fromJson(QByteArray::fromRawData(text.get(), static_cast<int>(length))).object();
        int const id = line.value(QStringLiteral("id")).toInt();
        QString const what = line.value(QStringLiteral("what")).toString();
        if (what == name_of(JOURNAL_EVENT::ended)) {
            running.remove(id);
        } else if (what == name_of(JOURNAL_EVENT::started)) {
            UNFINISHED_ACTION& action = running[id];
            action = {{}, time_of(line)};
            take_files(line, action);
        } else if (what == name_of(JOURNAL_EVENT::writes)) {
            take_files(line, running[id]);
        }
    }
    return {running.begin(), running.end()};
}

}  // namespace tool
