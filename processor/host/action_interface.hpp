// The base of every build action: what it is called, which files it reads and makes, what it depends on, and how it
// runs. The order of the virtual operations is fixed: plug-ins built against it rely on the slots.
#pragma once

#include "processor/host/export.hpp"
#include "processor/host/file_map.hpp"
#include "processor/host/physical_path.hpp"
#include "processor/host/rule_cache.hpp"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include <atomic>
#include <functional>
#include <optional>

class NR_XML_QUERY_INTERFACE;
class PROCESSOR_INTERFACE;

namespace QTSHARED {
class ASSET_FRAGMENT_BUILDER;
class ASSET_GRAPH;
}  // namespace QTSHARED

class ZAB_SHARED_API ACTION_INTERFACE {
public:
    /// The numbers of `succeeded` and `failed` are fixed; the others are the host's own.
    enum STATUS {
        STATUS_WAITING = 0,
        STATUS_RUNNING = 1,
        STATUS_SUCCEEDED = 2,
        STATUS_SKIPPED = 3,
        STATUS_FAILED = 4,
    };

    /// One file that an action makes. Temporary ones are gone again when the action has succeeded.
    struct TARGET_FILE {
        PHYSICAL_PATH physical_path;
        LOGICAL_PATH logical_path;
        bool temporary = false;
    };

    /// One target that a running action handed to version control.
    struct REGISTERED_FILE {
        enum class KIND { added, removed, reverted };
        PHYSICAL_PATH path;
        KIND kind;
    };

    struct DEPENDENCY {
        ACTION_INTERFACE* action;
        /// Whether this action can do without the other's success.
        bool optional;
    };

    explicit ACTION_INTERFACE(PROCESSOR_INTERFACE& processor);
    ACTION_INTERFACE(ACTION_INTERFACE const& other);
    ACTION_INTERFACE& operator=(ACTION_INTERFACE const&) = delete;

    virtual ~ACTION_INTERFACE();
    /// Asks a running action to stop soon. May be called from another thread.
    virtual void abort();
    /// Makes the action ready to run again: no lines, no progress, not aborted.
    virtual void reset();
    virtual bool ignore_assert(QString const& message) const;
    virtual QString get_name(bool detailed) = 0;
    /// Appends what the action reads and makes. `newest` is raised to the latest time stamp among what is read, for
    /// hosts that decide by time; it may be left as it is.
    virtual void get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime& newest,
                                    FILE_MAP const& files, RULE_CACHE const& rules) = 0;
    virtual void add_external_dependencies(FILE_MAP const& files, RULE_CACHE const& rules);
    virtual STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) = 0;
    virtual bool auto_fail_if_dependency_failed() const;
    virtual bool auto_fail_if_asserts_occured() const;
    virtual bool revert_target_files_if_failed() const;

    /// This action runs after `other`.
    void add_dependency(ACTION_INTERFACE& other, bool optional);
    /// Marks the action as failed before it runs; it then reports this message instead of working.
    void set_error(QString const& message);
    void set_progress_max(int maximum);

    void add_to_perforce(PHYSICAL_PATH const& file, FILE_MAP const& files, bool flag, QString const& description);
    void remove_from_perforce(PHYSICAL_PATH const& file, FILE_MAP const& files);
    void revert_from_perforce(PHYSICAL_PATH const& file, FILE_MAP const& files);

    /// Adds the fragment to the host's asset graph and writes its file. On refusal one output line says why.
    bool add_to_asset_graph_and_save(QTSHARED::ASSET_FRAGMENT_BUILDER const& builder, FILE_MAP const& files,
                                     RULE_CACHE const& rules);

    /// The id of the asset-graph fragment that stands for the path, empty when it has none.
    static QString asset_fragment_id(LOGICAL_PATH const& path, RULE_CACHE const& rules);
    /// Whether the file is shipped at all; `expansion`, when not null, receives the name of the expansion that it is
    /// shipped with (empty: the core data, and everything unless the global rule "Retail" holds).
    static bool is_file_ever_released(LOGICAL_PATH const& path, RULE_CACHE const& rules, QString* expansion, bool flag);

    /// Set by the host before actions run. Borrowed.
    static QTSHARED::ASSET_GRAPH* s_asset_graph;
    static NR_XML_QUERY_INTERFACE* s_database;

    // What the host reads back.
    /// The topic under which a processor made it.
    char const* rule_topic() const { return rule_topic_; }
    PROCESSOR_INTERFACE& processor() const { return processor_; }
    QString const& error() const { return error_; }
    QStringList const& output_lines() const { return lines_; }
    QVector<DEPENDENCY> const& dependencies() const { return dependencies_; }
    /// Files that the action reads if they are there, and that its list of sources does not name.
    QVector<LOGICAL_PATH> const& unlisted_sources() const { return unlisted_sources_; }
    QVector<REGISTERED_FILE> const& registered_files() const { return registered_; }
    /// Whether version control refused a file; a line of the action says which and why. Such an action has failed.
    bool version_control_failed() const { return version_control_failed_; }
    int progress() const { return progress_; }
    int progress_max() const { return progress_max_; }
    /// Called with every line as it is added, on the action's thread.
    void set_line_listener(std::function<void(QString const&)> listener) { listener_ = std::move(listener); }
    /// Files that the action will make for itself and take away again, in places where they are no target of anybody's.
    /// It takes away whatever stands there before, so that a host has to look first.
    QVector<PHYSICAL_PATH> const& working_files() const { return working_files_; }
    /// Called with the path of every file that the action is going to write besides its announced targets, or has
    /// written; throws WORKING_FILE_REFUSAL for one that it must not write.
    void set_working_file_listener(std::function<void(PHYSICAL_PATH const&)> listener) {
        working_file_listener_ = std::move(listener);
    }

protected:
    void add_output_line(QString const& line);
    /// Tells the host of a file that is no announced target and that the action is about to write, so that it does not
    /// stay behind when the process ends in the middle. Told once more when the file is there, the host knows it again:
    /// from the raw folder it takes nothing away that it does not know.
    void announce_working_file(PHYSICAL_PATH const& file);
    /// Tells the host so before the action runs.
    void need_working_file(PHYSICAL_PATH const& file) { working_files_.append(file); }
    void add_unlisted_source(LOGICAL_PATH const& source) { unlisted_sources_.append(source); }
    bool is_aborted() const { return aborted_; }
    void set_progress_value(int progress) { progress_ = progress; }

private:
    friend class ACTION_PROGRESS;

    void note_version_control(std::optional<QString> const& failure);

    PROCESSOR_INTERFACE& processor_;
    char const* rule_topic_;
    QString error_;
    QStringList lines_;
    QVector<DEPENDENCY> dependencies_;
    QVector<LOGICAL_PATH> unlisted_sources_;
    QVector<REGISTERED_FILE> registered_;
    QVector<PHYSICAL_PATH> working_files_;
    std::function<void(QString const&)> listener_;
    std::function<void(PHYSICAL_PATH const&)> working_file_listener_;
    bool version_control_failed_ = false;
    std::atomic<int> progress_max_{0};
    std::atomic<int> progress_{0};
    std::atomic<bool> aborted_{false};
};
