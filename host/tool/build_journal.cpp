#include "host/tool/build_journal.hpp"

#include "host/tool/state_folder.hpp"
#include "platform/qe/replace_file.hpp"
#include "processor/host/paths.hpp"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr char const* file_name = "running";

// The clock that stamps files may lag behind the one that stamps lines, and signs of life come now and then.
constexpr std::int64_t slack = 1'000'000'000;
// In milliseconds; as nanoseconds it still is a number.
constexpr qint64 latest = std::numeric_limits<std::int64_t>::max() / 2'000'000;

QString path_in(QString const& state_folder) {
    return state_folder + u'/' + QLatin1String(file_name);
}

// Which file the journal is, on which machine. Without a time of birth and a name of the machine one could guess it.
QString origin_of(int journal) {
    FILE_IDENTITY const identity = identity_of(journal);
    QFile machine(QStringLiteral("/etc/machine-id"));
    QByteArray const name = machine.open(QIODevice::ReadOnly) ? machine.readAll().trimmed() : QByteArray();
    if (identity.born == 0 && name.isEmpty())
        return {};
    QByteArray const hash = QCryptographicHash::hash("zab journal " + name, QCryptographicHash::Sha256).toHex();
    return QStringLiteral("%1.%2.%3")
        .arg(QString::number(identity.inode, 16), QString::number(identity.born, 16), QString::fromLatin1(hash));
}

}  // namespace

std::vector<FILE_AT_RISK> files_at_risk(QString const& file) {
    std::vector<FILE_AT_RISK> files = {{file, identity_of(file), {}}};
    for (int number = 0; number < QE::most_unfinished_names; ++number) {
        QString const unfinished =
            QFile::decodeName(QE::unfinished_file(QFile::encodeName(file).toStdString(), number).string().c_str());
        files.push_back({unfinished, identity_of(unfinished), {}});
        // The first name that is free is taken.
        if (!files.back().before.exists())
            break;
    }
    return files;
}

UNFINISHED_ACTION files_at_risk(PLANNED_ACTION const& planned) {
    UNFINISHED_ACTION action;
    action.started = QDateTime::currentMSecsSinceEpoch();
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
        if (!is_older_file(target))
            for (FILE_AT_RISK const& file : files_at_risk(target.physical_path))
                action.take(file);
    return action;
}

QStringList unfinished_files(UNFINISHED_ACTION const& action, std::int64_t last_sign_of_life) {
    QStringList files;
    std::int64_t const started = std::min(action.started, latest) * 1'000'000;
    for (FILE_AT_RISK const& file : action.files) {
        FILE_IDENTITY const now = identity_of(file.path);
        bool const is_raw = PATHS::logical_path(PHYSICAL_PATH(file.path)).text().startsWith(QLatin1String("<raw>/"));
        // Its own renaming changed its entry since.
        FILE_IDENTITY made = file.made;
        made.changed = now.changed;
        bool const is_as_made = now == made && now.changed - slack <= last_sign_of_life;
        bool const was_written =
            !is_raw && now != file.before && now.changed >= started - slack && now.changed - slack <= last_sign_of_life;
        if (now.exists() && (is_as_made || was_written))
            files += file.path;
    }
    return files;
}

void remove_unfinished_files(UNFINISHED_ACTION const& action, std::int64_t last_sign_of_life) {
    for (QString const& file : unfinished_files(action, last_sign_of_life))
        QFile::remove(file);
}

BUILD_JOURNAL::~BUILD_JOURNAL() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

BUILD_JOURNAL::LEFT_OVER BUILD_JOURNAL::left_over(QString const& state_folder) {
    int const descriptor = open_state_file(state_folder, file_name, O_RDONLY);
    if (descriptor < 0)
        return {};
    LEFT_OVER found;
    QFile file;
    if (file.open(descriptor, QIODevice::ReadOnly, QFile::AutoCloseHandle)) {
        JOURNAL journal = read_journal(file);
        found.is_foreign = journal.origin.isEmpty() || journal.origin != origin_of(descriptor);
        found.last_sign_of_life = identity_of(descriptor).modified;
        if (!found.is_foreign)
            found.actions = std::move(journal.actions);
    }
    return found;
}

void BUILD_JOURNAL::forget_left_over(QString const& state_folder) {
    QFile::remove(path_in(state_folder));
}

bool BUILD_JOURNAL::open(QString const& state_folder, QString& error) {
    state_folder_ = state_folder;
    forget_left_over(state_folder);
    descriptor_ = open_state_file(state_folder, file_name, O_WRONLY | O_CREAT | O_EXCL | O_APPEND);
    if (descriptor_ < 0 || !append(journal_head(origin_of(descriptor_)))) {
        error = QStringLiteral("%1 cannot be written: %2")
                    .arg(path_in(state_folder), QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    return true;
}

bool BUILD_JOURNAL::append(QByteArray const& line) {
    return ::write(descriptor_, line.constData(), static_cast<std::size_t>(line.size())) == line.size();
}

bool BUILD_JOURNAL::note_start(PLANNED_ACTION const& planned, UNFINISHED_ACTION const& unfinished) {
    return append(journal_line(JOURNAL_EVENT::started, planned.id, unfinished.files, unfinished.started));
}

bool BUILD_JOURNAL::note_files(PLANNED_ACTION const& planned, std::vector<FILE_AT_RISK> const& files) {
    return append(journal_line(JOURNAL_EVENT::writes, planned.id, files));
}

bool BUILD_JOURNAL::note_end(PLANNED_ACTION const& planned) {
    return append(journal_line(JOURNAL_EVENT::ended, planned.id, {}));
}

void BUILD_JOURNAL::note_life() {
    futimens(descriptor_, nullptr);
}

void BUILD_JOURNAL::close() {
    ::close(descriptor_);
    descriptor_ = -1;
    forget_left_over(state_folder_);
}

}  // namespace tool
