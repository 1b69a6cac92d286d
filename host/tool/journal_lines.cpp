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
constexpr char const* head_name = "journal";

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

// Each file is an array: path, what stood there, what was made there.
void take_files(QJsonObject const& line, UNFINISHED_ACTION& action) {
    for (QJsonValue const& value : line.value(QStringLiteral("files")).toArray()) {
        QJsonArray const file = value.toArray();
        if (QString const path = file.at(0).toString(); !path.isEmpty())
            action.take({path, to_identity(file.at(1).toString()), to_identity(file.at(2).toString())});
    }
}

QJsonArray to_json(std::vector<FILE_AT_RISK> const& files) {
    QJsonArray array;
    for (FILE_AT_RISK const& file : files)
        array.append(QJsonArray{file.path, to_text(file.before), to_text(file.made)});
    return array;
}

QByteArray to_line(QJsonObject const& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

}  // namespace

void UNFINISHED_ACTION::take(FILE_AT_RISK const& file) {
    auto const known =
        std::find_if(files.begin(), files.end(), [&](FILE_AT_RISK const& other) { return other.path == file.path; });
    if (known == files.end())
        files.push_back(file);
    else if (file.made.exists())
        known->made = file.made;
}

QString to_text(FILE_IDENTITY const& identity) {
    if (!identity.exists())
        return {};
    QStringList numbers;
    for (quint64 const number :
         {identity.device, identity.inode, static_cast<std::uint64_t>(identity.born),
          static_cast<std::uint64_t>(identity.size), static_cast<std::uint64_t>(identity.modified),
          static_cast<std::uint64_t>(identity.changed)})
        numbers += QString::number(number, 16);
    return numbers.join(u'.');
}

FILE_IDENTITY to_identity(QString const& text) {
    QStringList const parts = text.split(u'.');
    std::array<quint64, 6> numbers = {};
    if (parts.size() != static_cast<int>(numbers.size()))
        return {};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        bool is_number = false;
        numbers[i] = parts[static_cast<int>(i)].toULongLong(&is_number, 16);
        if (!is_number)
            return {};
    }
    FILE_IDENTITY const identity = {numbers[0],
                                    numbers[1],
                                    static_cast<std::int64_t>(numbers[2]),
                                    static_cast<std::int64_t>(numbers[3]),
                                    static_cast<std::int64_t>(numbers[4]),
                                    static_cast<std::int64_t>(numbers[5])};
    return identity.exists() ? identity : FILE_IDENTITY();
}

QByteArray journal_head(QString const& origin) {
    return to_line({{QStringLiteral("what"), QLatin1String(head_name)}, {QStringLiteral("origin"), origin}});
}

QByteArray journal_line(JOURNAL_EVENT event, int action, std::vector<FILE_AT_RISK> const& files, qint64 time) {
    QJsonObject line = {{QStringLiteral("what"), name_of(event)}, {QStringLiteral("id"), action}};
    if (event == JOURNAL_EVENT::started)
        line.insert(QStringLiteral("time"), time);
    if (!files.empty())
        line.insert(QStringLiteral("files"), to_json(files));
    return to_line(line);
}

JOURNAL read_journal(QIODevice& journal) {
    JOURNAL found;
    QMap<int, UNFINISHED_ACTION> running;
    auto const text = std::make_unique_for_overwrite<char[]>(longest_line);
    for (bool is_first = true; true; is_first = false) {
        qint64 const length = journal.readLine(text.get(), longest_line);
        if (length <= 0)
            break;
        QJsonObject const line =
            QJsonDocument::fromJson(QByteArray::fromRawData(text.get(), static_cast<int>(length))).object();
        int const id = line.value(QStringLiteral("id")).toInt();
        QString const what = line.value(QStringLiteral("what")).toString();
        if (is_first && what == QLatin1String(head_name)) {
            found.origin = line.value(QStringLiteral("origin")).toString();
        } else if (what == name_of(JOURNAL_EVENT::ended)) {
            running.remove(id);
        } else if (what == name_of(JOURNAL_EVENT::started)) {
            UNFINISHED_ACTION& action = running[id];
            action = {{}, time_of(line)};
            take_files(line, action);
        } else if (what == name_of(JOURNAL_EVENT::writes)) {
            take_files(line, running[id]);
        }
    }
    found.actions = {running.begin(), running.end()};
    return found;
}

}  // namespace tool
