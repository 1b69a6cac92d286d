#include "host/tool/action_record.hpp"

namespace tool {

namespace {

template <typename CONTENT>
void read_list(QDataStream& stream, QVector<CONTENT>& list, void (*read)(QDataStream&, CONTENT&)) {
    quint32 count = 0;
    stream >> count;
    list.clear();
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        list.append(CONTENT());
        read(stream, list.back());
    }
}

}  // namespace

QDataStream& operator<<(QDataStream& stream, framework::RULE_READ const& read) {
    return stream << read.path << read.rule << read.property << read.value;
}

QDataStream& operator>>(QDataStream& stream, framework::RULE_READ& read) {
    return stream >> read.path >> read.rule >> read.property >> read.value;
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
    stream << change.builder << static_cast<quint32>(change.fragments.size());
    for (auto const& fragment : change.fragments)
        stream << fragment.name << fragment.file << fragment.package;
    stream << static_cast<quint32>(change.dependencies.size());
    for (auto const& dependency : change.dependencies)
        stream << dependency.fragment << dependency.needs << dependency.kind << dependency.condition;
    return stream;
}

QDataStream& operator>>(QDataStream& stream, framework::ASSET_CHANGE& change) {
    using BUILDER = QTSHARED::ASSET_FRAGMENT_BUILDER;
    stream >> change.builder;
    read_list<BUILDER::FRAGMENT>(stream, change.fragments, [](QDataStream& from, BUILDER::FRAGMENT& fragment) {
        from >> fragment.name >> fragment.file >> fragment.package;
    });
    read_list<BUILDER::DEPENDENCY>(stream, change.dependencies, [](QDataStream& from, BUILDER::DEPENDENCY& dependency) {
        from >> dependency.fragment >> dependency.needs >> dependency.kind >> dependency.condition;
    });
    return stream;
}

QDataStream& operator<<(QDataStream& stream, ACTION_RECORD const& record) {
    write_all(stream, record.reads.rules);
    write_all(stream, record.reads.files);
    write_all(stream, record.reads.textures);
    write_all(stream, record.reads.origins);
    stream << record.reads.tables;
    write_all(stream, record.reads.asset_changes);
    stream << static_cast<quint32>(record.registered.size());
    for (ACTION_INTERFACE::REGISTERED_FILE const& file : record.registered)
        stream << file.path.text() << static_cast<quint8>(file.kind);
    return stream;
}

QDataStream& operator>>(QDataStream& stream, ACTION_RECORD& record) {
    using KIND = ACTION_INTERFACE::REGISTERED_FILE::KIND;
    read_all(stream, record.reads.rules);
    read_all(stream, record.reads.files);
    read_all(stream, record.reads.textures);
    read_all(stream, record.reads.origins);
    stream >> record.reads.tables;
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
    return stream;
}

}  // namespace tool
