#include "processor/texture_names.hpp"

#include <QTextStream>

std::set<QString> read_texture_names(QIODevice& list) {
    std::set<QString> names;
    QTextStream lines(&list);
    lines.setCodec("UTF-8");
    QString line;
    while (lines.readLineInto(&line)) {
        if (!line.isEmpty())
            names.insert(line);
    }
    return names;
}
