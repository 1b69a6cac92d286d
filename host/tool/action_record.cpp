#include "host/tool/action_record.hpp"

#include <QtEndian>

#include <algorithm>
#include <array>

namespace QTSHARED {

QDataStream& operator<<(QDataStream& stream, ASSET_FRAGMENT_BUILDER::FRAGMENT const& fragment) {
    return stream << fragment.name << fragment.file << fragment.package;
}

QDataStream& operator>>(QDataStream& stream, ASSET_FRAGMENT_BUILDER::FRAGMENT& fragment) {
    return stream >> fragment.name >> fragment.file >> fragment.package;
}

QDataStream& operator<<(QDataStream& stream, ASSET_FRAGMENT_BUILDER::DEPENDENCY const& dependency) {
    return stream << dependency.fragment << dependency.needs << dependency.kind << dependency.condition;
}

QDataStream& operator>>(QDataStream& stream, ASSET_FRAGMENT_BUILDER::DEPENDENCY& dependency) {
    return stream >> dependency.fragment >> dependency.needs >> dependency.kind >> dependency.condition;
}

}  // namespace QTSHARED

namespace tool {

namespace {

/// A variant's bytes can name any type there is, lists of lists a thousand deep among them. Rules have these.
bool is_rule_value_next(QDataStream& stream) {
    constexpr std::array<quint32, 6> types = {QMetaType::UnknownType, QMetaType::Bool,   QMetaType::Int,
                                              QMetaType::LongLong,    QMetaType::Double, QMetaType::QString};
    QByteArray const type = stream.device()->peek(sizeof(quint32));
    return type.size() == sizeof(quint32) &&
           std::find(types.begin(), types.end(), qFromBigEndian<quint32>(type.constData())) != types.end();
}

}  // namespace

QDataStream& operator<<(QDataStream& stream, framework::RULE_READ const& read) {
    return stream << read.path << read.rule << read.property << read.value;
}

QDataStream& operator>>(QDataStream& stream, framework::RULE_READ& read) {
    stream >> read.path >> read.rule >> read.property;
    if (is_rule_value_next(stream))
        stream >> read.value;
    else
        stream.setStatus(QDataStream::ReadCorruptData);
    return stream;
}

QDataStream& operator<<(QDataStream& stream, framework::LOOK_UP const& look_up) {
    return stream << look_up.path << look_up.found;
}

QDataStream& operator>>(QDataStream& stream, framework::LOOK_UP& look_up) {
    return stream >> look_up.path >> look_up.found;
}

QDataStream& operator<<(QDataStream& stream, framework::ORIGIN const& origin) {
    return stream << origin.texture << origin.made_from;
}

QDataStream& operator>>(QDataStream& stream, framework::ORIGIN& origin) {
    return stream >> origin.texture >> origin.made_from;
}

QDataStream& operator<<(QDataStream& stream, framework::ASSET_CHANGE const& change) {
    stream << change.builder;
    write_all(stream, change.fragments);
    write_all(stream, change.dependencies);
    return stream;
}

QDataStream& operator>>(QDataStream& stream, framework::ASSET_CHANGE& change) {
    stream >> change.builder;
    read_all(stream, change.fragments);
    read_all(stream, change.dependencies);
    return stream;
}

QDataStream& operator<<(QDataStream& stream, ACTION_RECORD const& record) {
    write_all(stream, record.reads.rules);
    write_all(stream, record.reads.files);
    write_all(stream, record.reads.textures);
    write_all(stream, record.reads.origins);
    write_all(stream, record.reads.tables);
    write_all(stream, record.reads.asset_changes);
    stream << static_cast<quint32>(record.registered.size());
    for (ACTION_INTERFACE::REGISTERED_FILE const& file : record.registered)
        stream << file.path.text() << static_cast<quint8>(file.kind);
    stream << static_cast<quint32>(record.written.size());
    for (auto file = record.written.begin(); file != record.written.end(); ++file)
        stream << file.key() << static_cast<quint64>(file->bits[0]) << static_cast<quint64>(file->bits[1]);
    return stream;
}

QDataStream& operator>>(QDataStream& stream, ACTION_RECORD& record) {
    using KIND = ACTION_INTERFACE::REGISTERED_FILE::KIND;
    read_all(stream, record.reads.rules);
    read_all(stream, record.reads.files);
    read_all(stream, record.reads.textures);
    read_all(stream, record.reads.origins);
    read_all(stream, record.reads.tables);
    read_all(stream, record.reads.asset_changes);
    quint32 count = 0;
    stream >> count;
    record.registered.clear();
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        QString path;
        quint8 kind = 0;
        stream >> path >> kind;
        if (kind > static_cast<quint8>(KIND::reverted))
            stream.setStatus(QDataStream::ReadCorruptData);
        record.registered.push_back({PHYSICAL_PATH(path), static_cast<KIND>(kind)});
    }
    stream >> count;
    record.written.clear();
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        QString path;
        quint64 low = 0;
        quint64 high = 0;
        stream >> path >> low >> high;
        record.written.insert(path, CONTENT_HASH{{low, high}});
    }
    return stream;
}

}  // namespace tool
