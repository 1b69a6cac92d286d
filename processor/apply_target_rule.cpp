#include "processor/apply_target_rule.hpp"

#include "processor/host/paths.hpp"

void apply_target_rule(std::unique_ptr<ACTION_CONVERT> action, RULE const& rule,
                       std::vector<std::unique_ptr<ACTION_INTERFACE>>& result, QString const& working_directory,
                       LOGICAL_PATH const& logical, PHYSICAL_PATH const& physical) {
    if (!action)
        return;
    QString const target_path = QStringLiteral("TargetPath");
    if (rule.value(target_path).isNull()) {
        action->set_error(QStringLiteral("No target path has been specified in the rule!"));
    } else {
        QString const folder = PATHS::relative_target_path_from_rule_path(rule, target_path, logical, physical);
        action->set_target_path(PHYSICAL_PATH(working_directory + QLatin1Char('/') + folder));
    }
    QVariant const& base_name = rule.value(QStringLiteral("TargetBaseName"));
    if (!base_name.isNull())
        action->set_target_base_name(base_name.toString());
    result.push_back(std::move(action));
}
