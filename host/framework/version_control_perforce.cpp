#include "host/framework/version_control_perforce.hpp"

#include "host/framework/run_command.hpp"

#include <QFileInfo>
#include <QRegularExpression>

namespace framework {

namespace {

/// The server takes these four characters of a file name for wild cards and revision marks unless they are encoded.
QString encoded(PHYSICAL_PATH const& file) {
    QString text = file;
    text.replace(QLatin1Char('%'), QLatin1String("%25"));
    text.replace(QLatin1Char('@'), QLatin1String("%40"));
    text.replace(QLatin1Char('#'), QLatin1String("%23"));
    text.replace(QLatin1Char('*'), QLatin1String("%2A"));
    return text;
}

/// With -s the command marks each line of its answer as "info", "error" and so on, because its exit code does not tell
/// whether single files failed. Null when no line is an error.
QString first_error(COMMAND_RESULT const& result) {
    for (QString const& line : result.output.split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("error:")))
            return line.mid(6).trimmed();
    }
    return result.succeeded() ? QString() : result.cause();
}

}  // namespace

bool VERSION_CONTROL_PERFORCE::is_in_depot(PHYSICAL_PATH const& file) {
    COMMAND_RESULT const result =
        run_command(QStringLiteral("p4"), {QStringLiteral("-s"), QStringLiteral("fstat"), encoded(file)}, folder_);
    static QRegularExpression const head(QStringLiteral("^info1?: headAction (\\S+)"),
                                         QRegularExpression::MultilineOption);
    QRegularExpressionMatch const match = head.match(result.output);
    return match.hasMatch() && !match.captured(1).endsWith(QLatin1String("delete"));
}

VERSION_CONTROL::FAILURE VERSION_CONTROL_PERFORCE::p4(QStringList const& command, PHYSICAL_PATH const& file,
                                                      char const* what) {
    // "add" alone takes names unencoded, with -f for those that hold special characters.
    bool const is_add = command.first() == QLatin1String("add");
    QStringList const arguments =
        QStringList(QStringLiteral("-s")) + command + QStringList(is_add ? file.text() : encoded(file));
    QString const error = first_error(run_command(QStringLiteral("p4"), arguments, folder_));
    if (error.isNull())
        return {};
    return QStringLiteral("p4: failed to %1 %2: %3").arg(QLatin1String(what), file.text(), error);
}

VERSION_CONTROL::FAILURE VERSION_CONTROL_PERFORCE::prepare_write(PHYSICAL_PATH const& file) {
    QFileInfo const info(file.text());
    if (!info.exists() || info.isWritable())
        return {};
    return is_in_depot(file) ? p4({QStringLiteral("edit")}, file, "open") : FAILURE{};
}

VERSION_CONTROL::FAILURE VERSION_CONTROL_PERFORCE::add(PHYSICAL_PATH const& file) {
    return is_in_depot(file) ? p4({QStringLiteral("edit")}, file, "open")
                             : p4({QStringLiteral("add"), QStringLiteral("-f")}, file, "add");
}

VERSION_CONTROL::FAILURE VERSION_CONTROL_PERFORCE::remove(PHYSICAL_PATH const& file) {
    // Opened files cannot be deleted; a revert that finds nothing opened is no failure.
    run_command(QStringLiteral("p4"),
                {QStringLiteral("-s"), QStringLiteral("revert"), QStringLiteral("-k"), encoded(file)}, folder_);
    return is_in_depot(file) ? p4({QStringLiteral("delete"), QStringLiteral("-k")}, file, "remove") : FAILURE{};
}

VERSION_CONTROL::FAILURE VERSION_CONTROL_PERFORCE::revert(PHYSICAL_PATH const& file) {
    return p4({QStringLiteral("revert")}, file, "revert");
}

}  // namespace framework
