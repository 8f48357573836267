#include "viewport/gallery/ProgramRunner.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vellum::gallery {

namespace {

constexpr std::array SIGNALS{SIGHUP, SIGINT, SIGPIPE, SIGTERM};
constexpr int NOT_STARTED = 127;

// Global, because a signal handler gets no data of its caller.
volatile std::sig_atomic_t notedSignal = 0;
volatile std::sig_atomic_t runningProgram = 0;  // process id, or 0
std::array<struct sigaction, SIGNALS.size()> formerActions;

extern "C" void noteSignal(int signal) {
    int const savedError = errno;
    notedSignal = signal;
    if (runningProgram != 0) {
        kill(static_cast<pid_t>(runningProgram), SIGTERM);
    }
    errno = savedError;
}

sigset_t handledSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (int const signal : SIGNALS) {
        sigaddset(&set, signal);
    }
    return set;
}

/// Starts the program with the signal mask `mask`.
/// \return its process id, or 0.
pid_t start(std::vector<std::string> words, sigset_t const& mask) {
    std::vector<char*> pointers(words.size() + 1);  // the last one stays null
    std::transform(words.begin(), words.end(), pointers.begin(),
                   [](std::string& word) { return word.data(); });
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    posix_spawnattr_setsigmask(&attributes, &mask);
    pid_t process = 0;
    int const fault = posix_spawn(&process, pointers.front(), nullptr, &attributes, pointers.data(), environ);
    posix_spawnattr_destroy(&attributes);
    return fault == 0 ? process : 0;
}

}  // namespace

ProgramRunner::ProgramRunner() {
    notedSignal = 0;
    struct sigaction action {};
    action.sa_handler = noteSignal;
    action.sa_mask = handledSignals();
    for (std::size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], &action, &formerActions[i]);
        // A signal that the caller ignores, as nohup does, stays ignored.
        if (formerActions[i].sa_handler == SIG_IGN) {
            sigaction(SIGNALS[i], &formerActions[i], nullptr);
        }
    }
}

ProgramRunner::~ProgramRunner() {
    for (std::size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], &formerActions[i], nullptr);
    }
}

int ProgramRunner::run(std::vector<std::string> const& words) {
    // Blocked, because a signal between the start and the note of the process id would not reach the program.
    sigset_t const handled = handledSignals();
    sigset_t former;
    sigprocmask(SIG_BLOCK, &handled, &former);
    pid_t const process = isInterrupted() ? 0 : start(words, former);
    runningProgram = process;
    sigprocmask(SIG_SETMASK, &former, nullptr);
    if (process == 0) {
        return NOT_STARTED;
    }

    // The process id stays reserved until waitpid(), so the handler cannot signal a foreign process.
    siginfo_t ended;
    while (waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT) < 0 && errno == EINTR) {
    }
    runningProgram = 0;
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool ProgramRunner::isInterrupted() const {
    return notedSignal != 0;
}

void ProgramRunner::endAsInterrupted() {
    int const signal = notedSignal;
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    std::_Exit(128 + signal);
}

}  // namespace vellum::gallery
