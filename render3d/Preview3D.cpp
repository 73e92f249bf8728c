#include "Preview3D.h"

#include "ShaderProgram.h"

#include <QMouseEvent>
#include <QOpenGLContext>
#include <QOpenGLShaderProgram>
#include <QOpenGLTexture>
#include <QWheelEvent>

#include <vector>

// Resources of a static library are registered by hand, outside any namespace.
static void initShaderResources()
{
    Q_INIT_RESOURCE(shaders);
}

namespace {

// RGBA floats of any Image format: grey is spread over RGB, alpha is 1 when
// the image has none.
std::vector<float> rgbaOf(const Image& image)
{
    const uint32_t channels = image.channels();
    std::vector<float> rgba(image.pixelCount() * 4, 1.0f);
    for (uint64_t i = 0; i < image.pixelCount(); ++i) {
        const float* p = image.data + i * channels;
        for (uint32_t c = 0; c < 3; ++c)
            rgba[i * 4 + c] = p[channels >= 3 ? c : 0];
        if (channels == 4)
            rgba[i * 4 + 3] = p[3];
    }
    return rgba;
}

QOpenGLTexture* makeTexture(int width, int height, const float* rgba, int mipLevels)
{
    auto* texture = new QOpenGLTexture(QOpenGLTexture::Target2D);
    texture->setSize(width, height);
    texture->setFormat(QOpenGLTexture::RGBA32F);
    texture->setMipLevels(mipLevels);
    texture->allocateStorage(QOpenGLTexture::RGBA, QOpenGLTexture::Float32);
    texture->setData(0, QOpenGLTexture::RGBA, QOpenGLTexture::Float32, rgba);
    texture->setWrapMode(QOpenGLTexture::Repeat);
    return texture;
}

// The shader reads normal maps as vectors; a colour image in the normal slot
// is mapped from [0, 1] to [-1, 1] first.
QOpenGLTexture* makeLayerTexture(const Image& image, bool normalMap)
{
    std::vector<float> rgba = rgbaOf(image);
    if (normalMap && image.format != Normal)
        for (size_t i = 0; i < rgba.size(); i += 4)
            for (size_t c = 0; c < 3; ++c)
                rgba[i + c] = rgba[i + c] * 2.0f - 1.0f;
    QOpenGLTexture* texture = makeTexture(int(image.width), int(image.height), rgba.data(), 1);
    texture->setMinMagFilters(QOpenGLTexture::Linear, QOpenGLTexture::Linear);
    return texture;
}

QOpenGLTexture* makeEnvironmentTexture(const EnvironmentMap& map)
{
    const EnvironmentLevel& top = map.levels[0];
    auto* texture = new QOpenGLTexture(QOpenGLTexture::Target2D);
    texture->setSize(int(top.width), int(top.height));
    texture->setFormat(QOpenGLTexture::RGB32F);
    texture->setMipLevels(environmentLevelCount);
    texture->allocateStorage(QOpenGLTexture::RGB, QOpenGLTexture::Float32);
    for (int k = 0; k < environmentLevelCount; ++k)
        texture->setData(k, QOpenGLTexture::RGB, QOpenGLTexture::Float32, map.levels[k].rgb.data());
    texture->setMipMaxLevel(environmentLevelCount - 1);
    texture->setMinMagFilters(QOpenGLTexture::LinearMipMapLinear, QOpenGLTexture::Linear);
    texture->setWrapMode(QOpenGLTexture::DirectionS, QOpenGLTexture::Repeat);
    texture->setWrapMode(QOpenGLTexture::DirectionT, QOpenGLTexture::ClampToEdge);
    return texture;
}

} // namespace

Preview3D::Preview3D(QWidget* parent)
    : QOpenGLWidget(parent)
{
    initShaderResources();
    setMinimumSize(200, 150);
    environment = plainEnvironment(0.5f, 0.5f, 0.5f);
}

Preview3D::~Preview3D()
{
    makeCurrent();
    releaseGL();
    doneCurrent();
}

void Preview3D::setSettings(const PreviewSettings& settings)
{
    current = settings;
    update();
}

void Preview3D::resetCamera()
{
    orbit.reset();
    emit cameraChanged();
    update();
}

void Preview3D::setLayers(const std::array<const Image*, LayerSlotCount>& layers)
{
    for (int slot = 0; slot < LayerSlotCount; ++slot) {
        const Image* image = layers[slot];
        if (image && !image->isEmpty())
            pendingLayers[slot] = *image;
        else
            pendingLayers[slot].reset();
        layerChanged[slot] = true;
        hasLayer[slot] = pendingLayers[slot].has_value();
    }
    update();
}

void Preview3D::setEnvironment(const EnvironmentMap& environment)
{
    if (environment.isEmpty())
        return;
    this->environment = environment;
    if (glReady) {
        makeCurrent();
        delete environmentTexture;
        environmentTexture = nullptr;
        doneCurrent();
    }
    update();
}

void Preview3D::setModelMesh(const MeshData& mesh)
{
    setSampleMesh(PreviewSettings::ModelMesh, mesh);
}

