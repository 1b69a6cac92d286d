// zab rules: what may stand in rule files, as the plug-in declares it. Needs no project.
#include "host/tool/build_session.hpp"

#include "processor/host/rule_schema.hpp"

#include <CLI/CLI.hpp>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tool {

namespace {

class COMMAND_RULES : public COMMAND {
public:
    char const* name() const override { return "rules"; }
    char const* summary() const override { return "Show every rule with its properties"; }

    void declare(CLI::App& app) override { app.add_flag("--json", json_, "As a JSON array"); }

    EXIT_CODE run(CONTEXT& context) override {
        BUILD_SESSION session(context);
        if (EXIT_CODE const code = session.load_plugin(); code != EXIT_CODE::success)
            return code;
        if (json_)
            show_json(context.console);
        else
            show_text(context.console);
        return EXIT_CODE::success;
    }

private:
    static void show_text(CONSOLE& console) {
        bool first = true;
        for (RULE_SCHEMA const* const schema : RULE_SCHEMA::all()) {
            if (!first)
                console.result({});
            first = false;
            console.result(QStringLiteral("%1: %2").arg(schema->name(), schema->description()));
            for (RULE_SCHEMA::PROPERTY const& property : schema->properties())
                console.result(QStringLiteral("  %1: %2").arg(property.name, property.description));
        }
    }

    static void show_json(CONSOLE& console) {
        QJsonArray schemas;
        for (RULE_SCHEMA const* const schema : RULE_SCHEMA::all()) {
            QJsonArray properties;
            for (RULE_SCHEMA::PROPERTY const& property : schema->properties())
                properties.append(QJsonObject{{QStringLiteral("name"), property.name},
                                              {QStringLiteral("description"), property.description}});
            schemas.append(QJsonObject{{QStringLiteral("name"), schema->name()},
                                       {QStringLiteral("description"), schema->description()},
                                       {QStringLiteral("properties"), properties}});
        }
        console.result(QString::fromUtf8(QJsonDocument(schemas).toJson(QJsonDocument::Indented)).trimmed());
    }

    bool json_ = false;
};

}  // namespace

std::unique_ptr<COMMAND> make_command_rules() {
    return std::make_unique<COMMAND_RULES>();
}

}  // namespace tool
