#include "host/tool/recorded_action.hpp"

#include <QIODevice>

#include <map>
#include <tuple>

namespace tool {

namespace {

constexpr auto stream_version = QDataStream::Qt_5_12;

template <typename VALUE, typename READ>
std::optional<VALUE> read_whole(QByteArray const& bytes, READ const& read) {
    QDataStream stream(bytes);
    stream.setVersion(stream_version);
    VALUE value;
    read(stream, value);
    return stream.status() == QDataStream::Ok && stream.atEnd() ? std::optional(std::move(value)) : std::nullopt;
}

}  // namespace

std::vector<framework::RULE_READ> with_source_places(std::vector<framework::RULE_READ> const& reads,
                                                     QVector<LOGICAL_PATH> const& sources) {
    QHash<QString, int> places;
    for (int i = 0; i < sources.size(); ++i)
        if (!places.contains(sources[i].text()))
            places.insert(sources[i].text(), i);

    struct ANSWERS {
        QVariant first;
        int count = 0;
        bool alike = true;
    };
    std::map<std::pair<QString, QString>, ANSWERS> answers;
    for (framework::RULE_READ const& read : reads) {
        if (!places.contains(read.path))
            continue;
        ANSWERS& known = answers[{read.rule, read.property}];
        if (known.count++ == 0)
            known.first = read.value;
        known.alike = known.alike && framework::is_same_value(known.first, read.value);
    }

    std::vector<framework::RULE_READ> placed;
    for (framework::RULE_READ read : reads) {
        auto const place = places.constFind(read.path);
        if (place != places.constEnd()) {
            ANSWERS const& known = answers[{read.rule, read.property}];
            bool const stands_for_all = known.alike && known.count == places.size();
            if (stands_for_all && *place != 0)
                continue;
            read.path = stands_for_all ? every_source : u'#' + QString::number(*place);
        }
        placed.push_back(std::move(read));
    }
    std::stable_sort(placed.begin(), placed.end(), [](auto const& left, auto const& right) {
        return std::tie(left.path, left.rule, left.property) < std::tie(right.path, right.rule, right.property);
    });
    return placed;
}

QString reason_of(RECORDED_ACTION::END end) {
    return end == RECORDED_ACTION::END::failed ? QStringLiteral("failed the last time")
                                               : QStringLiteral("made no file the last time");
}

QByteArray to_bytes(RECORDED_ACTION const& action) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(stream_version);
    stream << action.name.toUtf8() << static_cast<quint8>(action.end) << static_cast<qint64>(action.setting);
    write_all(stream, action.sources);
    write_all(stream, action.targets);
    stream << static_cast<quint32>(action.announced_targets);
    write_all(stream, action.files);
    write_all(stream, action.textures);
    write_all(stream, action.origins);
    write_all(stream, action.tables);
    write_all(stream, action.asset_changes);
    return bytes;
}

QByteArray to_bytes(ACTION_SETTING const& setting) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(stream_version);
    stream << static_cast<quint64>(setting.plugin.bits[0]) << static_cast<quint64>(setting.plugin.bits[1])
           << setting.kind;
    write_all(stream, setting.rules);
    return bytes;
}

std::optional<RECORDED_ACTION> to_recorded_action(QByteArray const& bytes) {
    return read_whole<RECORDED_ACTION>(bytes, [](QDataStream& stream, RECORDED_ACTION& action) {
        QByteArray name;
        quint8 end = 0;
        qint64 setting = 0;
        quint32 announced = 0;
        stream >> name >> end >> setting;
        read_all(stream, action.sources);
        read_all(stream, action.targets);
        stream >> announced;
        read_all(stream, action.files);
        read_all(stream, action.textures);
        read_all(stream, action.origins);
        read_all(stream, action.tables);
        read_all(stream, action.asset_changes);
        action.name = QString::fromUtf8(name);
        action.setting = setting;
        action.announced_targets = announced;
        action.end = static_cast<RECORDED_ACTION::END>(end);
        if (announced > action.targets.size() || end > static_cast<quint8>(RECORDED_ACTION::END::made_no_file))
            stream.setStatus(QDataStream::ReadCorruptData);
    });
}

std::optional<ACTION_SETTING> to_action_setting(QByteArray const& bytes) {
    return read_whole<ACTION_SETTING>(bytes, [](QDataStream& stream, ACTION_SETTING& setting) {
        quint64 low = 0;
        quint64 high = 0;
        stream >> low >> high >> setting.kind;
        setting.plugin.bits = {low, high};
        read_all(stream, setting.rules);
    });
}

QDataStream& operator<<(QDataStream& stream, RECORDED_FILE const& file) {
    return stream << file.path.toUtf8() << file.contents;
}

QDataStream& operator>>(QDataStream& stream, RECORDED_FILE& file) {
    QByteArray path;
    stream >> path >> file.contents;
    file.path = QString::fromUtf8(path);
    return stream;
}

}  // namespace tool
