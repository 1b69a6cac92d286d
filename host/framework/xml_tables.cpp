#include "host/framework/xml_tables.hpp"

#include "host/framework/read_recorder.hpp"

#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

namespace framework {

namespace {

constexpr qint64 largest_file = 16 << 20;

void note_read(QString const& table) {
    if (READ_LISTENER* const listener = READ_LISTENER::current())
        listener->table_was_read(table);
}

}  // namespace

bool XML_TABLES::load(QString const& table, QString const& path, QString& error) {
    // Pipes and devices have no end that could be waited for.
    if (QFileInfo const info(path); info.exists() && !info.isFile()) {
        error = QStringLiteral("%1: error: is no regular file").arg(path);
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("%1: error: %2").arg(path, file.errorString());
        return false;
    }
    if (file.size() > largest_file) {
        error = QStringLiteral("%1: error: is larger than 16 MiB").arg(path);
        return false;
    }
    QXmlStreamReader xml(&file);
    TABLE content;
    if (xml.readNextStartElement() && xml.name() == QLatin1String("table")) {
        QString const given_key = xml.attributes().value(QLatin1String("key")).toString();
        QString const key_column = given_key.isEmpty() ? QStringLiteral("name") : given_key.toCaseFolded();
        while (xml.readNextStartElement()) {
            QHash<QString, QString> row;
            for (QXmlStreamAttribute const& attribute : xml.attributes())
                row.insert(attribute.name().toString().toCaseFolded(), attribute.value().toString());
            QString const key = row.value(key_column);
            if (xml.name() != QLatin1String("row"))
                xml.raiseError(QStringLiteral("a table holds rows, not '%1'").arg(xml.name().toString()));
            else if (key.isEmpty())
                xml.raiseError(QStringLiteral("a row without a value for its key '%1'").arg(key_column));
            else if (content.rows.contains(key.toCaseFolded()))
                xml.raiseError(QStringLiteral("a second row for '%1'").arg(key));
            else
                content.keys.append(key);
            content.rows.insert(key.toCaseFolded(), row);
            xml.skipCurrentElement();
        }
    } else if (!xml.hasError()) {
        xml.raiseError(QStringLiteral("the root element is not 'table'"));
    }
    if (xml.hasError()) {
        error =
            QStringLiteral("%1:%2:%3: error: %4")
                .arg(path, QString::number(xml.lineNumber()), QString::number(xml.columnNumber()), xml.errorString());
        return false;
    }
    tables_.insert(table, content);
    return true;
}

bool XML_TABLES::has_table(QString const& table) const {
    note_read(table);
    return tables_.contains(table);
}

QStringList XML_TABLES::keys(QString const& table) const {
    note_read(table);
    return tables_.value(table).keys;
}

QString XML_TABLES::value(QString const& table, QString const& key, QString const& column) const {
    note_read(table);
    auto const found = tables_.constFind(table);
    if (found == tables_.constEnd())
        return {};
    return found->rows.value(key.toCaseFolded()).value(column.toCaseFolded());
}

}  // namespace framework
