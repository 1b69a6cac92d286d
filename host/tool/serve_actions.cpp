// A worker from the inside. The main thread runs actions; a second one, which sleeps nearly always, listens to the
// tool, because an action that runs must be told to stop, and tells how far the action is.
#include "host/tool/exit_code.hpp"
#include "host/tool/worker.hpp"

#include "processor/host/paths.hpp"
#include "processor/host/working_file_refusal.hpp"

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <system_error>
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
        try {
            std::thread([this] { listen(); }).detach();
        } catch (std::system_error const&) {
            // No second thread is to be had. Nobody listens then while an action runs: it is ended and not asked to
            // stop, and does not tell how far it is.
            listens_ = false;
        }
        while (true)
            run(wait_for_order());
    }

private:
    RUN_MESSAGE wait_for_order() {
        while (!listens_ && !order_)
            receive();
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
        UNFINISHED_ACTION working;
        planned.action->set_working_file_listener([&](PHYSICAL_PATH const& path) {
            // The action would write over it and take it away.
            if (task_.plan.raw_sources.contains(PATHS::logical_path(path)))
                throw WORKING_FILE_REFUSAL(path.text().toStdString() +
                                           " is a source, and this action needs a file of that name for itself");
            note(planned, working, path);
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

    // Named for the first time, the file is about to be made; from then on, it has been.
    void note(PLANNED_ACTION const& planned, UNFINISHED_ACTION& working, QString const& path) {
        bool const is_known = std::any_of(working.files.begin(), working.files.end(),
                                          [&](FILE_AT_RISK const& file) { return file.path == path; });
        std::vector<FILE_AT_RISK> const files =
            is_known ? std::vector<FILE_AT_RISK>{{path, {}, identity_of(path)}} : files_at_risk(path);
        for (FILE_AT_RISK const& file : files)
            working.take(file);
        task_.journal.note_files(planned, files);
        send(WORKING_FILE_MESSAGE{files});
    }

    void send(MESSAGE const& message) {
        std::lock_guard const guard(mutex_);
        if (!send_message(socket_, message))
            _exit(0);
    }

    void listen() noexcept {
        try {
            while (true)
                listen_once();
        } catch (...) {
            leave_worker();
        }
    }

    void listen_once() {
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
        if (ready > 0)
            receive();
    }

    void receive() {
        if (reader_.receive(socket_, true) == MESSAGE_READER::STATE::closed)
            _exit(0);
        while (std::optional<MESSAGE> const message = reader_.next())
            obey(*message);
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
    MESSAGE_READER reader_;
    bool listens_ = true;
    std::mutex mutex_;
    std::condition_variable ordered_;
    // Guarded by the mutex, like every sending.
    std::optional<RUN_MESSAGE> order_;
    ACTION_INTERFACE* running_ = nullptr;
    PROGRESS_MESSAGE told_;
};

}  // namespace

void serve_actions(WORKER_TASK const& task, int socket) {
    ACTION_SERVER(task, socket).serve();
}

void leave_worker() {
    try {
        throw;
    } catch (std::exception const& exception) {
        std::fprintf(stderr, "%s\n", exception.what());
    } catch (...) {
        std::fputs("an unknown exception\n", stderr);
    }
    std::fflush(nullptr);
    _exit(static_cast<int>(EXIT_CODE::internal));
}

}  // namespace tool
