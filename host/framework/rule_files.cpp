#include "host/framework/rule_files.hpp"

#include "host/framework/rule_tables.hpp"
#include "processor/host/rule_schema.hpp"

namespace framework {

RULE_FILE read_rule_file(QString const& path, QString const& folder, DIAGNOSTICS& diagnostics) {
    RULE_FILE file{path, folder, {}};
    std::optional<toml::table> const document = read_toml(path, diagnostics);
    if (!document)
        return file;
    TOML_REPORTER reporter(path, diagnostics);
    for (auto const& [key, node] : in_written_order(*document)) {
        if (key->str() == "rule")
            file.rules = read_rule_tables(*node, reporter);
        else
            reporter.unknown_key(*key, {QStringLiteral("rule")});
    }
    return file;
}

namespace {

void check_rule(RULE_TABLE const& rule, QVector<RULE_SCHEMA const*> const& schemas, DIAGNOSTICS& diagnostics) {
    auto const warn = [&](int line, int column, QString text, QString const& name,
                          std::vector<QString> const& candidates) {
        QString const nearest =
            diagnostics.is_full(DIAGNOSTIC::SEVERITY::warning) ? QString() : nearest_name(name, candidates);
        if (!nearest.isEmpty())
            text += QStringLiteral("; did you mean \"%1\"?").arg(nearest);
        diagnostics.push_back({DIAGNOSTIC::SEVERITY::warning, rule.file, line, column, text});
    };

    RULE_SCHEMA const* schema = nullptr;
    std::vector<QString> names;
    for (RULE_SCHEMA const* candidate : schemas) {
        names.push_back(candidate->name());
        if (candidate->name() == rule.name)
            schema = candidate;
    }
    if (!schema) {
        warn(rule.line, rule.column, QStringLiteral("no schema declares a rule \"%1\"").arg(rule.name), rule.name,
             names);
        return;
    }

    std::vector<QString> properties;
    for (RULE_SCHEMA::PROPERTY const& property : schema->properties())
        properties.push_back(property.name);
    // Not properties, but what may have been meant.
    std::vector<QString> candidates = properties;
    candidates.push_back(QStringLiteral("match"));
    candidates.push_back(QStringLiteral("name"));
    for (RULE_VALUES::VALUE const& value : rule.values) {
        bool declared = false;
        for (QString const& property : properties)
            declared = declared || property.compare(value.property, Qt::CaseInsensitive) == 0;
        if (!declared)
            warn(value.line, value.column,
                 QStringLiteral("the rule \"%1\" declares no property \"%2\"").arg(rule.name, value.property),
                 value.property, candidates);
    }
}

}  // namespace

void check_rule_names(std::vector<RULE_FILE> const& files, QVector<RULE_SCHEMA const*> const& schemas,
                      DIAGNOSTICS& diagnostics) {
    for (RULE_FILE const& file : files)
        for (RULE_TABLE const& rule : file.rules)
            check_rule(rule, schemas, diagnostics);
}

}  // namespace framework
