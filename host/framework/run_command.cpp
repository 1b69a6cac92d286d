#include "host/framework/run_command.hpp"

#include <QFile>
#include <QProcess>

namespace framework {

COMMAND_RESULT run_command(QString const& program, QStringList const& arguments, QString const& folder) {
    QProcess process;
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
    result.output = QString::fromLocal8Bit(process.readAllStandardOutput());
    result.errors = QString::fromLocal8Bit(process.readAllStandardError());
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
