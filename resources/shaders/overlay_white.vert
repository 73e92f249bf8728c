#version 120
attribute vec4 vertex;
uniform mat4 MVP;

void main()
{
    gl_Position = vertex * MVP;
}
