// A path as rules and file tables see it: text relative to the data roots that begins with a root token, "<raw>" or
// "<working>". The same project gives the same logical paths on every machine, wherever its folders lie. One file has
// one logical path, however it was spelt, because tables, records and the asset graph compare the text.
#pragma once

#include "processor/host/export.hpp"

#include <QChar>
#include <QHashFunctions>
#include <QString>

class LOGICAL_PATH {
public:
    LOGICAL_PATH() = default;
    /// Any spelling: doubled slashes, "." and ".." are gone afterwards, also where they lead out of one root and into
    /// the other. A slash at the end stays: the stem of "<raw>/_gloss.tga" is "<raw>/". What leads out of both roots
    /// loses its token.
    explicit LOGICAL_PATH(QString text) : text_(cleaned(std::move(text))) {}

    QString left(int count) const { return text_.left(count); }
    QString section(QChar separator, int first, int last = -1) const { return text_.section(separator, first, last); }

    bool operator<(QString const& other) const { return text_ < other; }
    bool operator==(LOGICAL_PATH const& other) const { return text_ == other.text_; }

    operator QString const&() const { return text_; }
    QString const& text() const { return text_; }
    bool is_empty() const { return text_.isEmpty(); }

private:
    ZAB_SHARED_API static QString cleaned(QString text);

    QString text_;
};

inline uint qHash(LOGICAL_PATH const& path, uint seed = 0) {
    return qHash(path.text(), seed);
}
