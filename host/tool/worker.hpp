// A worker: a process forked from the tool, which runs actions one after another. It shares the plan, the rules and the
// file table as they stood at the fork; all else goes to and fro as messages. Decoders that crash, libraries that keep
// state of their own for a process, and memory that runs out stay inside it.
#pragma once

#include "host/tool/build_journal.hpp"
#include "host/tool/worker_messages.hpp"

#include <memory>
#include <vector>

#include <sys/types.h>

namespace tool {

/// What a worker works on. Borrowed from whoever runs the build.
struct WORKER_TASK {
    PLAN const& plan;
    BUILD_SESSION& session;
    BUILD_JOURNAL& journal;
};

class WORKER {
public:
    /// Forks; the caller has no other thread. `parents_own` are descriptors that the child must not keep. Null with a
    /// cause when the system has no room for another process.
    static std::unique_ptr<WORKER> start(WORKER_TASK const& task, std::vector<int> const& parents_own, QString& error);
    WORKER(WORKER const&) = delete;
    WORKER& operator=(WORKER const&) = delete;
    /// Ends the process if it lives.
    ~WORKER();

    /// Readable when messages have come, or when the process has ended.
    int socket() const { return socket_; }
    /// Readable when something was written to the process's standard output or standard error.
    int output() const { return output_; }

    bool send(MESSAGE const& message) { return send_message(socket_, message); }
    MESSAGE_READER::STATE receive() { return reader_.receive(socket_, false); }
    std::optional<MESSAGE> next() { return reader_.next(); }

    /// Takes what has been written so far.
    void collect_output();
    /// The collected output as lines; the collection starts anew.
    QStringList take_output_lines();

    void kill();
    /// Waits for the end of a process that is ending, and says what ended it, in half a sentence.
    QString wait_for_end();

private:
    WORKER(pid_t process, pid_t owner, int socket, int output)
        : process_(process),
          owner_(owner),
          socket_(socket),
          output_(output) {}

    pid_t process_;
    /// A worker has copies of the tool's objects, and its fellows are none of its business.
    pid_t owner_;
    int socket_;
    int output_;
    MESSAGE_READER reader_;
    QByteArray written_;
    bool left_out_ = false;
};

/// The life of the process on the other side: runs what the messages ask for until the socket closes.
[[noreturn]] void serve_actions(WORKER_TASK const& task, int socket);

/// For a worker that cannot go on: says which exception is being handled, and ends the process there and then. What the
/// destructors of this copy would tidy belongs to the tool.
[[noreturn]] void leave_worker();

}  // namespace tool
