#pragma once

#include <QString>
#include <QStringList>

class QOpenGLShaderProgram;

// Inserts the define lines (each ending in a line feed) right after the
// source's first line, the "#version" line; at the very start of a source
// without a line feed.
QString insertDefines(const QString& source, const QStringList& defines);

// Compiles and links a program with the Mesh attribute locations bound.
// Compile and link logs go to the message log as errors; the program is
// returned even when broken (the caller owns it).
QOpenGLShaderProgram* buildShaderProgram(const QString& vertexSource, const QString& fragmentSource,
                                         const QString& geometrySource = QString(),
                                         const QStringList& defines = QStringList());

// A shader source from the resource system (":/shaders/preview.frag");
// empty, after an error message, when it is missing.
QString loadShaderSource(const QString& resourcePath);
