// Records size, format and levels of every built texture in the image-information database: one for everything, or, in
// a project that is built for retail, one for each expansion.
#pragma once

#include "processor/host/action_interface.hpp"

class ACTION_IMAGE_INFO_DB : public ACTION_INTERFACE {
public:
    /// An empty expansion name stands for the core data.
    ACTION_IMAGE_INFO_DB(PROCESSOR_INTERFACE& processor, QString const& expansion);
    ~ACTION_IMAGE_INFO_DB() override;

    /// A header that the image loader cannot describe must not stop a build.
    bool ignore_assert(QString const& message) const override;
    QString get_name(bool detailed) override;
    void get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime& newest,
                            FILE_MAP const& files, RULE_CACHE const& rules) override;
    void add_external_dependencies(FILE_MAP const& files, RULE_CACHE const& rules) override;
    /// Always succeeds, and throws nothing. Files that cannot be read are left out; without any, the database file is
    /// removed. What keeps the database from being saved (a full disk, too little memory) is told in a line, and is the
    /// host's to judge: the target was not written. Uses the process's one database: two of these actions must not run
    /// at the same time in one process.
    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override;

private:
    /// "img_db", or for retail "img_db__" with the expansion's pack extension: the name of database and fragment.
    QString database_base_name(RULE_CACHE const& rules) const;
    bool belongs_here(LOGICAL_PATH const& path, RULE_CACHE const& rules) const;
    void record(FILE_MAP const& files, RULE_CACHE const& rules);

    QString expansion_;
};
