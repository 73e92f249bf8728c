#version 120

void main()
{
    gl_FragColor = vec4(0.7, 0.8, 1.0, 1.0);
}
