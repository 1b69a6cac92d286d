// A path as rules and file tables see it: text relative to the data roots that begins with a root token, "<raw>" or
// "<working>". The same project gives the same logical paths on every machine, wherever its folders lie.
#pragma once

#include <QChar>
#include <QHashFunctions>
#include <QString>

class LOGICAL_PATH {
public:
    LOGICAL_PATH() = default;
    explicit LOGICAL_PATH(QString text) : text_(std::move(text)) {}

    QString left(int count) const { return text_.left(count); }
    QString section(QChar separator, int first, int last = -1) const { return text_.section(separator, first, last); }

    bool operator<(QString const& other) const { return text_ < other; }
    bool operator==(LOGICAL_PATH const& other) const { return text_ == other.text_; }

    operator QString const&() const { return text_; }
    QString const& text() const { return text_; }
    bool is_empty() const { return text_.isEmpty(); }

private:
    QString text_;
};

inline uint qHash(LOGICAL_PATH const& path, uint seed = 0) {
    return qHash(path.text(), seed);
}
