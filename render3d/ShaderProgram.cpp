#include "ShaderProgram.h"

#include "LogMessage.h"
#include "MeshVertex.h"

#include <QFile>
#include <QOpenGLShaderProgram>

QString insertDefines(const QString& source, const QStringList& defines)
{
    const QString block = defines.join(QString());
    const int lineFeed = source.indexOf(QLatin1Char('\n'));
    if (lineFeed < 0)
        return block + source;
    QString result = source;
    result.insert(lineFeed + 1, block);
    return result;
}

QOpenGLShaderProgram* buildShaderProgram(const QString& vertexSource, const QString& fragmentSource,
                                         const QString& geometrySource, const QStringList& defines)
{
    auto* program = new QOpenGLShaderProgram;
    auto addStage = [&](QOpenGLShader::ShaderType type, const QString& source) {
        if (!program->addShaderFromSourceCode(type, insertDefines(source, defines)))
            logMessage(Error, program->log());
    };
    addStage(QOpenGLShader::Vertex, vertexSource);
    addStage(QOpenGLShader::Fragment, fragmentSource);
    if (!geometrySource.isEmpty())
        addStage(QOpenGLShader::Geometry, geometrySource);

    program->bindAttributeLocation("vertex", VertexAttribute);
    program->bindAttributeLocation("normal", NormalAttribute);
    program->bindAttributeLocation("texCoord", TexCoordAttribute);
    program->bindAttributeLocation("tangent", TangentAttribute);
    program->bindAttributeLocation("binormal", BinormalAttribute);
    if (!program->link())
        logMessage(Error, program->log());
    return program;
}

QString loadShaderSource(const QString& resourcePath)
{
    QFile file(resourcePath);
    if (!file.open(QIODevice::ReadOnly)) {
        logMessage(Error, QStringLiteral("Shader source %1 is missing.").arg(resourcePath));
        return QString();
    }
    return QString::fromUtf8(file.readAll());
}
