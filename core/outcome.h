// The log's words for how a step ended. Programs that read the logs look for this very spelling.

#pragma once

#include <QString>

inline QLatin1String outcomeWord(bool succeeded)
{
    return succeeded ? QLatin1String("successfull") : QLatin1String("failed");
}
