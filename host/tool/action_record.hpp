// What is to be remembered of an action that ran: what it asked of the host, and which files it registered. A plain
// value, so that the process that ran the action can send it to the one that keeps the state.
#pragma once

#include "host/framework/read_recorder.hpp"
#include "processor/host/action_interface.hpp"

#include <QDataStream>

namespace tool {

struct ACTION_RECORD {
    framework::READS reads;
    std::vector<ACTION_INTERFACE::REGISTERED_FILE> registered;
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

template <typename ELEMENT>
void write_all(QDataStream& stream, std::vector<ELEMENT> const& elements) {
    stream << static_cast<quint32>(elements.size());
    for (ELEMENT const& element : elements)
        stream << element;
}

/// Takes no memory for elements that the stream does not hold.
template <typename ELEMENT>
void read_all(QDataStream& stream, std::vector<ELEMENT>& elements) {
    quint32 count = 0;
    stream >> count;
    elements.clear();
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i)
        stream >> elements.emplace_back();
}

}  // namespace tool
