#include "host/framework/printable.hpp"

namespace framework {

namespace {

bool is_bare(QString const& text, int at) {
    QChar const character = text[at];
    if (character.isHighSurrogate())
        return at + 1 == text.size() || !text[at + 1].isLowSurrogate();
    return character.isLowSurrogate() && (at == 0 || !text[at - 1].isHighSurrogate());
}

bool is_unprintable(QString const& text, int at) {
    char16_t const code = text[at].unicode();
    return text[at].category() == QChar::Other_Control || (code >= 0x2028 && code <= 0x202e) ||
           (code >= 0x2066 && code <= 0x2069) || is_bare(text, at);
}

QString escaped(char16_t code) {
    switch (code) {
    case u'\n':
        return QStringLiteral("\\n");
    case u'\r':
        return QStringLiteral("\\r");
    case u'\t':
        return QStringLiteral("\\t");
    default:
        return code < 256 ? QStringLiteral("\\x%1").arg(uint(code), 2, 16, QLatin1Char('0'))
                          : QStringLiteral("\\u%1").arg(uint(code), 4, 16, QLatin1Char('0'));
    }
}

}  // namespace

QString printable(QString const& text) {
    QString shown;
    shown.reserve(text.size());
    for (int at = 0; at < text.size(); ++at) {
        if (is_unprintable(text, at))
            shown += escaped(text[at].unicode());
        else
            shown += text[at];
    }
    return shown;
}

}  // namespace framework
