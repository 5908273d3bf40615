#include "app/processsetup.h"

#include <QByteArray>
#include <QtGlobal>

#include <clocale>
#include <csignal>
#include <cstring>
#include <initializer_list>

#include <fcntl.h>
#include <langinfo.h>
#include <unistd.h>

void ProcessSetup::guardStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open() takes the lowest free number, so this very one.
        if (::fcntl(descriptor, F_GETFD) == -1)
            ::open("/dev/null", O_RDWR);
    }
    std::signal(SIGPIPE, SIG_IGN);
}

void ProcessSetup::useUtf8FileNames()
{
    std::setlocale(LC_CTYPE, "");
    if (std::strcmp(::nl_langinfo(CODESET), "UTF-8") == 0)
        return;
    // Over all the others, one of which may name a locale that the device does not have.
    qputenv("LC_ALL", QByteArrayLiteral("C.UTF-8"));
}

void ProcessSetup::unblockChildSignal()
{
    sigset_t childEnd;
    sigemptyset(&childEnd);
    sigaddset(&childEnd, SIGCHLD);
    sigprocmask(SIG_UNBLOCK, &childEnd, nullptr);
}

void ProcessSetup::dropArchiverOptions()
{
    for (const char *variable : {"ZIP", "ZIPOPT", "UNZIP", "UNZIPOPT"})
        qunsetenv(variable);
}
