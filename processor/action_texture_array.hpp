// A texture array as the asset graph sees it: the ".texture_array" file names textures, and its fragment file, written
// beside it, says that the array needs them.
#pragma once

#include "processor/host/action_interface.hpp"

class ACTION_TEXTURE_ARRAY : public ACTION_INTERFACE {
public:
    ACTION_TEXTURE_ARRAY(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor);
    ~ACTION_TEXTURE_ARRAY() override;

    /// There is nothing to stop: a run is over at once.
    void abort() override;
    QString get_name(bool detailed) override;
    void get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime& newest,
                            FILE_MAP const& files, RULE_CACHE const& rules) override;
    /// Fails when the list cannot be read (opened, read to its end, or held in memory; it may have 16 MiB), or when the
    /// host does not take the fragment. Then the fragment of older versions stays.
    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override;

private:
    bool has_legacy_fragment(FILE_MAP const& files) const;
    STATUS write_fragment(FILE_MAP const& files, RULE_CACHE const& rules);
    /// The fragment file of older versions. It may as well belong to a texture of the same name.
    PHYSICAL_PATH legacy_fragment() const;
    PHYSICAL_PATH fragment() const;

    PHYSICAL_PATH source_;
    bool removes_legacy_fragment_ = false;
};
