#include "SafeFileWriter.h"

#include "LogMessage.h"

#include <QSaveFile>

namespace Velmor {

bool writeFileSafely(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    bool ok = file.open(QIODevice::WriteOnly);
    ok = ok && file.write(bytes) == bytes.size();
    ok = ok && file.commit();
    if (!ok) {
        logMessage(Error, QStringLiteral("Could not write file: %1 (%2)").arg(path, file.errorString()));
        file.cancelWriting();
    }
    return ok;
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
