// A plug-in whose actions do what their source files say, for what no texture action does by itself: waiting for one
// another, failing half way, throwing, crashing. Each "<raw>/NAME.step" is one action; its lines are
//
//     makes FILE      a target, relative to the working root ("raw:FILE": to the raw root)
//     reads FILE      another source, likewise                      after NAME   runs after that step
//     try NAME        the same, but does without its success       drops FILE   makes a file without announcing it
//     fail, throw     after writing half of the targets             idle         succeed and write nothing
//     say TEXT        a line of the action                          noise TEXT   a line past it, to standard error
//     slow FILE       a target that is half written for a while, and the unfinished file beside it
//     scratch FILE    a working file, taken away at the end         hold FILE    one that stays
//     register NAME   a fragment in the asset graph                 known FILE   a target: the fragments it knows
//     meet FILE       waits until somebody else has made it         alone FILE   fails if it is there, makes it a while
//     sleep MS, stay  wait; "stay" until told to stop               deaf         wait for ever
//     signal N, exit N, eat   die by the signal, leave, take memory without end
//     threads         has work done by as many threads as it may    stubborn     throws when it is told to stop
//     writes TEXT     what the targets after it hold ("made")       asks NAME    reads that property of the rule "Step"
//     global NAME     reads that global rule                        looks FILE   looks "<raw>/FILE" up in the file
//     table registers FILE  a target that is not announced                table NAME   asks whether there is that table
//     babble          sends nonsense to whoever the process is connected with, and waits
//     plans HOW       while it is planned: "null", "throw", "exit", or the number of a signal
//
// The processor itself asks for the property "Made" of every step, under the topic "other" for "Other".
#include "processor/host/action_interface.hpp"
#include "processor/host/asset_graph.hpp"
#include "processor/host/nr_xml_query_interface.hpp"
#include "processor/host/paths.hpp"
#include "processor/host/plugin_interface.hpp"
#include "processor/host/processor_interface.hpp"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include <sys/socket.h>

namespace {

QString working(QString const& file) {
    if (file.startsWith(QLatin1String("raw:")))
        return PATHS::raw_data().text() + u'/' + file.mid(4);
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
                orders_.append({line.split(' ').value(0), QString::fromUtf8(line.mid(line.indexOf(' ') + 1))});
    }

    QString get_name(bool) override { return QFileInfo(source_.text()).completeBaseName(); }

    void get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime&, FILE_MAP const&,
                            RULE_CACHE const&) override {
        sources.append(source_);
        for (auto const& [order, argument] : orders_) {
            if (order == "reads")
                sources.append(LOGICAL_PATH(QStringLiteral("<working>/") + argument));
            if (order == "makes" || order == "slow" || order == "known")
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
            if (order == "slow") {
                write(argument, "ma");
                write(argument + QStringLiteral(".part"), "ma");
                pause(4);
                QFile::remove(working(argument + QStringLiteral(".part")));
                write(argument, "made slowly");
            }
            if (order == "scratch") {
                announce_working_file(PHYSICAL_PATH(working(argument)));
                write(argument, "scratch");
                pause(4);
                QFile::remove(working(argument));
            }
            if (order == "hold") {
                announce_working_file(PHYSICAL_PATH(working(argument)));
                write(argument, "held");
                announce_working_file(PHYSICAL_PATH(working(argument)));
            }
            if (order == "threads")
                count_threads();
            if (order == "register" && !add_fragment(argument))
                return STATUS_FAILED;
            if (order == "known") {
                QStringList names = AGF_DEPENDENCY_BUILDER::get_asset_fragment_packages(nullptr, s_asset_graph).keys();
                names.sort();
                write(argument, names.join(u' ').toUtf8());
            }
            if (order == "say")
                add_output_line(argument);
            if (order == "noise")
                std::fprintf(stderr, "%s\n", argument.toUtf8().constData());
            if (order == "sleep")
                pause(argument.toInt());
            if (order == "meet" && !meets(argument))
                return STATUS_FAILED;
            if (order == "alone" && !is_alone(argument))
                return STATUS_FAILED;
            if (order == "babble")
                for (int descriptor = 3; descriptor < 256; ++descriptor)
                    send(descriptor, "\xff\xff\xff\xff", 4, MSG_NOSIGNAL);
            while (order == "deaf" || order == "babble")
                pause(5);
            if (order == "stay" || order == "stubborn") {
                while (!is_aborted())
                    pause(5);
                return STATUS_FAILED;
            }
            if (order == "signal")
                std::raise(argument.toInt());
            if (order == "exit")
                std::exit(argument.toInt());
            if (order == "eat")
                for (std::vector<QByteArray> eaten; true;)
                    eaten.push_back(QByteArray(1 << 24, 'x'));
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
            if (order == "makes" || order == "drops" || order == "registers") {
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

    void abort() override {
        for (auto const& [order, argument] : orders_)
            if (order == "stubborn")
                throw std::runtime_error("told to stop");
        ACTION_INTERFACE::abort();
    }

    QVector<QPair<QByteArray, QString>> const& orders() const { return orders_; }

private:
    static void pause(int milliseconds) { QThread::msleep(static_cast<unsigned long>(milliseconds)); }

    static int count_threads() {
        int threads = 0;
#pragma omp parallel reduction(+ : threads)
        threads += 1;
        return threads;
    }

    static bool write(QString const& file, QByteArray const& bytes) {
        QFile out(working(file));
        QDir().mkpath(QFileInfo(out).path());
        return out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size();
    }

    static bool meets(QString const& file) {
        for (int i = 0; i < 2000; ++i, pause(5))
            if (QFile::exists(working(file)))
                return true;
        return false;
    }

    static bool is_alone(QString const& file) {
        if (QFile::exists(working(file)))
            return false;
        write(file, "here");
        pause(60);
        return QFile::remove(working(file));
    }

    static bool add_fragment(QString const& name) {
        QTSHARED::ASSET_FRAGMENT_BUILDER builder(working(name));
        builder.add_fragment(name, working(name), {});
        QString error;
        return s_asset_graph->add(builder, error);
    }

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
                if (order == "plans")
                    actions.append(plan_badly(argument));
            for (auto const& [order, argument] : step->orders())
                for (STEP* const other : steps)
                    if ((order == "after" || order == "try") && other->get_name(false) == argument)
                        step->add_dependency(*other, order == "try");
            actions.append(step);
        }
        return actions;
    }

private:
    static ACTION_INTERFACE* plan_badly(QString const& how) {
        if (how == QLatin1String("throw"))
            throw std::runtime_error("told to throw");
        if (how == QLatin1String("exit"))
            std::exit(0);
        if (int const signal = how.toInt())
            std::raise(signal);
        return nullptr;
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
