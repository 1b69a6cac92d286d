// Turns an FGA vector field into a volume texture of 16-bit floats that wraps around on every axis.
#pragma once

#include "fga/vector_field.hpp"
#include "processor/host/action_convert.hpp"

class ACTION_FGA : public ACTION_CONVERT {
public:
    ACTION_FGA(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor);
    ACTION_FGA(ACTION_FGA const& other) = default;

    QString get_name(bool detailed) override;
    void get_source_files(QVector<LOGICAL_PATH>& sources, FILE_MAP const& files) override;
    /// True when the source was read, also when the target could not be opened: whether there is a target is the host's
    /// to see.
    bool convert(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const& rules,
                 FILE_MAP const& files) override;

private:
    /// False after a line, when the file was begun and could not be finished; it is then gone again.
    bool write_dds_file_nomip_fmt_rgba16(PHYSICAL_PATH const& path, std::vector<UTILITYLIB::FLOAT16_4> const& texels,
                                         UTILITYLIB::VECTOR_3c const& size);
};
