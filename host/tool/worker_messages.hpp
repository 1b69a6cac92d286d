// What the tool and its worker processes say to each other: whole messages over a stream socket. Both ends are the same
// program, forked, so the form is free to change; the version in front of each message makes a mix-up an error instead
// of a misunderstanding.
#pragma once

#include "host/tool/execute_action.hpp"
#include "host/tool/journal_lines.hpp"
#include "processor/host/asset_graph.hpp"

#include <QByteArray>

#include <optional>
#include <variant>

namespace tool {

using GRAPH_CHANGES = QVector<QTSHARED::ASSET_GRAPH::CHANGE>;

/// To a worker: run the action at this place of the plan, with so many threads. `changes` are what happened to the
/// asset graph since the worker last heard of it.
struct RUN_MESSAGE {
    quint64 action = 0;
    qint32 threads = 1;
    GRAPH_CHANGES changes;
};

/// To a worker: the running action should stop soon.
struct STOP_MESSAGE {};

/// From a worker: the running action said a line.
struct LINE_MESSAGE {
    QString text;
};

/// From a worker: the running action is about to write these files, which are none of its targets, or has made them.
struct WORKING_FILE_MESSAGE {
    std::vector<FILE_AT_RISK> files;
};

struct PROGRESS_MESSAGE {
    qint32 value = 0;
    qint32 maximum = 0;
};

/// From a worker: the action is over, and this is what it did to the worker's copy of the asset graph.
struct RESULT_MESSAGE {
    ACTION_RESULT result;
    GRAPH_CHANGES changes;
};

using MESSAGE =
    std::variant<RUN_MESSAGE, STOP_MESSAGE, LINE_MESSAGE, WORKING_FILE_MESSAGE, PROGRESS_MESSAGE, RESULT_MESSAGE>;

/// Waits until the message is on its way. False when nobody listens any more.
bool send_message(int socket, MESSAGE const& message);

/// Puts messages together from the pieces in which they arrive.
class MESSAGE_READER {
public:
    enum class STATE { open, closed };

    /// Takes what there is. With `waits` it waits for at least one byte.
    STATE receive(int socket, bool waits);
    /// The next whole message. Throws std::runtime_error for bytes that are none.
    std::optional<MESSAGE> next();

private:
    QByteArray bytes_;
};

}  // namespace tool
