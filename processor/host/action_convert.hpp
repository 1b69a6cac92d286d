// An action that turns one source file, or the files of one stem, into one target file. Its target is put together from
// three pieces, folder + base name + extension, each of which a processor may set; what is not set comes from the
// source: the same folder below the working data root, the same base name, the same extension.
#pragma once

#include "processor/host/action_tdb.hpp"

class ZAB_SHARED_API ACTION_CONVERT : public ACTION_TDB {
public:
    /// `source` is a source file, or the stem that several source files share. A stem's dots belong to its base name.
    ACTION_CONVERT(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor);
    ACTION_CONVERT(ACTION_CONVERT const& other);
    ~ACTION_CONVERT() override;

    void set_target(PHYSICAL_PATH const& target);
    void set_target_path(PHYSICAL_PATH const& folder);
    void set_target_base_name(QString const& base_name);
    /// Sets base name and extension.
    void set_target_filename(QString const& file_name);
    /// What follows the base name, the dot included. It may hold more than a file extension ("_gloss_map.dds").
    void set_target_extension(QString const& extension);
    PHYSICAL_PATH get_target() const;

    PHYSICAL_PATH const& source() const { return source_; }
    /// The logical path of the source or stem.
    LOGICAL_PATH const& logical_source() const { return logical_source_; }

    void get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime& newest,
                            FILE_MAP const& files, RULE_CACHE const& rules) override;
    /// Makes the target's folder, calls `convert`, and registers the target that it wrote. Nothing of an earlier target
    /// survives: it is removed before the conversion, so a failure can never pass for a success.
    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override;

    /// Appends the files that the action reads; by default the source alone.
    virtual void get_source_files(QVector<LOGICAL_PATH>& sources, FILE_MAP const& files);
    virtual bool is_target_temporary();
    virtual bool is_target_binary();
    /// Writes `target`. False means failure, after one output line for each cause.
    virtual bool convert(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const& rules,
                         FILE_MAP const& files);

private:
    PHYSICAL_PATH source_;
    LOGICAL_PATH logical_source_;
    QString target_folder_;
    QString target_base_name_;
    QString target_extension_;
};
