#include "UvSpaceRenderer.h"

#include "Image.h"
#include "IslandMask.h"
#include "Mesh.h"
#include "ShaderProgram.h"

#include <QMatrix4x4>
#include <QOpenGLFramebufferObject>
#include <QOpenGLShaderProgram>

#ifndef GL_R32F
#define GL_R32F 0x822E
#endif
#ifndef GL_RED
#define GL_RED 0x1903
#endif

namespace {

// The shaders multiply the vector on the left of "MVP"; the transpose turns
// Qt's column-vector matrix into that form.
void setMvp(QOpenGLShaderProgram& program, const QMatrix4x4& combined)
{
    program.setUniformValue("MVP", combined.transposed());
}

// Saves the state these passes change and puts it back on leaving.
class SavedDrawState
{
public:
    explicit SavedDrawState(QOpenGLFunctions& gl) : gl(gl)
    {
        gl.glGetIntegerv(GL_VIEWPORT, viewport);
        gl.glGetIntegerv(GL_FRAMEBUFFER_BINDING, &framebuffer);
        gl.glGetFloatv(GL_COLOR_CLEAR_VALUE, clearColour);
        blend = gl.glIsEnabled(GL_BLEND);
        cull = gl.glIsEnabled(GL_CULL_FACE);
        depth = gl.glIsEnabled(GL_DEPTH_TEST);
        gl.glDisable(GL_BLEND);
        gl.glDisable(GL_CULL_FACE);
        gl.glDisable(GL_DEPTH_TEST);
    }
    ~SavedDrawState()
    {
        // Releasing a framebuffer object binds the context's default one,
        // which need not be the one the caller drew into.
        gl.glBindFramebuffer(GL_FRAMEBUFFER, GLuint(framebuffer));
        gl.glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
        gl.glClearColor(clearColour[0], clearColour[1], clearColour[2], clearColour[3]);
        if (blend)
            gl.glEnable(GL_BLEND);
        if (cull)
            gl.glEnable(GL_CULL_FACE);
        if (depth)
            gl.glEnable(GL_DEPTH_TEST);
    }

private:
    QOpenGLFunctions& gl;
    GLint viewport[4] = {0, 0, 0, 0};
    GLint framebuffer = 0;
    GLfloat clearColour[4] = {0, 0, 0, 0};
    GLboolean blend = GL_FALSE, cull = GL_FALSE, depth = GL_FALSE;
};

// Keeps `framebuffer` when it has the size, otherwise makes a new one.
void ensureFramebuffer(std::unique_ptr<QOpenGLFramebufferObject>& framebuffer, int width, int height)
{
    if (framebuffer && framebuffer->size() != QSize(width, height))
        framebuffer.reset();
    if (!framebuffer)
        framebuffer = std::make_unique<QOpenGLFramebufferObject>(width, height, QOpenGLFramebufferObject::NoAttachment,
                                                                 GL_TEXTURE_2D, GL_RGBA);
}

} // namespace

// Resources of a static library are registered by hand, outside any namespace.
static void initUvShaderResources()
{
    Q_INIT_RESOURCE(uvshaders);
}

UvSpaceRenderer::UvSpaceRenderer()
{
    initUvShaderResources();
}

UvSpaceRenderer::~UvSpaceRenderer() = default;

bool UvSpaceRenderer::ensureInitialized()
{
    if (initialized)
        return true;
    if (QOpenGLContext::currentContext() == nullptr)
        return false;
    initializeOpenGLFunctions();
    const QString vertex = loadShaderSource(":/shaders/uvspace.vert");
    layoutProgram.reset(buildShaderProgram(vertex, loadShaderSource(":/shaders/uvlayout.frag")));
    islandMaskProgram.reset(buildShaderProgram(vertex, loadShaderSource(":/shaders/islandmask.frag")));
    autoDirectionProgram.reset(buildShaderProgram(vertex, loadShaderSource(":/shaders/autodirection.frag")));
    initialized = true;
    return true;
}

void UvSpaceRenderer::releaseGL()
{
    layoutProgram.reset();
    islandMaskProgram.reset();
    autoDirectionProgram.reset();
    autoDirectionFramebuffer.reset();
    islandFramebuffer.reset();
    pickingFramebuffer.reset();
    initialized = false;
}

template <class SetUniforms>
std::unique_ptr<unsigned char[]> UvSpaceRenderer::renderAndRead(QOpenGLFramebufferObject& framebuffer,
                                                                QOpenGLShaderProgram& program, Mesh& mesh,
                                                                SetUniforms setUniforms)
{
    const int w = framebuffer.width(), h = framebuffer.height();
    framebuffer.bind();
    glViewport(0, 0, w, h);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    program.bind();
    setMvp(program, QMatrix4x4());
    setUniforms(program);
    mesh.drawBuffer(*this);
    program.release();
    std::unique_ptr<unsigned char[]> pixels(new unsigned char[size_t(w) * h * 4]);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, w, h, GL_RGBA, GL_UNSIGNED_BYTE, pixels.get());
    framebuffer.release();
    return pixels;
}

