// Packs every source that one "Atlas" rule target gathers into pages, "<base>0.dds" and so on, and writes their index,
// "<base>.tai". Pages are first made as Targa files and then compressed like any other texture.
#pragma once

#include "dds/action_line_sink.hpp"
#include "processor/host/action_convert.hpp"

#include <cstdint>

class ACTION_ATLAS : public ACTION_CONVERT, public ACTION_LINE_SINK<ACTION_ATLAS> {
public:
    using ACTION_LINE_SINK::add_output_line;

    /// `base` is the target's path without an extension; width and height limit the pages.
    ACTION_ATLAS(PHYSICAL_PATH const& base, std::int32_t width, std::int32_t height, PROCESSOR_INTERFACE& processor);

    /// Sources are loaded, and sources of one size are packed, in the order in which they are added.
    void add_source(LOGICAL_PATH const& source) { sources_.append(source); }

    QString get_name(bool detailed) override;
    void get_source_files(QVector<LOGICAL_PATH>& sources, FILE_MAP const& files) override;
    /// Of the pages only those of an earlier build are known beforehand; the others are registered when they are there.
    void get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime& newest,
                            FILE_MAP const& files, RULE_CACHE const& rules) override;
    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override;

private:
    class RUN;

    PHYSICAL_PATH page_path(int index, char const* extension) const;
    PHYSICAL_PATH index_path() const;

    PHYSICAL_PATH base_;
    std::int32_t width_;
    std::int32_t height_;
    QVector<LOGICAL_PATH> sources_;
};
