// Write-ahead logging without a sync per transaction: a killed process loses nothing that it committed, and a machine
// that loses power loses the last records at most, which only means that their actions run again. See
// https://www.sqlite.org/wal.html and https://www.sqlite.org/pragma.html#pragma_synchronous.
//
// The folder may have come with a stranger's project, so nothing is opened that this program does not leave behind. A
// rollback journal can name a file that SQLite then deletes
// (https://www.sqlite.org/fileformat2.html#the_rollback_journal, "super-journal"); this program never has one, not even
// while it makes the database, so none is let near SQLite. A write-ahead log names no files. Views and triggers could
// run without end; the schema is compared, letter by letter.
#include "host/tool/state_store.hpp"

#include "host/tool/state_folder.hpp"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <iterator>

#include <sqlite3.h>

namespace tool {

namespace {

// Raised with every change of what the records look like.
constexpr int version = 1;
constexpr std::array table_names = {"actions", "settings", "leftovers", "libraries"};

char const* name_of(STATE_STORE::TABLE table) {
    return table_names[static_cast<std::size_t>(table)];
}

QByteArray table_definition(char const* name) {
    return QByteArray("CREATE TABLE ") + name + " (id INTEGER PRIMARY KEY, key TEXT NOT NULL, content BLOB NOT NULL)";
}

struct STATEMENT_END {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using STATEMENT = std::unique_ptr<sqlite3_stmt, STATEMENT_END>;

QByteArray column_bytes(sqlite3_stmt* statement, int column) {
    auto const* const bytes = static_cast<char const*>(sqlite3_column_blob(statement, column));
    return QByteArray(bytes, sqlite3_column_bytes(statement, column));
}

}  // namespace

struct STATE_STORE::DATABASE {
    sqlite3* handle = nullptr;
    bool can_write = false;
    bool in_transaction = false;
    std::array<STATEMENT, table_names.size()> put;

    DATABASE() = default;
    DATABASE(DATABASE const&) = delete;
    DATABASE& operator=(DATABASE const&) = delete;
    ~DATABASE() {
        for (STATEMENT& statement : put)
            statement.reset();
        sqlite3_close(handle);
    }

