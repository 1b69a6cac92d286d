// The build as a stream for machines: one JSON object a line, described in docs/events.md.
#pragma once

#include "host/tool/runner.hpp"

#include <QFile>
#include <QJsonObject>

namespace tool {

class EVENT_WRITER : public RUN_OBSERVER {
public:
    /// "-" is standard output. False with a cause when the file cannot be made.
    bool open(QString const& file, QString& error);
    /// Whether every event has arrived.
    bool is_sound() const { return sound_; }

    void run_started(PLAN const& plan) override;
    void action_started(PLANNED_ACTION const& planned) override;
    void line(PLANNED_ACTION const& planned, QString const& text) override;
    void action_finished(PLANNED_ACTION const& planned, ACTION_RESULT const& result) override;
    void action_is_up_to_date(PLANNED_ACTION const& planned) override;
    void run_finished(RUN_COUNTS const& counts) override;

private:
    void write(char const* event, QJsonObject object);

    QFile file_;
    bool sound_ = true;
};

}  // namespace tool
