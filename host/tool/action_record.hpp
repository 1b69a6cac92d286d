// What is to be remembered of an action that ran: what it asked of the host, and which files it registered and wrote. A
// plain value, so that the process that ran the action can send it to the one that keeps the state.
#pragma once

#include "host/framework/read_recorder.hpp"
#include "host/tool/written_files.hpp"
#include "processor/host/action_interface.hpp"
#include "processor/host/asset_graph.hpp"

#include <QDataStream>

namespace QTSHARED {

QDataStream& operator<<(QDataStream& stream, ASSET_FRAGMENT_BUILDER::FRAGMENT const& fragment);
QDataStream& operator>>(QDataStream& stream, ASSET_FRAGMENT_BUILDER::FRAGMENT& fragment);
QDataStream& operator<<(QDataStream& stream, ASSET_FRAGMENT_BUILDER::DEPENDENCY const& dependency);
QDataStream& operator>>(QDataStream& stream, ASSET_FRAGMENT_BUILDER::DEPENDENCY& dependency);

}  // namespace QTSHARED

namespace tool {

struct ACTION_RECORD {
    framework::READS reads;
    std::vector<ACTION_INTERFACE::REGISTERED_FILE> registered;
    WRITTEN_FILES written;
};

/// A reader that meets nonsense leaves the stream with a status other than Ok.
QDataStream& operator<<(QDataStream& stream, ACTION_RECORD const& record);
QDataStream& operator>>(QDataStream& stream, ACTION_RECORD& record);

/// The parts, for others who keep them.
QDataStream& operator<<(QDataStream& stream, framework::RULE_READ const& read);
QDataStream& operator>>(QDataStream& stream, framework::RULE_READ& read);
QDataStream& operator<<(QDataStream& stream, framework::LOOK_UP const& look_up);
QDataStream& operator>>(QDataStream& stream, framework::LOOK_UP& look_up);
QDataStream& operator<<(QDataStream& stream, framework::ORIGIN const& origin);
QDataStream& operator>>(QDataStream& stream, framework::ORIGIN& origin);
QDataStream& operator<<(QDataStream& stream, framework::ASSET_CHANGE const& change);
QDataStream& operator>>(QDataStream& stream, framework::ASSET_CHANGE& change);

/// Lists of the standard library and of Qt alike.
template <typename LIST>
void write_all(QDataStream& stream, LIST const& list) {
    stream << static_cast<quint32>(list.size());
    for (typename LIST::value_type const& element : list)
        stream << element;
}

/// Takes no memory for elements that the stream does not hold. Qt's own reading of lists takes it for as many as the
/// stream announces.
template <typename LIST>
void read_all(QDataStream& stream, LIST& list) {
    quint32 count = 0;
    stream >> count;
    list.clear();
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        typename LIST::value_type element{};
        stream >> element;
        list.push_back(std::move(element));
    }
}

}  // namespace tool
