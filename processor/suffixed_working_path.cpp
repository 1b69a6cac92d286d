#include "processor/suffixed_working_path.hpp"

#include "processor/host/paths.hpp"

QString suffixed_working_path(PHYSICAL_PATH const& physical, QString const& suffix) {
    QString path = PATHS::logical_path(physical);
    for (QLatin1String const token : {QLatin1String("<raw>"), QLatin1String("<working>")}) {
        if (path.startsWith(token)) {
            path.remove(0, token.size());
            break;
        }
    }
    int const dot = path.lastIndexOf(QLatin1Char('.'));
    int const stem_length = dot < 0 ? path.size() : dot;
    return PATHS::target_working_data(physical).text() + path.left(stem_length) + suffix + path.mid(stem_length);
}
