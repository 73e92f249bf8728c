#include "LightingPreset.h"

QStringList lightingModeNames()
{
    return {QStringLiteral("No lighting"), QStringLiteral("Environment only"), QStringLiteral("Headlamp"),
            QStringLiteral("Rembrandt (2 light)"), QStringLiteral("Split lighting (2 light)"),
            QStringLiteral("Many light")};
}

int programClassOf(int lightingMode)
{
    switch (lightingMode) {
    case NoLighting: return 0;
    case EnvironmentOnly: return 1;
    case Headlamp: return 2;
    case Rembrandt:
    case SplitLighting: return 3;
    case ManyLight: return 4;
    }
    return 1;
}

QStringList lightDefinesOf(int programClass)
{
    const int lights = programClass == 2 ? 1 : programClass == 3 ? 2 : programClass == 4 ? 4 : 0;
    QStringList defines;
    for (int i = 0; i < lights; ++i)
        defines << QStringLiteral("#define LIGHT_%1\n").arg(i);
    return defines;
}

std::vector<PreviewLight> lightsOf(int lightingMode, float s)
{
    switch (lightingMode) {
    case Headlamp: return {{QVector3D(0, 0.5f, 1), s}};
    case Rembrandt: return {{QVector3D(1, 1, 1), s}, {QVector3D(-1, 1, 1), 0.5f * s}};
    case SplitLighting: return {{QVector3D(1, 0, 0), s}, {QVector3D(-1, 0, 0), 0.1f * s}};
    case ManyLight:
        return {{QVector3D(1, 0, 0.2f), 0.6f * s}, {QVector3D(-1, 0, 0.2f), 0.6f * s},
                {QVector3D(0, 1.2f, 1), 0.6f * s}, {QVector3D(0, -1.2f, 1), 0.6f * s}};
    }
    return {};
}
