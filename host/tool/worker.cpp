#include "host/tool/worker.hpp"

#include "host/tool/interrupt.hpp"
#include "host/tool/plugin_call.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <utility>

#include <fcntl.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tool {

namespace {

// A library that complains of every texel is not listened to for ever.
constexpr int most_output = 65536;

// When memory runs out, the system is to end a worker before the tool.
void offer_as_victim() {
    constexpr char score[] = "500";
    int const file = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
    if (file < 0)
        return;
    // Where it cannot be set, the system chooses by size, which is nearly as good.
    [[maybe_unused]] ssize_t const written = write(file, score, sizeof score - 1);
    close(file);
}

// Images come and go by the hundred. What one has left serves the next; pages that are given back to the system have to
// be cleared by it when they are asked for again.
void keep_freed_memory() {
    constexpr int most_kept = 64 << 20;
    // The most that the library takes here: larger pieces still go back at once.
    constexpr int smallest_mapping = 32 << 20;
    mallopt(M_MMAP_THRESHOLD, smallest_mapping);
    mallopt(M_TRIM_THRESHOLD, most_kept);
}

// What the fresh process does before it serves: lives and dies with the tool, hears no Ctrl-C of the terminal (the tool
// decides), reads nothing, and writes into the pipe.
void settle_in(pid_t parent, int output) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(0);
    setpgid(0, 0);
    INTERRUPT::restore_signals();
    remove_crash_messages();
    offer_as_victim();
    keep_freed_memory();
    int const nothing = open("/dev/null", O_RDONLY);
    if (nothing > STDERR_FILENO) {
        dup2(nothing, STDIN_FILENO);
        close(nothing);
    }
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    close(output);
    // What arrives late would belong to the wrong action.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

// Programs that a worker had started, for version control, and that have outlived it. One that is ended gently takes
// its locks away.
void end_group(pid_t group) {
    constexpr int looks = 50;
    for (int look = 0; look < looks && ::kill(-group, look == 0 ? SIGTERM : 0) == 0; ++look)
        usleep(10'000);
    ::kill(-group, SIGKILL);
}

QString described(int signal) {
    char const* const name = sigabbrev_np(signal);
    QString const text = QStringLiteral("killed by signal %1").arg(signal);
    if (!name)
        return text;
    return text +
           QStringLiteral(" (SIG%1%2)")
               .arg(QLatin1String(name), signal == SIGKILL ? QStringLiteral(", perhaps out of memory") : QString());
}

}  // namespace

std::unique_ptr<WORKER> WORKER::start(WORKER_TASK const& task, std::vector<int> const& parents_own, QString& error) {
    auto const fail = [&](char const* what) {
        error = QStringLiteral("%1: %2").arg(QLatin1String(what), QString::fromLocal8Bit(std::strerror(errno)));
        return nullptr;
    };
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
        return fail("no connection to a worker");
    int pipes[2];
    if (pipe2(pipes, O_CLOEXEC) != 0) {
        close(sockets[0]);
        close(sockets[1]);
        return fail("no connection to a worker");
    }
    // What stands in these buffers would be written by both processes.
    std::fflush(nullptr);
    pid_t const parent = getpid();
    pid_t const process = fork();
    if (process == 0) {
        // Above this frame lies the tool's own work, which must not go on in the child, whatever happens here.
        try {
            settle_in(parent, pipes[1]);
            for (int const descriptor : parents_own)
                close(descriptor);
            close(sockets[0]);
            close(pipes[0]);
            serve_actions(task, sockets[1]);
        } catch (...) {
            leave_worker();
        }
    }
    close(sockets[1]);
    close(pipes[1]);
    if (process < 0) {
        int const cause = errno;
        close(sockets[0]);
        close(pipes[0]);
        errno = cause;
        return fail("no process for a worker");
    }
    // The child does the same; whoever comes first.
    setpgid(process, process);
    fcntl(pipes[0], F_SETFL, O_NONBLOCK);
    return std::unique_ptr<WORKER>(new WORKER(process, parent, sockets[0], pipes[0]));
}

WORKER::~WORKER() {
    if (process_ > 0 && owner_ == getpid()) {
        kill();
        wait_for_end();
    }
    close(socket_);
    close(output_);
}

void WORKER::collect_output() {
    char piece[4096];
    while (true) {
        ssize_t const count = read(output_, piece, sizeof piece);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return;
        int const room = most_output - written_.size();
        written_.append(piece, std::min(room, static_cast<int>(count)));
        left_out_ = left_out_ || room < count;
    }
}

QStringList WORKER::take_output_lines() {
    QStringList lines;
    for (QByteArray const& line : written_.split('\n'))
        if (!line.trimmed().isEmpty())
            lines += QString::fromLocal8Bit(line).remove(u'\r');
    if (left_out_)
        lines += QStringLiteral("(more of this was left out)");
    written_.clear();
    left_out_ = false;
    return lines;
}

void WORKER::kill() {
    if (process_ > 0)
        ::kill(process_, SIGKILL);
}

QString WORKER::wait_for_end() {
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR)
        continue;
    end_group(std::exchange(process_, -1));
    if (WIFSIGNALED(status))
        return described(WTERMSIG(status));
    return QStringLiteral("the worker ended with status %1").arg(WEXITSTATUS(status));
}

}  // namespace tool
