// The build state on disk: `.zab/state.db`, an SQLite database of opaque records. It is read whole, once, and written
// record by record as actions end, so that a build that is killed loses nothing that was done. What the records mean is
// the business of BUILD_STATE.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace tool {

class STATE_STORE {
public:
    /// `folder` is made when the first record is written.
    explicit STATE_STORE(QString const& folder);
    STATE_STORE(STATE_STORE const&) = delete;
    STATE_STORE& operator=(STATE_STORE const&) = delete;
    ~STATE_STORE();

    /// The kinds of records; each is a table.
    enum class TABLE { actions, settings, leftovers, libraries };

    struct RECORD {
        std::int64_t id = 0;
        QString key;
        QByteArray content;
    };

    /// Every record. A database that is damaged or of another version reads as empty, with a line in `warning`; it is
    /// set aside as `state.db.old` when the first record is written. One that cannot be read at the moment is left
    /// alone; `error` says why.
    std::vector<RECORD> read(TABLE table, QString& warning);

    /// Writes go together until `commit`, or until this object ends. False when one failed; `error` says why then, and
    /// nothing more is written.
    bool put(TABLE table, std::int64_t id, QString const& key, QByteArray const& content);
    bool erase(TABLE table, std::int64_t id);
    bool commit();
    QString const& error() const { return error_; }

private:
    struct DATABASE;

    bool open_for_reading(QString& warning);
    bool open_for_writing();
    bool fail();

    QString folder_;
    std::unique_ptr<DATABASE> database_;
    bool is_unusable_ = false;
    QString error_;
};

}  // namespace tool
