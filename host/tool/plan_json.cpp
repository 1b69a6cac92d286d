#include "host/tool/plan_json.hpp"

#include <QJsonObject>

namespace tool {

QJsonArray source_files(PLANNED_ACTION const& planned) {
    QJsonArray files;
    for (LOGICAL_PATH const& source : planned.sources)
        files.append(source.text());
    return files;
}

QJsonArray target_files(PLANNED_ACTION const& planned) {
    QJsonArray files;
    for (ACTION_INTERFACE::TARGET_FILE const& target : planned.targets)
        files.append(target.logical_path.text());
    return files;
}

QJsonArray to_json(PLAN const& plan) {
    QJsonArray actions;
    for (PLANNED_ACTION const& planned : plan.actions) {
        QJsonArray depends;
        for (PLANNED_ACTION::NEED const& need : planned.needs)
            depends.append(plan.actions[need.action].id);
        bool const is_error = planned.state == PLANNED_ACTION::STATE::error;
        bool const is_up_to_date = planned.state == PLANNED_ACTION::STATE::up_to_date;
        QString const state = is_error        ? QStringLiteral("error")
                              : is_up_to_date ? QStringLiteral("up-to-date")
                                              : QStringLiteral("run");
        actions.append(QJsonObject{
            {QStringLiteral("id"), planned.id},
            {QStringLiteral("name"), planned.name},
            {QStringLiteral("sources"), source_files(planned)},
            {QStringLiteral("targets"), target_files(planned)},
            {QStringLiteral("depends"), depends},
            {QStringLiteral("state"), state},
            {QStringLiteral("reason"), planned.reason},
            {QStringLiteral("error"), is_error ? QJsonValue(planned.error) : QJsonValue()},
        });
    }
    return actions;
}

}  // namespace tool
