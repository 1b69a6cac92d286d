#include "host/framework/xml_tables.hpp"

#include "host/framework/read_recorder.hpp"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>
#include <QXmlStreamReader>

#include <algorithm>
#include <optional>

namespace framework {

namespace {

constexpr qint64 largest_file = 16 << 20;
constexpr qint64 largest_tables = 64 << 20;
/// Of one element: Qt's reader compares each with all before it.
constexpr int most_attributes = 256;
constexpr int most_nested = 64;
constexpr int longest_key = 4096;
/// Some of Qt's messages name an element, which may be as long as the file.
constexpr int longest_message = 1000;

void note_read(QString const& table) {
    if (READ_LISTENER* const listener = READ_LISTENER::current())
        listener->table_was_read(table);
}

/// The text, with U+FFFD for what is no letter in its coding; `sound` says whether there is none of that.
QString decoded(QByteArray const& bytes, QString const& declared_coding, bool& sound) {
    QTextCodec* codec = QTextCodec::codecForName(declared_coding.toLatin1());
    if (!codec)
        codec = QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName("UTF-8"));
    QTextCodec::ConverterState state;
    QString text = codec->toUnicode(bytes.constData(), bytes.size(), &state);
    sound = state.invalidChars == 0 && state.remainingChars == 0;
    return text;
}

struct REFUSAL {
    int place;
    QString text;
};

/// What Qt's reader would take time without bound for. The text need not be sound XML.
std::optional<REFUSAL> find_refused(QString const& text) {
    QStringView const all(text);
    auto const behind = [&](QLatin1String end, int from) {
        int const at = text.indexOf(end, from);
        return at < 0 ? text.size() : at + end.size();
    };
    for (int at = text.indexOf(u'<'); at >= 0; at = text.indexOf(u'<', at)) {
        QStringView const rest = all.mid(at);
        if (rest.startsWith(QLatin1String("<!--"))) {
            at = behind(QLatin1String("-->"), at + 4);
        } else if (rest.startsWith(QLatin1String("<![CDATA["))) {
            at = behind(QLatin1String("]]>"), at);
        } else if (rest.startsWith(QLatin1String("<?"))) {
            at = behind(QLatin1String("?>"), at);
        } else if (rest.startsWith(QLatin1String("<!"))) {
            return REFUSAL{at, QStringLiteral("a table has no document type declaration")};
        } else {
            int const begin = at;
            int attributes = 0;
            QChar quote;
            for (++at; at < text.size() && (text[at] != u'>' || !quote.isNull()); ++at) {
                if (text[at] == quote)
                    quote = QChar();
                else if (quote.isNull() && (text[at] == u'"' || text[at] == u'\''))
                    quote = text[at];
                else if (quote.isNull() && text[at] == u'=' && ++attributes > most_attributes)
                    return REFUSAL{begin, QStringLiteral("an element of more than %1 attributes").arg(most_attributes)};
            }
        }
    }
    return std::nullopt;
}

QString local_name(QStringRef const& name) {
    return name.mid(name.lastIndexOf(u':') + 1).toString();
}

void skip_element(QXmlStreamReader& xml) {
    for (int depth = 1; depth > 0 && !xml.atEnd();) {
        xml.readNext();
        if (xml.isStartElement() && ++depth > most_nested)
            xml.raiseError(QStringLiteral("more than %1 elements in one another").arg(most_nested));
        else if (xml.isEndElement())
            --depth;
    }
}

QHash<QString, QString> columns_of(QXmlStreamReader const& xml) {
    QHash<QString, QString> columns;
    for (QXmlStreamAttribute const& attribute : xml.attributes()) {
        QStringRef const name = attribute.qualifiedName();
        if (name != QLatin1String("xmlns") && !name.startsWith(QLatin1String("xmlns:")))
            columns.insert(local_name(name).toCaseFolded(), attribute.value().toString());
    }
    return columns;
}

/// `rows` by their case-folded keys; what is wrong is the reader's error.
void read_rows(QXmlStreamReader& xml, QStringList& keys, QHash<QString, QHash<QString, QString>>& rows) {
    if (!xml.readNextStartElement() || local_name(xml.qualifiedName()) != QLatin1String("table")) {
        if (!xml.hasError())
            xml.raiseError(QStringLiteral("the root element is not 'table'"));
        return;
    }
    QString const given_key = xml.attributes().value(QLatin1String("key")).toString();
    QString const key_column = given_key.isEmpty() ? QStringLiteral("name") : given_key.toCaseFolded();
    while (xml.readNextStartElement()) {
        QString const element = local_name(xml.qualifiedName());
        QHash<QString, QString> const row = columns_of(xml);
        QString const key = row.value(key_column);
        if (element != QLatin1String("row"))
            xml.raiseError(QStringLiteral("a table holds rows, not '%1'").arg(element));
        else if (key.isEmpty())
            xml.raiseError(QStringLiteral("a row without a value for its key '%1'").arg(key_column));
        else if (key.size() > longest_key)
            xml.raiseError(QStringLiteral("a key of %1 characters; %2 are the most").arg(key.size()).arg(longest_key));
        else if (rows.contains(key.toCaseFolded()))
            xml.raiseError(QStringLiteral("a second row for '%1'").arg(key));
        keys.append(key);
        rows.insert(key.toCaseFolded(), row);
        skip_element(xml);
    }
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
    if (bytes_ + file.size() > largest_tables) {
        error = QStringLiteral("%1: error: is one table too many; all together may have 64 MiB").arg(path);
        return false;
    }
    QByteArray const bytes = file.read(file.size());
    if (file.error() != QFileDevice::NoError) {
        error = QStringLiteral("%1: error: %2").arg(path, file.errorString());
        return false;
    }
    auto const fail = [&](qint64 line, qint64 column, QString const& text) {
        error = QStringLiteral("%1:%2:%3: error: %4")
                    .arg(path, QString::number(line), QString::number(column), text.left(longest_message));
        return false;
    };
    QXmlStreamReader head(bytes);
    head.readNext();
    if (head.hasError())
        return fail(head.lineNumber(), head.columnNumber(), head.errorString());
    bool sound = false;
    QString const text = decoded(bytes, head.documentEncoding().toString(), sound);
    auto const fail_at = [&](int place, QString const& message) {
        QStringView const before = QStringView(text).left(place);
        return fail(std::count(before.begin(), before.end(), u'\n') + 1, place - before.lastIndexOf(u'\n'), message);
    };
    if (!sound)
        return fail_at(std::max(0, text.indexOf(QChar::ReplacementCharacter)),
                       QStringLiteral("bytes that are no letter in the file's coding"));
    if (std::optional<REFUSAL> const refusal = find_refused(text))
        return fail_at(refusal->place, refusal->text);
    QXmlStreamReader xml(text);
    // Each prefix would be looked for among all that were ever declared.
    xml.setNamespaceProcessing(false);
    TABLE content;
    read_rows(xml, content.keys, content.rows);
    if (xml.hasError())
        return fail(xml.lineNumber(), xml.columnNumber(), xml.errorString());
    bytes_ += bytes.size();
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
