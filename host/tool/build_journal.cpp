#include "host/tool/build_journal.hpp"

#include "platform/qe/replace_file.hpp"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

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

QStringList target_paths(PLANNED_ACTION const& planned) {
    QStringList paths;
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
        paths += target.physical_path.text();
    return paths;
}

}  // namespace

void remove_unfinished_files(QStringList const& files) {
    for (QString const& file : files) {
        QFile::remove(file);
        QFile::remove(QFile::decodeName(QE::unfinished_file(QFile::encodeName(file).toStdString()).c_str()));
        // Qt's files that are written whole or not at all: the name and six characters.
        QFileInfo const info(file);
        QString const beside = info.fileName() + u'.';
        QDir const folder = info.dir();
        for (QString const& name : folder.entryList(QDir::Files | QDir::Hidden))
            if (name.size() == beside.size() + 6 && name.startsWith(beside) &&
                !name.midRef(beside.size()).contains(u'.'))
                QFile::remove(folder.filePath(name));
    }
}

void remove_unfinished_neighbours(UNFINISHED_ACTION const& action) {
    std::set<QString> folders;
    for (QString const& file : action.files)
        folders.insert(QFileInfo(file).path());
    for (QString const& folder : folders)
        for (QFileInfo const& info : QDir(folder).entryInfoList({QStringLiteral("*.part")}, QDir::Files | QDir::Hidden))
            if (info.lastModified().toMSecsSinceEpoch() >= action.started - clock_slack)
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
    return append(started, planned, target_paths(planned));
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