void Preview3D::setSampleMesh(int choice, const MeshData& mesh)
{
    if (choice < 0 || choice >= int(pendingMeshes.size()))
        return;
    pendingMeshes[choice] = mesh;
    meshUploaded[choice] = false;
    update();
}

void Preview3D::setModelTransform(const QMatrix4x4& transform)
{
    modelTransform = transform;
    update();
}

bool Preview3D::programsLinked() const
{
    if (!glReady || !backgroundProgram || !backgroundProgram->isLinked())
        return false;
    for (const auto& variants : programs)
        for (const QOpenGLShaderProgram* program : variants)
            if (!program || !program->isLinked())
                return false;
    return true;
}

void Preview3D::initializeGL()
{
    initializeOpenGLFunctions();
    // Docking elsewhere recreates the context: everything is made again then.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] {
        makeCurrent();
        releaseGL();
        doneCurrent();
    });

    meshes[PreviewSettings::CubeMesh] = std::make_unique<Mesh>(Mesh::Cube);
    meshes[PreviewSettings::SphereMesh] = std::make_unique<Mesh>(Mesh::Sphere);
    meshes[PreviewSettings::PlaneMesh] = std::make_unique<Mesh>(Mesh::Plane);
    meshes[PreviewSettings::CylinderMesh] = std::make_unique<Mesh>(Mesh::Cylinder);
    triangle = std::make_unique<Mesh>(Mesh::Triangle);

    const QString vertex = loadShaderSource(QStringLiteral(":/shaders/preview.vert"));
    const QString lit = loadShaderSource(QStringLiteral(":/shaders/preview.frag"));
    const QString unlit = loadShaderSource(QStringLiteral(":/shaders/unlit.frag"));
    for (int programClass = 0; programClass < programClassCount; ++programClass)
        for (int tangentSpace = 0; tangentSpace < 2; ++tangentSpace) {
            QStringList defines = lightDefinesOf(programClass);
            if (tangentSpace)
                defines << QStringLiteral("#define NEED_TANGENTSPACE\n");
            programs[programClass][tangentSpace] =
                buildShaderProgram(vertex, programClass == 0 ? unlit : lit, QString(), defines);
        }
    backgroundProgram = buildShaderProgram(loadShaderSource(QStringLiteral(":/shaders/background.vert")),
                                           loadShaderSource(QStringLiteral(":/shaders/background.frag")));

    const float white[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    whiteTexture = makeTexture(1, 1, white, 1);
    // Whatever was handed over before the context existed is uploaded now.
    for (int slot = 0; slot < LayerSlotCount; ++slot)
        layerChanged[slot] = true;
    glReady = true;
}

void Preview3D::releaseGL()
{
    if (!glReady)
        return;
    // Built-in shapes are remade in initializeGL, the others from their CPU
    // copies at the next frame.
    meshUploaded.fill(false);
    if (announcedMesh) {
        announcedMesh = nullptr;
        emit ModelChanged(nullptr);
    }
    for (auto& mesh : meshes)
        mesh.reset();
    triangle.reset();
    for (auto& variants : programs)
        for (QOpenGLShaderProgram*& program : variants) {
            delete program;
            program = nullptr;
        }
    delete backgroundProgram;
    backgroundProgram = nullptr;
    for (QOpenGLTexture*& texture : layerTextures) {
        delete texture;
        texture = nullptr;
    }
    delete whiteTexture;
    whiteTexture = nullptr;
    delete environmentTexture;
    environmentTexture = nullptr;
    glReady = false;
}

void Preview3D::uploadPending()
{
    for (int slot = 0; slot < LayerSlotCount; ++slot) {
        if (!layerChanged[slot])
            continue;
        delete layerTextures[slot];
        layerTextures[slot] = pendingLayers[slot] ? makeLayerTexture(*pendingLayers[slot], slot == NormalLayer) : nullptr;
        layerChanged[slot] = false;
    }
    if (!environmentTexture)
        environmentTexture = makeEnvironmentTexture(environment);
    for (size_t choice = 0; choice < pendingMeshes.size(); ++choice)
        if (pendingMeshes[choice] && !meshUploaded[choice]) {
            meshes[choice] = std::make_unique<Mesh>(*pendingMeshes[choice]);
            meshUploaded[choice] = true;
        }
}

Mesh* Preview3D::meshOf(int choice) const
{
    if (choice < 0 || choice >= int(meshes.size()))
        return nullptr;
    return meshes[choice].get();
}

void Preview3D::paintGL()
{
    if (!glReady)
        return;
    uploadPending();
    Mesh* shown = meshOf(current.mesh);
    if (shown != announcedMesh) {
        announcedMesh = shown;
        emit ModelChanged(shown);
    }
    const QVector3D& background = current.backgroundColor;
    glClearColor(background.x(), background.y(), background.z(), 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);

    const QMatrix4x4 projection = orbit.projectionMatrix(float(width()) / float(std::max(1, height())));
    const QMatrix4x4 view = orbit.viewMatrix();
    drawBackground(projection, view);
    drawMesh(projection, view);
}

