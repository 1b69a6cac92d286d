#include "host/tool/build_journal.hpp"

#include "platform/qe/replace_file.hpp"
#include "processor/host/paths.hpp"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>

#include <fcntl.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr char const* started = "started";
constexpr char const* writes = "writes";
constexpr char const* ended = "ended";

// The clock that stamps files may lag behind the one that stamps lines.
constexpr qint64 clock_slack = 1000;

QString journal_file(QString const& state_folder) {
    return state_folder + QStringLiteral("/running");
}

/// Whether the file was written since the action started.
bool is_of(UNFINISHED_ACTION const& action, QFileInfo const& file) {
    return file.lastModified().toMSecsSinceEpoch() >= action.started - clock_slack;
}

bool is_latin_letter(QChar letter) {
    return (letter >= u'a' && letter <= u'z') || (letter >= u'A' && letter <= u'Z');
}

}  // namespace

QStringList files_at_risk(PLANNED_ACTION const& planned) {
    QStringList paths;
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
        if (!is_older_file(target))
            paths += target.physical_path.text();
    return paths;
}

void remove_unfinished_files(UNFINISHED_ACTION const& action) {
    for (QString const& file : action.files) {
        QFile::remove(file);
        QFile::remove(QFile::decodeName(QE::unfinished_file(QFile::encodeName(file).toStdString()).c_str()));
        // tells it apart.
        QFileInfo const info(file);
        QString const beside = info.fileName() + u'.';
        for (QFileInfo const& other : info.dir().entryInfoList(QDir::Files | QDir::Hidden)) {
            QString const name = other.fileName();
            if (name.size() == beside.size() + 6 && name.startsWith(beside) &&
                std::all_of(name.begin() + beside.size(), name.end(), is_latin_letter) && is_of(action, other))
                QFile::remove(other.filePath());
        }
    }
}

void remove_unfinished_neighbours(UNFINISHED_ACTION const& action) {
    std::set<QString> folders;
    for (QString const& file : action.files)
        if (!PATHS::logical_path(PHYSICAL_PATH(file)).text().startsWith(QLatin1String("<raw>/")))
            folders.insert(QFileInfo(file).path());
    for (QString const& folder : folders)
        for (QFileInfo const& info : QDir(folder).entryInfoList({QStringLiteral("*.part")}, QDir::Files | QDir::Hidden))
            if (is_of(action, info))
                QFile::remove(info.filePath());
}

BUILD_JOURNAL::~BUILD_JOURNAL() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

std::vector<UNFINISHED_ACTION> BUILD_JOURNAL::left_over(QString const& state_folder) {
    QFile file(journal_file(state_folder));
    QMap<int, UNFINISHED_ACTION> running;
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.atEnd()) {
            QJsonObject const line = QJsonDocument::fromJson(file.readLine()).object();
            int const id = line.value(QStringLiteral("id")).toInt();
            QString const what = line.value(QStringLiteral("what")).toString();
            if (what == QLatin1String(ended)) {
                running.remove(id);
            } else if (what == QLatin1String(started) || what == QLatin1String(writes)) {
                UNFINISHED_ACTION& action = running[id];
                if (what == QLatin1String(started))
                    action = {{}, static_cast<qint64>(line.value(QStringLiteral("time")).toDouble())};
                for (QJsonValue const& path : line.value(QStringLiteral("files")).toArray())
                    action.files += path.toString();
            }
        }
    }
    return {running.begin(), running.end()};
}

void BUILD_JOURNAL::forget_left_over(QString const& state_folder) {
    QFile::remove(journal_file(state_folder));
}

bool BUILD_JOURNAL::open(QString const& state_folder, QString& error) {
    path_ = journal_file(state_folder);
    descriptor_ =
        ::open(QFile::encodeName(path_).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666);
    if (descriptor_ < 0)
        error = QStringLiteral("%1 cannot be written: %2").arg(path_, QString::fromLocal8Bit(std::strerror(errno)));
    return descriptor_ >= 0;
}

bool BUILD_JOURNAL::append(char const* what, PLANNED_ACTION const& planned, QStringList const& files) {
    QJsonObject line = {{QStringLiteral("what"), QLatin1String(what)}, {QStringLiteral("id"), planned.id}};
    if (what == started)
        line.insert(QStringLiteral("time"), QDateTime::currentMSecsSinceEpoch());
    if (!files.isEmpty())
        line.insert(QStringLiteral("files"), QJsonArray::fromStringList(files));
    QByteArray const bytes = QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
    return ::write(descriptor_, bytes.constData(), static_cast<std::size_t>(bytes.size())) == bytes.size();
}

bool BUILD_JOURNAL::note_start(PLANNED_ACTION const& planned) {
    return append(started, planned, files_at_risk(planned));
}

bool BUILD_JOURNAL::note_file(PLANNED_ACTION const& planned, QString const& file) {
    return append(writes, planned, {file});
}

bool BUILD_JOURNAL::note_end(PLANNED_ACTION const& planned) {
    return append(ended, planned, {});
}

void BUILD_JOURNAL::close() {
    ::close(descriptor_);
    descriptor_ = -1;
    QFile::remove(path_);
}

}  // namespace tool
