// A plug-in whose actions do what their source files say, for what no texture action does by itself: waiting for one
// another, failing half way, throwing. Each "<raw>/NAME.step" is one action; its lines are
//
//     makes FILE      a target, relative to the working root        reads FILE   another source, likewise
//     after NAME      runs after that step                          try NAME     the same, but does without its success
//     fail, throw     after writing half of the targets             idle         succeed and write nothing
//     writes TEXT     what the targets after it hold ("made")       asks NAME    reads that property of the rule "Step"
//     global NAME     reads that global rule                        looks FILE   looks "<raw>/FILE" up in the file
//     table registers FILE  a target that is not announced                table NAME   asks whether there is that table
//
// The processor itself asks for the property "Made" of every step, under the topic "other" for "Other".
#include "processor/host/action_interface.hpp"
#include "processor/host/nr_xml_query_interface.hpp"
#include "processor/host/paths.hpp"
#include "processor/host/plugin_interface.hpp"
#include "processor/host/processor_interface.hpp"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <stdexcept>

namespace {

QString working(QString const& file) {
    return PATHS::working_data().text() + u'/' + file;
}

class STEP : public ACTION_INTERFACE {
public:
    STEP(LOGICAL_PATH const& source, QString const& file, PROCESSOR_INTERFACE& processor)
        : ACTION_INTERFACE(processor),
          source_(source) {
        QFile in(file);
        if (in.open(QIODevice::ReadOnly))
            for (QByteArray const& line : in.readAll().split('\n'))
                orders_.append({line.split(' ').value(0), QString::fromUtf8(line.split(' ').value(1))});
    }

    QString get_name(bool) override { return QFileInfo(source_.text()).completeBaseName(); }

    void get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime&, FILE_MAP const&,
                            RULE_CACHE const&) override {
        sources.append(source_);
        for (auto const& [order, argument] : orders_) {
            if (order == "reads")
                sources.append(LOGICAL_PATH(QStringLiteral("<working>/") + argument));
            if (order == "makes")
                targets.append({PHYSICAL_PATH(working(argument)), LOGICAL_PATH("<working>/" + argument), false});
        }
    }

    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override {
        QByteArray text = "made";
        for (auto const& [order, argument] : orders_) {
            if (order == "idle")
                return STATUS_SUCCEEDED;
            if (order == "fail") {
                add_output_line(QStringLiteral("told to fail"));
                return STATUS_FAILED;
            }
            if (order == "throw")
                throw std::runtime_error("told to throw");
            if (order == "writes")
                text = argument.toUtf8();
            if (order == "asks")
                rules.get(source_, QStringLiteral("Step")).value(argument);
            if (order == "global")
                rules.get_global(argument).value(argument);
            if (order == "looks")
                files.contains(LOGICAL_PATH("<raw>/" + argument));
            if (order == "table")
                s_database->has_table(argument);
            if (order == "makes" || order == "registers") {
                QFile out(working(argument));
                QDir().mkpath(QFileInfo(out).path());
                if (!out.open(QIODevice::WriteOnly) || out.write(text) != text.size())
                    return STATUS_FAILED;
            }
            if (order == "registers")
                add_to_perforce(PHYSICAL_PATH(working(argument)), files, false, {});
        }
        return STATUS_SUCCEEDED;
    }

    QVector<QPair<QByteArray, QString>> const& orders() const { return orders_; }

private:
    LOGICAL_PATH source_;
    QVector<QPair<QByteArray, QString>> orders_;
};

class STEP_PROCESSOR : public PROCESSOR_INTERFACE {
public:
    QString get_name() override { return QStringLiteral("Step"); }

    QVector<ACTION_INTERFACE*> create_actions(FILE_MAP const& files, RULE_CACHE const& rules) override {
        QVector<STEP*> steps;
        for (auto const& [path, entry] : files) {
            if (!path.text().endsWith(QLatin1String(".step")))
                continue;
            RULE const rule = rules.get(path, QStringLiteral("Step"));
            rule.value(QStringLiteral("Made"));
            steps.append(new STEP(path, entry->physical_path, *this));
            RULE_TOPIC const topic("other");
            rule.value(QStringLiteral("Other"));
        }
        QVector<ACTION_INTERFACE*> actions;
        for (STEP* const step : steps) {
            for (auto const& [order, argument] : step->orders())
                for (STEP* const other : steps)
                    if ((order == "after" || order == "try") && other->get_name(false) == argument)
                        step->add_dependency(*other, order == "try");
            actions.append(step);
        }
        return actions;
    }
};

}  // namespace

class STEP_PLUGIN : public QObject, public PLUGIN_INTERFACE {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "zab.tests.Step")
    Q_INTERFACES(PLUGIN_INTERFACE)

public:
    QVector<PROCESSOR_INTERFACE*> create_processors() override { return {new STEP_PROCESSOR}; }
};

#include "step_plugin.moc"
