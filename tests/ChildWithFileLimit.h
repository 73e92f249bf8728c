#pragma once

#include "LogMessage.h"
#include "MessageHandler.h"

#include <QStringList>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <functional>

// What a write did in a child process whose files may not grow past a limit,
// as a full disk would stop them.
enum class LimitedWrite
{
    Succeeded,
    FailedWithReason,   // returned false and logged the system's reason
    FailedSilently,     // returned false without that reason
    ChildDied
};

// Runs `write` in a forked child with RLIMIT_FSIZE set to `bytes`: a write
// past it fails with EFBIG, the file system's own error, on the real code path.
inline LimitedWrite writeWithFileLimit(rlim_t bytes, const std::function<bool()>& write)
{
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN); // the error instead of the signal
        const rlimit limit{bytes, bytes};
        setrlimit(RLIMIT_FSIZE, &limit);
        QStringList errors;
        QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage, [&](QString text, int severity) {
            if (severity == Error)
                errors << text;
        });
        const bool ok = write();
        const bool reason = !errors.filter(QString::fromLocal8Bit(std::strerror(EFBIG))).isEmpty();
        _exit(ok ? 0 : reason ? 1 : 2);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return LimitedWrite::ChildDied;
    switch (WEXITSTATUS(status)) {
    case 0: return LimitedWrite::Succeeded;
    case 1: return LimitedWrite::FailedWithReason;
    case 2: return LimitedWrite::FailedSilently;
    default: return LimitedWrite::ChildDied;
    }
}
