#pragma once

#include "EnvironmentMap.h"
#include "Mesh.h"
#include "OrbitCamera.h"
#include "PreviewSettings.h"

#include "Image.h"

#include <QMatrix4x4>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>

#include <array>
#include <memory>
#include <optional>

class QOpenGLShaderProgram;
class QOpenGLTexture;

// The lit 3D preview: a surface's layers on a mesh under an environment map
// and one of the lighting presets. Mouse: left button orbits, middle pans,
// the wheel zooms.
class Preview3D : public QOpenGLWidget, protected QOpenGLFunctions
{
    Q_OBJECT
public:
    // Layer slots, in LayerMode order.
    enum LayerSlot
    {
        ColorLayer,
        NormalLayer,
        DisplacementLayer,
        RoughnessLayer,
        MetalnessLayer,
        OcclusionLayer,
        LayerSlotCount
    };

    explicit Preview3D(QWidget* parent = nullptr);
    ~Preview3D() override;

    const PreviewSettings& settings() const { return current; }
    void setSettings(const PreviewSettings& settings);
    OrbitCamera& camera() { return orbit; }
    void resetCamera();

    // Copies of the images are uploaded at the next frame; a null pointer
    // clears the slot.
    void setLayers(const std::array<const Image*, LayerSlotCount>& layers);
    void setEnvironment(const EnvironmentMap& environment);
    // The mesh drawn for choice 4 (the selected model record).
    void setModelMesh(const MeshData& mesh);
    void setModelTransform(const QMatrix4x4& transform);
    // The Bridge and Tree meshes, imported elsewhere.
    void setSampleMesh(int choice, const MeshData& mesh);

    // True once every shader program linked (for tests and the log).
    bool programsLinked() const;

signals:
    void cameraChanged();
    // The mesh drawn now, whenever it changes; null before the first frame
    // and when the context goes. Views that draw it in UV space share this
    // context's buffers and must not keep the pointer past the next signal.
    void ModelChanged(Mesh* mesh);

protected:
    void initializeGL() override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void releaseGL();
    void uploadPending();
    void drawBackground(const QMatrix4x4& projection, const QMatrix4x4& view);
    void drawMesh(const QMatrix4x4& projection, const QMatrix4x4& view);
    Mesh* meshOf(int choice) const;

    PreviewSettings current;
    OrbitCamera orbit;
    QMatrix4x4 modelTransform;
    QPoint lastMouse;

    std::array<std::optional<Image>, LayerSlotCount> pendingLayers;
    std::array<bool, LayerSlotCount> layerChanged{};
    std::array<bool, LayerSlotCount> hasLayer{};
    EnvironmentMap environment;
    // CPU copies of the meshes that are not built in, kept to upload again
    // when the context is recreated.
    std::array<std::optional<MeshData>, 7> pendingMeshes;
    std::array<bool, 7> meshUploaded{};

    bool glReady = false;
    Mesh* announcedMesh = nullptr;
    std::array<std::unique_ptr<Mesh>, 7> meshes;
    std::unique_ptr<Mesh> triangle;
    // [program class][tangent-space variant]
    std::array<std::array<QOpenGLShaderProgram*, 2>, programClassCount> programs{};
    QOpenGLShaderProgram* backgroundProgram = nullptr;
    std::array<QOpenGLTexture*, LayerSlotCount> layerTextures{};
    QOpenGLTexture* whiteTexture = nullptr;
    QOpenGLTexture* environmentTexture = nullptr;
};
