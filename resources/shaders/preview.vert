#version 120
attribute vec3 vertex;
attribute vec3 normal;
attribute vec3 texCoord;
attribute vec3 tangent;
attribute vec3 binormal;

uniform mat4 projMatrix;
uniform mat4 mvMatrix;
uniform mat4 mMatrix;
uniform mat3 mvITMatrix;
uniform mat3 mITMatrix;
uniform vec3 cameraPos;
uniform vec2 UVTiling;
uniform vec3 lightPos0;
uniform vec3 lightPos1;
uniform vec3 lightPos2;
uniform vec3 lightPos3;

varying vec3 viewNormal;
varying vec3 worldNormal;
varying vec3 viewVector;
varying vec3 worldViewVector;
varying vec2 vertCoord;
varying vec3 viewTangent;
varying vec3 viewBinormal;
varying vec3 worldTangent;
varying vec3 worldBinormal;
varying vec3 L0;
varying vec3 L1;
varying vec3 L2;
varying vec3 L3;

void main()
{
    vec4 viewPosition = mvMatrix * vec4(vertex, 1.0);
    vec4 worldPosition = mMatrix * vec4(vertex, 1.0);
    viewNormal = mvITMatrix * normal;
    worldNormal = mITMatrix * normal;
    viewTangent = mvITMatrix * tangent;
    viewBinormal = mvITMatrix * binormal;
    worldTangent = mITMatrix * tangent;
    worldBinormal = mITMatrix * binormal;
    // Both point from the surface to the camera.
    viewVector = -viewPosition.xyz;
    worldViewVector = cameraPos - worldPosition.xyz;
    vertCoord = texCoord.xy * UVTiling;
    // Lights are directions in view space: they move with the camera.
    L0 = lightPos0;
    L1 = lightPos1;
    L2 = lightPos2;
    L3 = lightPos3;
    gl_Position = projMatrix * viewPosition;
}
