#include "core/signals.h"

#include <array>
#include <csignal>

#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr std::array<int, 5> endingSignals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP};

bool areHeldBack()
{
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    return sigismember(&blocked, SIGTERM) == 1;
}

} // namespace

void Signals::holdBack()
{
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : endingSignals)
        sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, nullptr);
}

void Signals::prepareChild()
{
    // zip announces its end before it removes its temporary file; if the tool is gone by then, the
    // announcement must not be what kills it.
    std::signal(SIGPIPE, SIG_IGN);
    // A command that is asked to end by SIGABRT shall leave nothing behind for that.
    constexpr rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    if (!areHeldBack())
        return;
    setpgid(0, 0);
    // What the group received between fork and setpgid is pending: ignoring drops it.
    for (const int number : endingSignals) {
        std::signal(number, SIG_IGN);
        std::signal(number, SIG_DFL);
    }
}
