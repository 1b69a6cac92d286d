// A path of the file system, with '/' between its sections. It is text and nothing more: making one never touches the
// disk.
#pragma once

#include <QChar>
#include <QHashFunctions>
#include <QString>

class PHYSICAL_PATH {
public:
    PHYSICAL_PATH() = default;
    explicit PHYSICAL_PATH(QString text) : text_(std::move(text)) {}

    QString left(int count) const { return text_.left(count); }
    QString right(int count) const { return text_.right(count); }
    QString mid(int position, int count = -1) const { return text_.mid(position, count); }
    QString section(QChar separator, int first, int last = -1) const { return text_.section(separator, first, last); }

    bool operator<(QString const& other) const { return text_ < other; }
    bool operator==(PHYSICAL_PATH const& other) const { return text_ == other.text_; }

    operator QString const&() const { return text_; }
    QString const& text() const { return text_; }
    bool is_empty() const { return text_.isEmpty(); }

private:
    QString text_;
};

inline uint qHash(PHYSICAL_PATH const& path, uint seed = 0) {
    return qHash(path.text(), seed);
}
