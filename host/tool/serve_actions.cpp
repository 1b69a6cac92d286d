// A worker from the inside. The main thread runs actions; a second one, which sleeps nearly always, listens to the
// tool, because an action that runs must be told to stop, and tells how far the action is.
#include "host/tool/worker.hpp"

#include "processor/host/paths.hpp"
#include "processor/host/working_file_refusal.hpp"

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>

#include <omp.h>
#include <poll.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr int progress_milliseconds = 100;

class ACTION_SERVER {
public:
    ACTION_SERVER(WORKER_TASK const& task, int socket) : task_(task), socket_(socket) {}

    [[noreturn]] void serve() {
        // What the tool's own copy went through is known on both sides.
        task_.session.asset_graph().take_changes();
        std::thread([this] { listen(); }).detach();
        while (true)
            run(wait_for_order());
    }

private:
    RUN_MESSAGE wait_for_order() {
        std::unique_lock lock(mutex_);
        ordered_.wait(lock, [this] { return order_.has_value(); });
        RUN_MESSAGE order = std::move(*order_);
        order_.reset();
        return order;
    }

    void run(RUN_MESSAGE const& order) {
        PLANNED_ACTION const& planned = task_.plan.actions[order.action];
        QTSHARED::ASSET_GRAPH& graph = task_.session.asset_graph();
        // The tool's graph took these, so this one takes them.
        QString error;
        for (QTSHARED::ASSET_GRAPH::CHANGE const& change : order.changes)
            graph.repeat(change, error);
        omp_set_num_threads(order.threads);
        planned.action->set_working_file_listener([&](PHYSICAL_PATH const& path) {
            // The action would write over it and take it away.
            if (task_.plan.raw_sources.contains(PATHS::logical_path(path)))
                throw WORKING_FILE_REFUSAL(path.text().toStdString() +
                                           " is a source, and this action needs a file of that name for itself");
            task_.journal.note_file(planned, path);
            send(WORKING_FILE_MESSAGE{path});
        });
        RESULT_MESSAGE message;
        message.result = execute_action(planned, task_.session.files(), task_.session.rules(),
                                        [&](QString const& line) { send(LINE_MESSAGE{line}); });
        std::fflush(nullptr);
        message.changes = graph.take_changes();
        {
            std::lock_guard const guard(mutex_);
            running_ = nullptr;
        }
        send(message);
    }

    void send(MESSAGE const& message) {
        std::lock_guard const guard(mutex_);
        if (!send_message(socket_, message))
            _exit(0);
    }

    void listen() {
        MESSAGE_READER reader;
        while (true) {
            bool is_running = false;
            {
                std::lock_guard const guard(mutex_);
                is_running = running_ != nullptr;
            }
            pollfd entry = {socket_, POLLIN, 0};
            int const ready = poll(&entry, 1, is_running ? progress_milliseconds : -1);
            // A short action is over before anybody wants to know how far it is.
            if (ready == 0) {
                std::lock_guard const guard(mutex_);
                tell_progress();
            }
            if (ready <= 0)
                continue;
            if (reader.receive(socket_, true) == MESSAGE_READER::STATE::closed)
                _exit(0);
            while (std::optional<MESSAGE> const message = reader.next())
                obey(*message);
        }
    }

    void obey(MESSAGE const& message) {
        std::lock_guard const guard(mutex_);
        if (auto const* const order = std::get_if<RUN_MESSAGE>(&message)) {
            running_ = task_.plan.actions[order->action].action;
            told_ = {};
            order_ = *order;
            ordered_.notify_one();
        } else if (std::holds_alternative<STOP_MESSAGE>(message) && running_) {
            running_->abort();
        }
    }

    void tell_progress() {
        if (!running_)
            return;
        PROGRESS_MESSAGE const now = {running_->progress(), running_->progress_max()};
        if (now.value == told_.value && now.maximum == told_.maximum)
            return;
        told_ = now;
        send_message(socket_, now);
    }

    WORKER_TASK const& task_;
    int socket_;
    std::mutex mutex_;
    std::condition_variable ordered_;
    // Guarded by the mutex, like every sending.
    std::optional<RUN_MESSAGE> order_;
    ACTION_INTERFACE* running_ = nullptr;
    PROGRESS_MESSAGE told_;
};

}  // namespace

void serve_actions(WORKER_TASK const& task, int socket) {
    // Leaves by _exit alone: what the destructors of this copy would tidy belongs to the tool.
    ACTION_SERVER(task, socket).serve();
}

}  // namespace tool
