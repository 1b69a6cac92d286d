#include "host/framework/run_command.hpp"

#include <QFile>
#include <QProcess>

#include <algorithm>

namespace framework {

namespace {

constexpr int largest_answer = 16 << 20;

}  // namespace

COMMAND_RESULT run_command(QString const& program, QStringList const& arguments, QString const& folder) {
    QProcess process;
    QByteArray output;
    QByteArray errors;
    auto const take = [&process](QByteArray& answer, QByteArray const& more) {
        answer += more.left(largest_answer - answer.size() + 1);
        if (answer.size() > largest_answer)
            process.kill();
    };
    QObject::connect(&process, &QProcess::readyReadStandardOutput,
                     [&] { take(output, process.readAllStandardOutput()); });
    QObject::connect(&process, &QProcess::readyReadStandardError,
                     [&] { take(errors, process.readAllStandardError()); });
    process.setWorkingDirectory(folder);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments);
    COMMAND_RESULT result;
    if (!process.waitForStarted(-1)) {
        result.errors = process.errorString();
        return result;
    }
    process.waitForFinished(-1);
    result.started = true;
    result.exit_code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    if (std::max(output.size(), errors.size()) > largest_answer) {
        result.exit_code = -1;
        output.clear();
        errors = "its answer is longer than 16 MiB";
    }
    result.output = QString::fromLocal8Bit(output);
    result.errors = QString::fromLocal8Bit(errors);
    return result;
}

QString COMMAND_RESULT::cause() const {
    for (QString const& text : {errors, output}) {
        QString const line = text.trimmed().section(QLatin1Char('\n'), 0, 0);
        if (!line.isEmpty())
            return line;
    }
    return started ? QStringLiteral("exit code %1").arg(exit_code) : QStringLiteral("not started");
}

}  // namespace framework
