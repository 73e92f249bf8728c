#include "ImageFileSupport.h"

#include "ImageFile.h"
#include "LogMessage.h"

#include <FreeImage.h>
#include <QDir>
#include <QFile>
#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

namespace {
thread_local QString lastLibraryMessage;

// Every message of one load or save is kept (codecs warn about damaged data
// and still return a picture), up to a length that fits one log line.
void keepMessage(const QString& message)
{
    if (lastLibraryMessage.contains(message) || lastLibraryMessage.size() > 400)
        return;
    if (!lastLibraryMessage.isEmpty())
        lastLibraryMessage += QStringLiteral("; ");
    lastLibraryMessage += message.trimmed();
}

void onFreeImageMessage(FREE_IMAGE_FORMAT, const char* message)
{
    keepMessage(QString::fromUtf8(message));
}

void onTiffError(const char* module, const char* format, va_list args)
{
    // FreeImage asks libtiff for every EXIF tag it knows, and libtiff reports
    // each one it does not know as an error; those say nothing about the file.
    if (module && std::strcmp(module, "TIFFFieldWithTag") == 0)
        return;
    char text[512];
    std::vsnprintf(text, sizeof text, format, args);
    keepMessage(QString::fromUtf8(text));
}

void onTiffWarning(const char*, const char*, va_list)
{
    // Unknown tags and similar notes; they never stop a load.
}
}

void prepareImageLibraries()
{
    // Debian's shared FreeImage initialises itself; a static build would need
    // FreeImage_Initialise here as well.
    static const bool prepared = [] {
        FreeImage_SetOutputMessage(onFreeImageMessage);
        TIFFSetErrorHandler(onTiffError);
        TIFFSetWarningHandler(onTiffWarning);
        return true;
    }();
    (void)prepared;
}

void clearImageLibraryMessage()
{
    lastLibraryMessage.clear();
}

QString imageLibraryMessage()
{
    return lastLibraryMessage;
}

QByteArray encodedPath(const QString& path)
{
    return QFile::encodeName(path);
}

void logLoadFailure(const QString& path, const QString& reason)
{
    QString detail = reason.isEmpty() ? lastLibraryMessage : reason;
    // OpenEXR names the stream FreeImage hands it "": put the file there.
    detail.replace(QStringLiteral("\"\""), QLatin1Char('"') + QDir::toNativeSeparators(path) + QLatin1Char('"'));
    QString text = QStringLiteral("Could not load the image file \"%1\"").arg(QDir::toNativeSeparators(path));
    if (!detail.isEmpty())
        text += QStringLiteral(": %1").arg(detail);
    if (!text.endsWith(QLatin1Char('.')))
        text += QLatin1Char('.');
    logMessage(Error, text);
}

bool imageSizeAllowed(const QString& path, uint64_t width, uint64_t height)
{
    if (width == 0 || height == 0) {
        logLoadFailure(path, QStringLiteral("the image has no pixels"));
        return false;
    }
    if (width > maxImageSide || height > maxImageSide || width * height > maxImagePixels) {
        logMessage(Error,
                   QStringLiteral("The image file \"%1\" is %2 x %3 pixels; images of more than %4 pixels "
                                  "per side or %5 pixels in all cannot be loaded.")
                       .arg(QDir::toNativeSeparators(path))
                       .arg(width)
                       .arg(height)
                       .arg(maxImageSide)
                       .arg(maxImagePixels));
        return false;
    }
    return true;
}

float* allocatePixels(const QString& path, uint32_t width, uint32_t height, uint32_t channels)
{
    float* pixels = Image::newPixels(uint64_t(width) * height * channels);
    if (!pixels)
        logLoadFailure(path, QStringLiteral("there is not enough memory for %1 x %2 pixels").arg(width).arg(height));
    return pixels;
}

void adoptPixels(Image& image, float* pixels, uint32_t width, uint32_t height, PixelFormat format,
                 uint32_t fileType, uint32_t sampleType)
{
    Image::freePixels(image.data);
    image.data = pixels;
    image.width = width;
    image.height = height;
    image.format = format;
    image.fileType = fileType;
    image.sampleType = sampleType;
}
