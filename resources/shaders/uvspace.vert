// Draws a mesh in UV space: texCoord.xy spread over clip space, the island
// number and the geometry passed on for the fragment programs.
attribute vec3 vertex;
attribute vec3 normal;
attribute vec3 texCoord;
attribute vec3 tangent;
attribute vec3 binormal;

uniform mat4 MVP;

varying float UVIsland;
varying vec3 GeometryPosition;
varying vec3 GeometryNormal;

void main()
{
    UVIsland = texCoord.z;
    GeometryPosition = vertex.xyz;
    GeometryNormal = normal;
    gl_Position = vec4(texCoord.xy * 2.0 - vec2(1.0, 1.0), 0.0, 1.0) * MVP;
}
