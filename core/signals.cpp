#include "core/signals.h"

#include <csignal>
#include <initializer_list>

#include <unistd.h>

void Signals::holdBack()
{
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP})
        sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, nullptr);
}

void Signals::prepareChild()
{
    // zip announces its end before it removes its temporary file; if the tool is gone by then, the
    // announcement must not be what kills it.
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    if (sigismember(&blocked, SIGTERM) != 1)
        return;
    setpgid(0, 0);
    // A SIGTERM that the group received between fork and setpgid is pending: ignoring drops it.
    std::signal(SIGTERM, SIG_IGN);
    std::signal(SIGTERM, SIG_DFL);
    sigset_t termination;
    sigemptyset(&termination);
    sigaddset(&termination, SIGTERM);
    sigprocmask(SIG_UNBLOCK, &termination, nullptr);
}
