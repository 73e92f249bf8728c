#include "SafeFileWriter.h"

#include "LogMessage.h"

#include <QCoreApplication>
#include <QFile>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace Velmor {

namespace {

// A name in the same folder (so the rename stays on one file system) that no
// other save uses at the same time.
QString temporaryPath(const QString& path)
{
    static std::atomic<uint32_t> counter{0};
    return QStringLiteral("%1.%2-%3.saving").arg(path).arg(QCoreApplication::applicationPid()).arg(counter++);
}

QString systemReason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

// Writes, flushes and syncs the temporary file; an empty string when all of
// `bytes` is on the disk, else the reason.
QString writeTemporary(const QString& temporary, const QByteArray& bytes)
{
    QFile file(temporary);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        return file.errorString();
    qint64 written = 0;
    while (written < bytes.size()) {
        const qint64 step = file.write(bytes.constData() + written, bytes.size() - written);
        if (step <= 0)
            return file.errorString();
        written += step;
    }
    if (!file.flush())
        return file.errorString();
#ifdef Q_OS_UNIX
    // Without this a full disk may only show when the data leaves the cache,
    // after the rename has already replaced the old file.
    if (::fsync(file.handle()) != 0)
        return systemReason();
#endif
    const qint64 size = file.size();
    file.close();
    if (size != bytes.size())
        return QStringLiteral("only %1 of %2 bytes reached the disk").arg(size).arg(bytes.size());
    if (file.error() != QFileDevice::NoError)
        return file.errorString();
    return QString();
}

} // namespace

bool writeFileSafely(const QString& path, const QByteArray& bytes)
{
    const QString temporary = temporaryPath(path);
    QString reason = writeTemporary(temporary, bytes);
    if (reason.isEmpty() && std::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(path).constData()) != 0)
        reason = systemReason();
    if (reason.isEmpty())
        return true;
    QFile::remove(temporary);
    logMessage(Error, QStringLiteral("Could not write file: %1 (%2)").arg(path, reason));
    return false;
}

QString safeFileName(const std::string& recordName)
{
    QString name = QString::fromStdString(recordName);
    for (QChar& c : name) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f || QStringLiteral("/\\:*?\"<>|").contains(c))
            c = QLatin1Char('_');
    }
    bool onlyDots = true;
    for (const QChar c : name)
        onlyDots = onlyDots && c == QLatin1Char('.');
    if (onlyDots)
        name.prepend(QLatin1Char('_'));
    return name;
}

} // namespace Velmor
