#version 150 core
layout(points) in;
layout(triangle_strip, max_vertices = 16) out;
uniform sampler2D dirMap;
uniform mat4 MVP;
uniform float scaler;

void emit(vec2 p)
{
    gl_Position = vec4(p, 0.0, 1.0) * MVP;
    EmitVertex();
}

void main()
{
    vec2 coord = gl_in[0].gl_Position.xy;
    vec2 M = coord * 2.0 - 1.0;
    vec2 Dir = texture(dirMap, coord).xy;
    vec2 DirP = vec2(-Dir.y, Dir.x);
    vec2 tip = Dir * 0.08 * scaler;

    emit(M - DirP * 0.003 * scaler);
    emit(M + DirP * 0.003 * scaler);
    emit(M - DirP * 0.003 * scaler + tip);
    emit(M + DirP * 0.003 * scaler + tip);
    EndPrimitive();

    emit(M - DirP * 0.01 * scaler + tip);
    emit(M + DirP * 0.01 * scaler + tip);
    emit(M + Dir * 0.04 * scaler + tip);
    EndPrimitive();
}
