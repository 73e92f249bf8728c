#version 120
// The single triangle covers the viewport; its positions are clip coordinates.
attribute vec3 vertex;
attribute vec3 normal;
attribute vec3 texCoord;
attribute vec3 tangent;
attribute vec3 binormal;

uniform mat4 viewprojMatrixI;
uniform vec3 cameraPos;
varying vec3 direction;

void main()
{
    vec4 far = viewprojMatrixI * vec4(vertex.xy, 1.0, 1.0);
    direction = far.xyz / far.w - cameraPos;
    gl_Position = vec4(vertex.xy, 0.999, 1.0);
}
