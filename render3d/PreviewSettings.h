#pragma once

#include "LightingPreset.h"

#include <QVector2D>
#include <QVector3D>

// What the 3D preview draws with, besides meshes, textures and the camera.
struct PreviewSettings
{
    enum MeshChoice
    {
        CubeMesh = 0,
        SphereMesh = 1,
        PlaneMesh = 2,
        CylinderMesh = 3,
        ModelMesh = 4,
        BridgeMesh = 5,
        TreeMesh = 6
    };

    QVector3D backgroundColor{0.2f, 0.2f, 0.22f};
    int lightingMode = Headlamp;
    // 0 white ambient, 1 background-coloured ambient, 2 the environment.
    int ambientMode = 2;
    float ambientStrength = 1.0f;
    float lightStrength = 1.0f;
    float environmentStrength = 1.0f;
    bool environmentAsBackground = true;
    float constMetalness = 0.0f;
    float constRoughness = 0.5f;
    float normalScale = 1.0f;
    bool displacement = false;
    float displacementStrength = 0.2f;
    QVector2D uvTiling{1.0f, 1.0f};
    int mesh = SphereMesh;
};
