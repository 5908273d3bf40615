// Keeping the signals that end or stop a program away from a change that is under way.

#pragma once

namespace Signals {

/**
 * Blocks SIGHUP, SIGINT, SIGQUIT, SIGTERM and SIGTSTP until the process ends, for this process
 * and for the commands that it starts from here on: a program like zip installs handlers of its
 * own and would die of a signal that is merely ignored.
 */
void holdBack();

/**
 * For a child process before it runs its program: lets it outlive the tool for as long as it takes
 * to tidy up. Behind holdBack() it also leaves the tool's process group, for the sake of a program
 * that unblocks signals itself. Without holdBack() Ctrl-C ends tool and command.
 * Async-signal-safe.
 */
void prepareChild();

} // namespace Signals
