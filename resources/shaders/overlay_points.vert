#version 150 core
in vec4 vertex;

void main()
{
    gl_Position = vertex;
}
