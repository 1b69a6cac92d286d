#include "host/tool/worker_messages.hpp"

#include <QDataStream>
#include <QtEndian>

#include <cerrno>
#include <stdexcept>
#include <utility>

#include <sys/socket.h>

namespace QTSHARED {

static QDataStream& operator<<(QDataStream& stream, ASSET_GRAPH::CHANGE const& change) {
    stream << change.id;
    tool::write_all(stream, change.fragments);
    tool::write_all(stream, change.dependencies);
    return stream;
}

static QDataStream& operator>>(QDataStream& stream, ASSET_GRAPH::CHANGE& change) {
    stream >> change.id;
    tool::read_all(stream, change.fragments);
    tool::read_all(stream, change.dependencies);
    return stream;
}

}  // namespace QTSHARED

namespace tool {

static QDataStream& operator<<(QDataStream& stream, FILE_AT_RISK const& file) {
    return stream << file.path << to_text(file.before) << to_text(file.made);
}

static QDataStream& operator>>(QDataStream& stream, FILE_AT_RISK& file) {
    QString before;
    QString made;
    stream >> file.path >> before >> made;
    file.before = to_identity(before);
    file.made = to_identity(made);
    return stream;
}

namespace {

constexpr quint8 protocol_version = 1;
constexpr QDataStream::Version stream_version = QDataStream::Qt_5_0;
constexpr int length_bytes = 4;
// Far above what any action says, and within what a byte array holds.
constexpr quint32 longest_message = 1 << 30;

QDataStream& operator<<(QDataStream& stream, ACTION_RESULT const& result) {
    stream << static_cast<quint8>(result.status) << result.made_no_file << result.surroundings_failed;
    write_all(stream, result.lines);
    stream << result.diagnosis << static_cast<qint64>(result.milliseconds) << result.peak_bytes.has_value();
    return stream << static_cast<quint64>(result.peak_bytes.value_or(0)) << result.record;
}

QDataStream& operator>>(QDataStream& stream, ACTION_RESULT& result) {
    quint8 status = 0;
    qint64 milliseconds = 0;
    bool has_peak = false;
    quint64 peak = 0;
    stream >> status >> result.made_no_file >> result.surroundings_failed;
    read_all(stream, result.lines);
    stream >> result.diagnosis >> milliseconds >> has_peak >> peak >> result.record;
    if (status > static_cast<quint8>(ACTION_RESULT::STATUS::interrupted))
        stream.setStatus(QDataStream::ReadCorruptData);
    result.status = static_cast<ACTION_RESULT::STATUS>(status);
    result.milliseconds = milliseconds;
    if (has_peak)
        result.peak_bytes = peak;
    return stream;
}

QDataStream& operator<<(QDataStream& stream, RUN_MESSAGE const& message) {
    stream << message.action << message.threads;
    write_all(stream, message.changes);
    return stream;
}

QDataStream& operator>>(QDataStream& stream, RUN_MESSAGE& message) {
    stream >> message.action >> message.threads;
    read_all(stream, message.changes);
    return stream;
}

QDataStream& operator<<(QDataStream& stream, STOP_MESSAGE const&) {
    return stream;
}

QDataStream& operator>>(QDataStream& stream, STOP_MESSAGE&) {
    return stream;
}

QDataStream& operator<<(QDataStream& stream, LINE_MESSAGE const& message) {
    return stream << message.text;
}

QDataStream& operator>>(QDataStream& stream, LINE_MESSAGE& message) {
    return stream >> message.text;
}

QDataStream& operator<<(QDataStream& stream, WORKING_FILE_MESSAGE const& message) {
    write_all(stream, message.files);
    return stream;
}

QDataStream& operator>>(QDataStream& stream, WORKING_FILE_MESSAGE& message) {
    read_all(stream, message.files);
    return stream;
}

QDataStream& operator<<(QDataStream& stream, PROGRESS_MESSAGE const& message) {
    return stream << message.value << message.maximum;
}

QDataStream& operator>>(QDataStream& stream, PROGRESS_MESSAGE& message) {
    return stream >> message.value >> message.maximum;
}

QDataStream& operator<<(QDataStream& stream, RESULT_MESSAGE const& message) {
    stream << message.result;
    write_all(stream, message.changes);
    return stream;
}

QDataStream& operator>>(QDataStream& stream, RESULT_MESSAGE& message) {
    stream >> message.result;
    read_all(stream, message.changes);
    return stream;
}

// The message whose place among the alternatives the stream names.
template <std::size_t... PLACES>
bool read_alternative(QDataStream& stream, quint8 place, MESSAGE& message, std::index_sequence<PLACES...>) {
    return ((place == PLACES && (stream >> message.emplace<PLACES>(), true)) || ...);
}

}  // namespace

bool send_message(int socket, MESSAGE const& message) {
    QByteArray frame(length_bytes, '\0');
    {
        QDataStream stream(&frame, QIODevice::Append);
        stream.setVersion(stream_version);
        stream << protocol_version << static_cast<quint8>(message.index());
        std::visit([&](auto const& alternative) { stream << alternative; }, message);
    }
    qToBigEndian(static_cast<quint32>(frame.size() - length_bytes), frame.data());
    for (int sent = 0; sent < frame.size();) {
        // A worker that has died must not take the tool along by SIGPIPE.
        ssize_t const count =
            send(socket, frame.constData() + sent, static_cast<std::size_t>(frame.size() - sent), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        sent += static_cast<int>(count);
    }
    return true;
}

MESSAGE_READER::STATE MESSAGE_READER::receive(int socket, bool waits) {
    char piece[16384];
    while (true) {
        ssize_t const count = recv(socket, piece, sizeof piece, waits ? 0 : MSG_DONTWAIT);
        if (count > 0) {
            bytes_.append(piece, static_cast<int>(count));
            waits = false;
        } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            return STATE::closed;
        } else if (errno == EAGAIN) {
            return STATE::open;
        }
    }
}

std::optional<MESSAGE> MESSAGE_READER::next() {
    if (bytes_.size() < length_bytes)
        return {};
    auto const length = qFromBigEndian<quint32>(bytes_.constData());
    bool is_sound = length <= longest_message;
    if (is_sound && static_cast<quint32>(bytes_.size() - length_bytes) < length)
        return {};
    MESSAGE message;
    if (is_sound) {
        QDataStream stream(bytes_.mid(length_bytes, static_cast<int>(length)));
        stream.setVersion(stream_version);
        quint8 version = 0;
        quint8 place = 0;
        stream >> version >> place;
        is_sound = version == protocol_version &&
                   read_alternative(stream, place, message, std::make_index_sequence<std::variant_size_v<MESSAGE>>()) &&
                   stream.status() == QDataStream::Ok && stream.atEnd();
    }
    if (!is_sound)
        throw std::runtime_error("a message between the tool and a worker is damaged");
    bytes_.remove(0, length_bytes + static_cast<int>(length));
    return message;
}

}  // namespace tool
