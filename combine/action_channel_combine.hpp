// An ordinary image file (whatever FreeImage can write and the target's extension names) from up to four grey sources,
// one for each channel. Each source is levelled on the way. Used for blend maps, which other tools read.
#pragma once

#include "dds/action_line_sink.hpp"
#include "processor/host/action_convert.hpp"

#include <array>

class ACTION_CHANNEL_COMBINE : public ACTION_CONVERT, public ACTION_LINE_SINK<ACTION_CHANNEL_COMBINE> {
public:
    using ACTION_LINE_SINK::add_output_line;

    static constexpr std::size_t channel_count = 4;

    /// No channel has a source yet.
    ACTION_CHANNEL_COMBINE(PHYSICAL_PATH const& target, PROCESSOR_INTERFACE& processor);

    /// `channel` is 0 for red, 1 green, 2 blue, 3 alpha. An empty path takes the channel's source away: red, green and
    /// blue are then 0, and without alpha the target has three channels.
    void set_channel_source(std::size_t channel, LOGICAL_PATH const& source);

    QString get_name(bool detailed) override;
    void get_source_files(QVector<LOGICAL_PATH>& sources, FILE_MAP const& files) override;
    /// While it runs, FreeImage's messages in the whole process are lines of this action: two of these actions must not
    /// run at the same time.
    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override;

private:
    bool combine_to(PHYSICAL_PATH const& target, FILE_MAP const& files, RULE_CACHE const& rules);

    std::array<LOGICAL_PATH, channel_count> sources_;
};
