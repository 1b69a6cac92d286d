// An action that only reports an error: a processor's way to tell of a mistake that it met while choosing actions.
#pragma once

#include "processor/host/action_interface.hpp"

class ZAB_SHARED_API ACTION_ERROR : public ACTION_INTERFACE {
public:
    ACTION_ERROR(QString const& name, QString const& error, PROCESSOR_INTERFACE& processor);
    ~ACTION_ERROR() override;

    /// The error concerns this file.
    void add_source_file(LOGICAL_PATH const& source);

    QString get_name(bool detailed) override;
    void get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime& newest,
                            FILE_MAP const& files, RULE_CACHE const& rules) override;
    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override;

private:
    QString name_;
    QVector<LOGICAL_PATH> sources_;
};
