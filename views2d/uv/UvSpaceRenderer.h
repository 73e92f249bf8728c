#pragma once

#include <QOpenGLFunctions>
#include <QPointF>
#include <QSize>

#include <memory>

class Image;
class Mesh;
class QMatrix4x4;
class QOpenGLFramebufferObject;
class QOpenGLShaderProgram;

// Draws a mesh in UV space, where texture and model meet: the UV layout as a
// wireframe over the generated image, island masks, picking the island under
// the cursor, and direction maps from the mesh's geometry. Runs in whatever
// OpenGL context is current (the generated view's, inside its paint routine);
// the programs and framebuffers belong to that context and are made on first
// use. Call releaseGL() with the same context current before it goes away.
//
// `combined` is the view's projection x model-view matrix in Qt's usual
// column-vector sense (clip = combined * p for a point p of the picture plane,
// where UV (0, 0) .. (1, 1) spans -1 .. 1).
class UvSpaceRenderer : protected QOpenGLFunctions
{
public:
    UvSpaceRenderer();
    ~UvSpaceRenderer();
    UvSpaceRenderer(const UvSpaceRenderer&) = delete;
    UvSpaceRenderer& operator=(const UvSpaceRenderer&) = delete;

    static constexpr int autoModeCount = 6;

    // Fills channels 0 and 1 of every texel of `directionMap` from the mesh
    // with auto mode 0..5; texels no triangle covers become (-1, -1). Returns
    // false, touching nothing, without a map or a mesh.
    bool generateAutoDirection(Mesh* mesh, Image* directionMap, int autoMode);

    // Writes island `island` (-1: all islands) into channel 0 of `mask`,
    // grown by about five texels; `add` accumulates up to 1.0 instead of
    // replacing. With a generated image the mask first becomes square, its
    // side the larger of the generated sides rounded up to even. Returns
    // false, touching nothing, without a mask or a mesh.
    bool loadOutputMaskFromUVIsland(Mesh* mesh, Image* mask, const Image* generated, int island, bool add);

    // The island under `cursor` (widget pixels, y down) in a view of
    // `viewSize`, or -1 over no triangle.
    int pickIsland(Mesh* mesh, const QMatrix4x4& combined, QSize viewSize, QPointF cursor);

    // The UV layout as a wireframe into the bound framebuffer: mint, and the
    // island `selectedIsland` pink when `islandSelection` is on.
    void drawUvLayout(Mesh* mesh, const QMatrix4x4& combined, bool islandSelection, int selectedIsland);

    // Frees the programs and framebuffers; the context they were made in
    // must be current.
    void releaseGL();

private:
    bool ensureInitialized();
    // Draws into `framebuffer` (w x h, cleared to 0) with `program` bound and
    // reads it back as RGBA bytes; the caller saves and restores its drawing
    // state around it. `setUniforms` runs with the program bound.
    template <class SetUniforms>
    std::unique_ptr<unsigned char[]> renderAndRead(QOpenGLFramebufferObject& framebuffer, QOpenGLShaderProgram& program,
                                                   Mesh& mesh, SetUniforms setUniforms);

    bool initialized = false;
    std::unique_ptr<QOpenGLShaderProgram> layoutProgram;
    std::unique_ptr<QOpenGLShaderProgram> islandMaskProgram;
    std::unique_ptr<QOpenGLShaderProgram> autoDirectionProgram;
    std::unique_ptr<QOpenGLFramebufferObject> autoDirectionFramebuffer;
    std::unique_ptr<QOpenGLFramebufferObject> islandFramebuffer;
    std::unique_ptr<QOpenGLFramebufferObject> pickingFramebuffer;
};
