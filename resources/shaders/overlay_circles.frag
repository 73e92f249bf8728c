#version 120

void main()
{
    gl_FragColor = vec4(1.0, 0.42, 0.42, 1.0);
}
