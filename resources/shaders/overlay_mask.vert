#version 150 core
in vec4 vertex;
uniform mat4 MVP;
out vec2 UV;

void main()
{
    UV = vertex.xy * 0.5 + 0.5;
    gl_Position = vertex * MVP;
}
