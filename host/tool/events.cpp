#include "host/tool/events.hpp"

#include "host/tool/plan_json.hpp"

#include <QJsonDocument>

namespace tool {

namespace {

// Raised whenever an event or a member is taken away or changes its meaning; additions leave it as it is.
constexpr int schema_version = 1;

QJsonValue number(std::size_t value) {
    return static_cast<qint64>(value);
}

}  // namespace

bool EVENT_WRITER::open(QString const& file, QString& error) {
    bool opened = false;
    if (file == QLatin1String("-")) {
        opened = file_.open(stdout, QIODevice::WriteOnly);
    } else {
        file_.setFileName(file);
        opened = file_.open(QIODevice::WriteOnly | QIODevice::Truncate);
    }
    if (!opened)
        error = QStringLiteral("the events cannot be written to %1: %2").arg(file, file_.errorString());
    return opened;
}

void EVENT_WRITER::write(char const* event, QJsonObject object) {
    object.insert(QStringLiteral("event"), QLatin1String(event));
    QByteArray const bytes = QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
    sound_ = sound_ && file_.write(bytes) == bytes.size() && file_.flush();
}

void EVENT_WRITER::run_started(PLAN const& plan) {
    write("run_started",
          {{QStringLiteral("version"), schema_version}, {QStringLiteral("actions"), number(plan.actions.size())}});
}

void EVENT_WRITER::action_started(PLANNED_ACTION const& planned) {
    write("action_started", {{QStringLiteral("id"), planned.id}, {QStringLiteral("name"), planned.name}});
}

void EVENT_WRITER::line(PLANNED_ACTION const& planned, QString const& text) {
    write("line", {{QStringLiteral("id"), planned.id}, {QStringLiteral("text"), text}});
}

void EVENT_WRITER::action_finished(PLANNED_ACTION const& planned, ACTION_RESULT const& result) {
    for (QString const& text : result.library_lines)
        write("library_line", {{QStringLiteral("id"), planned.id}, {QStringLiteral("text"), text}});
    QString const status = result.status == ACTION_RESULT::STATUS::succeeded ? QStringLiteral("succeeded")
                           : result.status == ACTION_RESULT::STATUS::failed  ? QStringLiteral("failed")
                                                                             : QStringLiteral("interrupted");
    write("action_finished",
          {{QStringLiteral("id"), planned.id},
           {QStringLiteral("name"), planned.name},
           {QStringLiteral("sources"), source_files(planned)},
           {QStringLiteral("targets"), target_files(planned)},
           {QStringLiteral("status"), status},
           {QStringLiteral("made_no_file"), result.made_no_file},
           {QStringLiteral("diagnosis"), result.diagnosis.isEmpty() ? QJsonValue() : QJsonValue(result.diagnosis)},
           {QStringLiteral("killed_by"), result.killed_by.isEmpty() ? QJsonValue() : QJsonValue(result.killed_by)},
           {QStringLiteral("milliseconds"), static_cast<qint64>(result.milliseconds)},
           {QStringLiteral("peak_bytes"),
            result.peak_bytes ? QJsonValue(static_cast<qint64>(*result.peak_bytes)) : QJsonValue()}});
}

void EVENT_WRITER::action_is_up_to_date(PLANNED_ACTION const& planned) {
    write("action_up_to_date", {{QStringLiteral("id"), planned.id}, {QStringLiteral("name"), planned.name}});
}

void EVENT_WRITER::run_finished(RUN_COUNTS const& counts) {
    write("run_finished", {{QStringLiteral("total"), number(counts.total)},
                           {QStringLiteral("succeeded"), number(counts.succeeded)},
                           {QStringLiteral("made_no_file"), number(counts.made_no_file)},
                           {QStringLiteral("up_to_date"), number(counts.up_to_date)},
                           {QStringLiteral("failed"), number(counts.failed)},
                           {QStringLiteral("not_run"), number(counts.not_run)},
                           {QStringLiteral("interrupted"), counts.interrupted},
                           {QStringLiteral("milliseconds"), static_cast<qint64>(counts.milliseconds)}});
}

}  // namespace tool
