#version 120
// "No lighting": the colour layer as it is.
uniform sampler2D color_texture;
varying vec2 vertCoord;

void main()
{
    gl_FragColor = vec4(texture2D(color_texture, vertCoord).rgb, 1.0);
}
