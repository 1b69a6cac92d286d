#include "host/tool/rule_value_text.hpp"

#include <QLocale>

#include <algorithm>

namespace tool {

QString as_written(QVariant const& value) {
    switch (value.type()) {
    case QVariant::String:
        return u'"' + value.toString().replace(u'\\', QStringLiteral("\\\\")).replace(u'"', QStringLiteral("\\\"")) +
               u'"';
    case QVariant::Double: {
        QString const text = QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
        bool const is_whole = std::all_of(text.begin(), text.end(), [](QChar c) { return c.isDigit() || c == u'-'; });
        return is_whole ? text + QStringLiteral(".0") : text;
    }
    default:
        return value.toString();
    }
}

QString shown_value(QVariant const& value) {
    QString const text = value.toString();
    bool const is_word = value.type() == QVariant::String && !text.isEmpty() &&
                         std::none_of(text.begin(), text.end(), [](QChar c) { return c.isSpace() || c == u'"'; });
    return is_word ? text : as_written(value);
}

QString change_of_value(QVariant const& from, QVariant const& to) {
    bool const look_alike = shown_value(from) == shown_value(to);
    return QStringLiteral("from %1 to %2")
        .arg(look_alike ? as_written(from) : shown_value(from), look_alike ? as_written(to) : shown_value(to));
}

}  // namespace tool