bool UvSpaceRenderer::generateAutoDirection(Mesh* mesh, Image* directionMap, int autoMode)
{
    if (mesh == nullptr || directionMap == nullptr || directionMap->isEmpty() || directionMap->channels() < 2)
        return false;
    if (!ensureInitialized())
        return false;
    // Saved before a framebuffer is made: making one may rebind.
    SavedDrawState saved(*this);
    const int w = int(directionMap->width), h = int(directionMap->height);
    ensureFramebuffer(autoDirectionFramebuffer, w, h);
    if (!autoDirectionFramebuffer->isValid())
        return false;
    const std::unique_ptr<unsigned char[]> pixels =
        renderAndRead(*autoDirectionFramebuffer, *autoDirectionProgram, *mesh,
                      [autoMode](QOpenGLShaderProgram& program) { program.setUniformValue("AutoMode", autoMode); });

    // Uncovered texels read (0, 0) and so become (-1, -1).
    const uint32_t channels = directionMap->channels();
    for (int x = 0; x < w; ++x)
        for (int y = 0; y < h; ++y) {
            const unsigned char* texel = pixels.get() + 4 * (size_t(y) * w + x);
            float* out = directionMap->data + channels * (size_t(y) * w + x);
            out[0] = float(texel[0] / 255.0 * 2.0 - 1.0);
            out[1] = float(texel[1] / 255.0 * 2.0 - 1.0);
        }
    return true;
}

bool UvSpaceRenderer::loadOutputMaskFromUVIsland(Mesh* mesh, Image* mask, const Image* generated, int island, bool add)
{
    if (mesh == nullptr || mask == nullptr || mask->isEmpty())
        return false;
    if (!ensureInitialized())
        return false;
    if (generated != nullptr && !generated->isEmpty()) {
        const uint32_t side = islandMaskSide(generated->width, generated->height);
        if (mask->width != side && mask->height != side) {
            const PixelFormat format = mask->format;
            mask->resample(side, side);
            mask->format = format;
        }
    }
    if (mask->isEmpty())
        return false;
    // A framebuffer of another size than the mask would be read outside its
    // bounds, so any difference makes a new one.
    SavedDrawState saved(*this);
    ensureFramebuffer(islandFramebuffer, int(mask->width), int(mask->height));
    if (!islandFramebuffer->isValid())
        return false;
    const std::unique_ptr<unsigned char[]> pixels =
        renderAndRead(*islandFramebuffer, *islandMaskProgram, *mesh, [island](QOpenGLShaderProgram& program) {
            program.setUniformValue("drawMask", island < 0 ? 0 : 1);
            program.setUniformValue("selIslandID", island);
        });
    writeIslandMask(pixels.get(), *mask, add);
    return true;
}

int UvSpaceRenderer::pickIsland(Mesh* mesh, const QMatrix4x4& combined, QSize viewSize, QPointF cursor)
{
    if (mesh == nullptr || viewSize.isEmpty() || !ensureInitialized())
        return -1;
    SavedDrawState saved(*this);
    // Only a change of both sides makes a new buffer; a view resized along
    // one axis keeps the old one.
    if (pickingFramebuffer && pickingFramebuffer->width() != viewSize.width() &&
        pickingFramebuffer->height() != viewSize.height())
        pickingFramebuffer.reset();
    if (!pickingFramebuffer)
        pickingFramebuffer = std::make_unique<QOpenGLFramebufferObject>(
            viewSize, QOpenGLFramebufferObject::NoAttachment, GL_TEXTURE_2D, GL_R32F);
    if (!pickingFramebuffer->isValid())
        return -1;

    // The cursor counts from the top, the framebuffer from the bottom.
    const int x = int(cursor.x()), y = viewSize.height() - 1 - int(cursor.y());
    if (cursor.x() < 0 || cursor.y() < 0 || x >= pickingFramebuffer->width() || y < 0 ||
        y >= pickingFramebuffer->height())
        return -1;

    float value = 0.0f;
    pickingFramebuffer->bind();
    glViewport(0, 0, pickingFramebuffer->width(), pickingFramebuffer->height());
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    islandMaskProgram->bind();
    setMvp(*islandMaskProgram, combined);
    islandMaskProgram->setUniformValue("drawMask", 0);
    mesh->drawBuffer(*this);
    islandMaskProgram->release();
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(x, y, 1, 1, GL_RED, GL_FLOAT, &value);
    pickingFramebuffer->release();
    return int(value - 1.0f);
}

void UvSpaceRenderer::drawUvLayout(Mesh* mesh, const QMatrix4x4& combined, bool islandSelection, int selectedIsland)
{
    if (mesh == nullptr || !ensureInitialized())
        return;
    // Polygon mode is desktop OpenGL only, outside QOpenGLFunctions.
    QOpenGLContext* context = QOpenGLContext::currentContext();
    using PolygonMode = void(QOPENGLF_APIENTRYP)(GLenum, GLenum);
    auto polygonMode = reinterpret_cast<PolygonMode>(context->getProcAddress("glPolygonMode"));
    if (polygonMode)
        polygonMode(GL_FRONT_AND_BACK, 0x1B01 /* GL_LINE */);
    layoutProgram->bind();
    setMvp(*layoutProgram, combined);
    layoutProgram->setUniformValue("islandSelection", islandSelection ? 1 : 0);
    layoutProgram->setUniformValue("selIslandID", selectedIsland);
    mesh->drawBuffer(*this);
    layoutProgram->release();
    if (polygonMode)
        polygonMode(GL_FRONT_AND_BACK, 0x1B02 /* GL_FILL */);
}
