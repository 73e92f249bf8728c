#pragma once

#include <QMatrix4x4>
#include <QVector3D>

// A camera circling a target: yaw and pitch in degrees, distance, and a
// target moved by panning. Plain math, driven by the preview's mouse events.
class OrbitCamera
{
public:
    void reset();
    // Pixels dragged; 0.4 degrees per pixel.
    void orbit(float dx, float dy);
    // Wheel steps; positive moves closer.
    void zoom(float steps);
    // Pixels dragged with the given viewport height: the target follows the cursor.
    void pan(float dx, float dy, int viewportHeight);

    QVector3D position() const;
    QMatrix4x4 viewMatrix() const;
    QMatrix4x4 projectionMatrix(float aspect) const;

    float yaw = 30.0f;
    float pitch = 20.0f;
    float distance = 3.4f;
    float fieldOfView = 45.0f;
    QVector3D target;
};
