#include "AboutText.h"

#include <FreeImage.h>
#include <tiffio.h>
#include <tinyxml2.h>
#include <zlib.h>

#ifdef ONDRELS_HAVE_ASSIMP
#include <assimp/version.h>
#endif

#include <QtGlobal>

QString aboutText()
{
    QString text = QStringLiteral("<h3>Ondrels %1</h3><p>Multilayer texture synthesis.</p><p>Built with:</p><ul>")
                       .arg(QStringLiteral(ONDRELS_VERSION));
    text += QStringLiteral("<li>Qt %1 (built with %2)</li>").arg(qVersion(), QStringLiteral(QT_VERSION_STR));
    text += QStringLiteral("<li>FreeImage %1</li>").arg(FreeImage_GetVersion());
    text += QStringLiteral("<li>%1</li>").arg(QString(TIFFGetVersion()).section('\n', 0, 0));
#ifdef ONDRELS_HAVE_ASSIMP
    text += QStringLiteral("<li>Open Asset Import Library %1.%2.%3</li>")
                .arg(aiGetVersionMajor())
                .arg(aiGetVersionMinor())
                .arg(aiGetVersionPatch());
#endif
    text += QStringLiteral("<li>tinyxml2 %1.%2.%3</li>")
                .arg(TIXML2_MAJOR_VERSION)
                .arg(TIXML2_MINOR_VERSION)
                .arg(TIXML2_PATCH_VERSION);
    text += QStringLiteral("<li>zlib %1</li>").arg(zlibVersion());
#ifdef _OPENMP
    text += QStringLiteral("<li>OpenMP %1</li>").arg(_OPENMP);
#endif
    text += QStringLiteral("</ul>");
    return text;
}
