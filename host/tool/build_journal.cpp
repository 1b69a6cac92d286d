#include "host/tool/build_journal.hpp"

#include "platform/qe/replace_file.hpp"
#include "processor/host/paths.hpp"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>

#include <fcntl.h>
#include <unistd.h>

namespace tool {

namespace {

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
        // Qt's files that are written whole or not at all: the name and six letters. So is "rock.dds.backup", whose age
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
    return file.open(QIODevice::ReadOnly) ? read_journal(file) : std::vector<UNFINISHED_ACTION>();
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

bool BUILD_JOURNAL::append(QByteArray const& line) {
    return ::write(descriptor_, line.constData(), static_cast<std::size_t>(line.size())) == line.size();
}

bool BUILD_JOURNAL::note_start(PLANNED_ACTION const& planned) {
    return append(
        journal_line(JOURNAL_EVENT::started, planned.id, files_at_risk(planned), QDateTime::currentMSecsSinceEpoch()));
}

bool BUILD_JOURNAL::note_file(PLANNED_ACTION const& planned, QString const& file) {
    return append(journal_line(JOURNAL_EVENT::writes, planned.id, {file}));
}

bool BUILD_JOURNAL::note_end(PLANNED_ACTION const& planned) {
    return append(journal_line(JOURNAL_EVENT::ended, planned.id, {}));
}

void BUILD_JOURNAL::close() {
    ::close(descriptor_);
    descriptor_ = -1;
    QFile::remove(path_);
}

}  // namespace tool
