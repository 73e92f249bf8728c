#include "OrbitCamera.h"

#include <algorithm>
#include <cmath>

void OrbitCamera::reset()
{
    *this = OrbitCamera();
}

void OrbitCamera::orbit(float dx, float dy)
{
    yaw -= dx * 0.4f;
    pitch = std::clamp(pitch + dy * 0.4f, -89.0f, 89.0f);
}

void OrbitCamera::zoom(float steps)
{
    distance = std::clamp(distance * std::pow(0.9f, steps), 1.05f, 20.0f);
}

void OrbitCamera::pan(float dx, float dy, int viewportHeight)
{
    const QMatrix4x4 view = viewMatrix();
    const QVector3D right(view(0, 0), view(0, 1), view(0, 2));
    const QVector3D up(view(1, 0), view(1, 1), view(1, 2));
    const float unitsPerPixel =
        2.0f * distance * std::tan(fieldOfView * 0.5f * 3.14159265f / 180.0f) / std::max(1, viewportHeight);
    target += (-dx * right + dy * up) * unitsPerPixel;
}

QVector3D OrbitCamera::position() const
{
    const float y = yaw * 3.14159265f / 180.0f, p = pitch * 3.14159265f / 180.0f;
    return target + distance * QVector3D(std::cos(p) * std::sin(y), std::sin(p), std::cos(p) * std::cos(y));
}

QMatrix4x4 OrbitCamera::viewMatrix() const
{
    QMatrix4x4 view;
    view.lookAt(position(), target, QVector3D(0, 1, 0));
    return view;
}

QMatrix4x4 OrbitCamera::projectionMatrix(float aspect) const
{
    // In a tall view the field of view holds horizontally, so the model fits.
    float vertical = fieldOfView;
    if (aspect > 0.0f && aspect < 1.0f)
        vertical = 2.0f * std::atan(std::tan(fieldOfView * 0.5f * 3.14159265f / 180.0f) / aspect) * 180.0f / 3.14159265f;
    QMatrix4x4 projection;
    projection.perspective(vertical, aspect, 0.05f, 100.0f);
    return projection;
}
