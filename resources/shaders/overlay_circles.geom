#version 150 core
layout(points) in;
layout(triangle_strip, max_vertices = 64) out;
uniform sampler2D scaleMap;
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
    float radius = texture(scaleMap, coord).x * scaler * 0.03;
    float lineWidth = 0.008 * scaler;
    for (int i = 0; i <= 30; ++i) {
        float angle = float(i) * 6.28 / 31.0;
        vec2 direction = vec2(cos(angle), sin(angle));
        emit(M + direction * (radius + lineWidth));
        emit(M + direction * radius);
    }
    emit(M + vec2(1.0, 0.0) * (radius + lineWidth));
    emit(M + vec2(1.0, 0.0) * radius);
    EndPrimitive();
}
