// How the log tells the outcome of a step.

#pragma once

#include "core/updatermanager.h"
#include "fs/disk.h"

/** The word for how a step ended. Programs that read the logs look for this very spelling. */
inline QLatin1String outcomeWord(bool succeeded)
{
    return succeeded ? QLatin1String("successfull") : QLatin1String("failed");
}

/** Puts what has changed on the disk. A failure is told in a line that begins with `what`. */
inline bool flushToDisk(const UpdaterManager &manager, const char *what,
                        const Disk::FileSystems &changed)
{
    const std::error_code error = changed.flush();
    if (error)
        manager.info() << what << "could not be written to the disk:"
                       << QString::fromStdString(error.message());
    return !error;
}
