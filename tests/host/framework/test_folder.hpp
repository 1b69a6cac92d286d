// A folder of its own for one test case, gone again afterwards.
#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

class TEST_FOLDER {
public:
    QString path(QString const& below = {}) const {
        // Messages hold real paths.
        QString const root = QDir(folder_.path()).canonicalPath();
        return below.isEmpty() ? root : root + u'/' + below;
    }

    QString write(QString const& below, QByteArray const& contents = {}) const {
        QString const file = path(below);
        QDir().mkpath(QFileInfo(file).path());
        QFile out(file);
        if (!out.open(QIODevice::WriteOnly) || out.write(contents) != contents.size())
            qFatal("cannot write %s", qPrintable(file));
        return file;
    }

private:
    QTemporaryDir folder_;
};
