// A plug-in whose actions do what their source files say, for what no texture action does by itself: waiting for one
// another, failing half way, throwing. Each "<raw>/NAME.step" is one action; its lines are
//
//     makes FILE      a target, relative to the working root        reads FILE   another source, likewise
//     after NAME      runs after that step                          try NAME     the same, but does without its success
//     drops FILE      makes a file without announcing it
//     fail, throw     after writing half of the targets             idle         succeed and write nothing
#include "processor/host/action_interface.hpp"
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

    STATUS run(FILE_MAP const&, RULE_CACHE const&) override {
        for (auto const& [order, argument] : orders_) {
            if (order == "idle")
                return STATUS_SUCCEEDED;
            if (order == "fail") {
                add_output_line(QStringLiteral("told to fail"));
                return STATUS_FAILED;
            }
            if (order == "throw")
                throw std::runtime_error("told to throw");
            if (order == "makes" || order == "drops") {
                QFile out(working(argument));
                QDir().mkpath(QFileInfo(out).path());
                if (!out.open(QIODevice::WriteOnly) || out.write("made") != 4)
                    return STATUS_FAILED;
            }
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

    QVector<ACTION_INTERFACE*> create_actions(FILE_MAP const& files, RULE_CACHE const&) override {
        QVector<STEP*> steps;
        for (auto const& [path, entry] : files)
            if (path.text().endsWith(QLatin1String(".step")))
                steps.append(new STEP(path, entry->physical_path, *this));
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

/// In place of the image-information database: the working files that the host knows of.
class LIST : public ACTION_INTERFACE {
public:
    using ACTION_INTERFACE::ACTION_INTERFACE;

    QString get_name(bool) override { return QStringLiteral("List"); }

    void get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime&,
                            FILE_MAP const& files, RULE_CACHE const&) override {
        for (auto const& [path, entry] : files)
            if (path.text().startsWith(QLatin1String("<working>/")) && !path.text().endsWith(QLatin1String("/list")))
                sources.append(path);
        targets.append({PHYSICAL_PATH(working(QStringLiteral("list"))), LOGICAL_PATH("<working>/list"), false});
    }

    STATUS run(FILE_MAP const& files, RULE_CACHE const& rules) override {
        QVector<LOGICAL_PATH> sources;
        QVector<TARGET_FILE> targets;
        QDateTime newest;
        get_affected_files(sources, targets, newest, files, rules);
        QFile out(working(QStringLiteral("list")));
        if (!out.open(QIODevice::WriteOnly))
            return STATUS_FAILED;
        for (LOGICAL_PATH const& source : qAsConst(sources))
            out.write(source.text().mid(10).toUtf8() + ' ');
        return STATUS_SUCCEEDED;
    }
};

}  // namespace

extern "C" Q_DECL_EXPORT ACTION_INTERFACE* zab_create_image_database_action(PROCESSOR_INTERFACE& processor,
                                                                            QString const&) {
    return new LIST(processor);
}

class STEP_PLUGIN : public QObject, public PLUGIN_INTERFACE {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "zab.tests.Step")
    Q_INTERFACES(PLUGIN_INTERFACE)

public:
    QVector<PROCESSOR_INTERFACE*> create_processors() override { return {new STEP_PROCESSOR}; }
};

#include "step_plugin.moc"