    bool open(QString const& path, int flags) {
        // Links above the folder are the user's.
        QFileInfo const info(path);
        QString const real = info.dir().canonicalPath() + u'/' + info.fileName();
        if (sqlite3_open_v2(real.toUtf8().constData(), &handle, flags | SQLITE_OPEN_NOFOLLOW, nullptr) != SQLITE_OK)
            return false;
        sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
        sqlite3_busy_timeout(handle, 5000);
        return true;
    }
    bool run(QByteArray const& sql) {
        return sqlite3_exec(handle, sql.constData(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    STATEMENT prepare(QByteArray const& sql) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(handle, sql.constData(), sql.size(), &statement, nullptr);
        return STATEMENT(statement);
    }
    /// -1 when it cannot be told.
    int user_version() {
        STATEMENT const statement = prepare("PRAGMA user_version");
        return statement && sqlite3_step(statement.get()) == SQLITE_ROW ? sqlite3_column_int(statement.get(), 0) : -1;
    }
    /// Whether the database holds the tables of this program and nothing else.
    bool has_own_schema() {
        STATEMENT const statement = prepare("SELECT sql FROM sqlite_schema ORDER BY rowid");
        for (char const* const name : table_names)
            if (!statement || sqlite3_step(statement.get()) != SQLITE_ROW ||
                column_bytes(statement.get(), 0) != table_definition(name))
                return false;
        return sqlite3_step(statement.get()) == SQLITE_DONE;
    }
    /// Whether the last call failed for want of rights, room or memory, or because a disk fails.
    bool lacks_surroundings() const {
        int const code = sqlite3_extended_errcode(handle);
        constexpr int causes[] = {SQLITE_CANTOPEN, SQLITE_FULL,  SQLITE_READONLY,
                                  SQLITE_PERM,     SQLITE_NOMEM, SQLITE_IOERR};
        return code != SQLITE_IOERR_SHORT_READ &&
               std::find(std::begin(causes), std::end(causes), code & 0xff) != std::end(causes);
    }
    QString message() const { return QString::fromUtf8(sqlite3_errmsg(handle)); }
};

STATE_STORE::STATE_STORE(QString const& folder) : folder_(folder) {
}

STATE_STORE::~STATE_STORE() {
    commit();
}

bool STATE_STORE::open_for_reading(QString& warning) {
    QString const path = folder_ + QStringLiteral("/state.db");
    if (is_unusable_ || !error_.isEmpty() || !QFileInfo::exists(path))
        return false;
    if (QFileInfo::exists(path + QStringLiteral("-journal"))) {
        warning =
            QStringLiteral("the build state %1 has a journal that this program did not write; everything is built "
                           "anew")
                .arg(path);
        is_unusable_ = true;
        return false;
    }
    auto database = std::make_unique<DATABASE>();
    int const found = database->open(path, SQLITE_OPEN_READWRITE) ? database->user_version() : -1;
    bool const is_own = found == version && database->has_own_schema();
    if (!is_own && database->lacks_surroundings()) {
        error_ = QStringLiteral("the build state %1 cannot be read: %2").arg(path, database->message());
        return false;
    }
    if (!is_own) {
        // 0: begun by a build that was ended before it had anything to note.
        if (found < 0)
            warning = QStringLiteral("the build state %1 is damaged (%2); everything is built anew")
                          .arg(path, database->message());
        else if (found > 0)
            warning =
                QStringLiteral("the build state %1 is of another version of this program; everything is built anew")
                    .arg(path);
        is_unusable_ = true;
        return false;
    }
    database->run("PRAGMA mmap_size = 268435456");
    database_ = std::move(database);
    return true;
}

std::vector<STATE_STORE::RECORD> STATE_STORE::read(TABLE table, QString& warning) {
    std::vector<RECORD> records;
    if (!database_ && !open_for_reading(warning))
        return records;
    STATEMENT const statement =
        database_->prepare(QByteArray("SELECT id, key, content FROM ") + name_of(table) + " ORDER BY id");
    int status = statement ? SQLITE_ROW : SQLITE_ERROR;
    while (statement && (status = sqlite3_step(statement.get())) == SQLITE_ROW)
        records.push_back({sqlite3_column_int64(statement.get(), 0),
                           QString::fromUtf8(column_bytes(statement.get(), 1)), column_bytes(statement.get(), 2)});
    if (status == SQLITE_DONE)
        return records;
    if (database_->lacks_surroundings()) {
        error_ = QStringLiteral("the build state %1/state.db cannot be read: %2").arg(folder_, database_->message());
        return {};
    }
    warning = QStringLiteral("the build state %1/state.db is damaged (%2); everything is built anew")
                  .arg(folder_, database_->message());
    is_unusable_ = true;
    return {};
}

bool STATE_STORE::open_for_writing() {
    if (database_ && database_->can_write)
        return true;
    QString const path = folder_ + QStringLiteral("/state.db");
    if (is_unusable_) {
        database_.reset();
        QFile::remove(path + QStringLiteral(".old"));
        QFile::rename(path, path + QStringLiteral(".old"));
        for (char const* const suffix : {"-journal", "-wal", "-shm"})
            QFile::remove(path + QLatin1String(suffix));
        is_unusable_ = false;
    }
    if (!database_) {
        make_state_folder(folder_);
        // What stands beside no database is nobody's.
        for (char const* const suffix : {"-journal", "-wal", "-shm"})
            QFile::remove(path + QLatin1String(suffix));
        database_ = std::make_unique<DATABASE>();
        if (!database_->open(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE))
            return fail();
        // On its way to the log it would write a journal once.
        database_->run("PRAGMA journal_mode = OFF");
    }
    bool sound = database_->run("PRAGMA journal_mode = WAL") && database_->run("PRAGMA synchronous = NORMAL");
    if (sound && database_->user_version() == 0) {
        // All or nothing: a version without its tables would read as damage.
        QByteArray sql = "BEGIN;";
        for (char const* const name : table_names)
            sql += table_definition(name) + ';';
        sound = database_->run(sql + "PRAGMA user_version = " + QByteArray::number(version) + "; COMMIT");
    }
    database_->can_write = sound;
    return sound || fail();
}

bool STATE_STORE::fail() {
    if (error_.isEmpty())
        error_ = QStringLiteral("the build state %1/state.db cannot be written: %2").arg(folder_, database_->message());
    return false;
}

bool STATE_STORE::put(TABLE table, std::int64_t id, QString const& key, QByteArray const& content) {
    if (!error_.isEmpty() || !open_for_writing())
        return false;
    if (!database_->in_transaction && !(database_->in_transaction = database_->run("BEGIN IMMEDIATE")))
        return fail();
    STATEMENT& statement = database_->put[static_cast<std::size_t>(table)];
    if (!statement)
        statement = database_->prepare(QByteArray("INSERT OR REPLACE INTO ") + name_of(table) + " VALUES (?, ?, ?)");
    if (!statement)
        return fail();
    QByteArray const text = key.toUtf8();
    sqlite3_bind_int64(statement.get(), 1, id);
    sqlite3_bind_text(statement.get(), 2, text.constData(), text.size(), SQLITE_STATIC);
    sqlite3_bind_blob(statement.get(), 3, content.constData(), content.size(), SQLITE_STATIC);
    bool const done = sqlite3_step(statement.get()) == SQLITE_DONE;
    sqlite3_reset(statement.get());
    return done || fail();
}

bool STATE_STORE::erase(TABLE table, std::int64_t id) {
    if (!error_.isEmpty() || !open_for_writing())
        return false;
    if (!database_->in_transaction && !(database_->in_transaction = database_->run("BEGIN IMMEDIATE")))
        return fail();
    return database_->run(QByteArray("DELETE FROM ") + name_of(table) +
                          " WHERE id = " + QByteArray::number(qint64(id))) ||
           fail();
}

bool STATE_STORE::commit() {
    if (!database_ || !database_->in_transaction)
        return error_.isEmpty();
    database_->in_transaction = false;
    return database_->run("COMMIT") || fail();
}

}  // namespace tool