void Preview3D::drawBackground(const QMatrix4x4& projection, const QMatrix4x4& view)
{
    glActiveTexture(GL_TEXTURE0);
    environmentTexture->bind();
    glDepthMask(GL_FALSE);
    backgroundProgram->bind();
    backgroundProgram->setUniformValue("viewprojMatrixI", (projection * view).inverted());
    backgroundProgram->setUniformValue("cameraPos", orbit.position());
    backgroundProgram->setUniformValue("backgroundColor", current.backgroundColor);
    if (current.environmentAsBackground) {
        backgroundProgram->setUniformValue("environmentScaler", 1.0f);
        backgroundProgram->setUniformValue("EnvMapScaler", current.environmentStrength);
    } else {
        backgroundProgram->setUniformValue("environmentScaler", 0.0f);
    }
    backgroundProgram->setUniformValue("EnvMap", 0);
    triangle->draw();
    backgroundProgram->release();
    glDepthMask(GL_TRUE);
}

void Preview3D::drawMesh(const QMatrix4x4& projection, const QMatrix4x4& view)
{
    Mesh* mesh = meshOf(current.mesh);
    if (!mesh)
        return;
    const bool normalMapShown = hasLayer[NormalLayer] && current.lightingMode != NoLighting;
    QOpenGLShaderProgram* program = programs[programClassOf(current.lightingMode)][normalMapShown ? 1 : 0];
    program->bind();

    const QMatrix4x4 modelView = view * modelTransform;
    program->setUniformValue("projMatrix", projection);
    program->setUniformValue("mvMatrix", modelView);
    program->setUniformValue("mMatrix", modelTransform);
    program->setUniformValue("mvITMatrix", modelView.normalMatrix());
    program->setUniformValue("mITMatrix", modelTransform.normalMatrix());
    program->setUniformValue("const_metalness", current.constMetalness);
    program->setUniformValue("const_roughness", current.constRoughness);
    program->setUniformValue("cameraPos", orbit.position());

    if (current.ambientMode == 2) {
        program->setUniformValue("ambientScaler", 0.0f);
        program->setUniformValue("envmapScaler", current.environmentStrength * current.ambientStrength);
    } else {
        program->setUniformValue("ambientScaler", current.ambientStrength);
        program->setUniformValue("envmapScaler", 0.0f);
        program->setUniformValue("ambientColor",
                                 current.ambientMode == 0 ? QVector3D(1, 1, 1) : current.backgroundColor);
    }

    const std::vector<PreviewLight> lights = lightsOf(current.lightingMode, current.lightStrength);
    for (size_t i = 0; i < lights.size(); ++i) {
        program->setUniformValue(QStringLiteral("lightPos%1").arg(i).toLatin1().constData(), lights[i].position);
        program->setUniformValue(QStringLiteral("LScale%1").arg(i).toLatin1().constData(), lights[i].scale);
    }

    auto bindLayer = [this, program](int unit, const char* name, int slot) {
        glActiveTexture(GLenum(GL_TEXTURE0 + unit));
        QOpenGLTexture* texture = layerTextures[slot] ? layerTextures[slot] : whiteTexture;
        texture->bind();
        program->setUniformValue(name, unit);
    };
    glActiveTexture(GL_TEXTURE1);
    environmentTexture->bind();
    program->setUniformValue("EnvMap", 1);
    bindLayer(0, "color_texture", ColorLayer);
    if (normalMapShown) {
        bindLayer(2, "normal_map", NormalLayer);
        program->setUniformValue("normalScale", current.normalScale);
    }
    const bool displaced = hasLayer[DisplacementLayer] && current.displacement;
    program->setUniformValue("useDisplacement", displaced ? 1 : 0);
    if (displaced) {
        bindLayer(3, "displacement_map", DisplacementLayer);
        program->setUniformValue("HEIGHT_SCALE", current.displacementStrength * 0.1f);
        program->setUniformValue("HEIGHT_BIAS", current.displacementStrength * -0.1f);
    }
    bindLayer(4, "AO_map", OcclusionLayer);
    bindLayer(5, "roughness_map", RoughnessLayer);
    program->setUniformValue("useRoughnessMap", hasLayer[RoughnessLayer] ? 1 : 0);
    bindLayer(6, "metalness_map", MetalnessLayer);
    program->setUniformValue("useMetalnessMap", hasLayer[MetalnessLayer] ? 1 : 0);
    program->setUniformValue("UVTiling", current.uvTiling);

    mesh->draw();
    program->release();
    glActiveTexture(GL_TEXTURE0);
}

void Preview3D::mousePressEvent(QMouseEvent* event)
{
    lastMouse = event->pos();
}

void Preview3D::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint delta = event->pos() - lastMouse;
    lastMouse = event->pos();
    if (event->buttons() & Qt::LeftButton)
        orbit.orbit(float(delta.x()), float(delta.y()));
    else if (event->buttons() & Qt::MiddleButton)
        orbit.pan(float(delta.x()), float(delta.y()), height());
    else
        return;
    emit cameraChanged();
    update();
}

void Preview3D::wheelEvent(QWheelEvent* event)
{
    orbit.zoom(float(event->angleDelta().y()) / 120.0f);
    emit cameraChanged();
    update();
}
