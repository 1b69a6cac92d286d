// Runs a program and waits for it: arguments as they are, no shell in between, so that no file name can be taken for a
// command.
#pragma once

#include "processor/host/export.hpp"

#include <QString>
#include <QStringList>

namespace framework {

struct ZAB_SHARED_API COMMAND_RESULT {
    /// False when the program could not be started at all.
    bool started = false;
    int exit_code = -1;
    QString output;
    QString errors;

    bool succeeded() const { return started && exit_code == 0; }
    /// The first line that says what went wrong.
    QString cause() const;
};

/// A program that answers with more than 16 MiB is ended, which is its failure.
ZAB_SHARED_API COMMAND_RESULT run_command(QString const& program, QStringList const& arguments, QString const& folder);

}  // namespace framework
