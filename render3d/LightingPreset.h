#pragma once

#include <QStringList>
#include <QVector3D>

#include <vector>

// The six lighting modes of the 3D preview: their combo texts, the light
// defines their programs are built with, and their lights. Light positions
// are directions in view space, so the lights move with the camera.
struct PreviewLight
{
    QVector3D position;
    float scale = 0.0f;
};

enum LightingMode : int
{
    NoLighting = 0,
    EnvironmentOnly = 1,
    Headlamp = 2,
    Rembrandt = 3,
    SplitLighting = 4,
    ManyLight = 5,
    LightingModeCount = 6
};

QStringList lightingModeNames();
// Modes 3 and 4 share one program; mode 0 has a program of its own.
int programClassOf(int lightingMode);
constexpr int programClassCount = 5;
QStringList lightDefinesOf(int programClass);
std::vector<PreviewLight> lightsOf(int lightingMode, float lightStrength);
