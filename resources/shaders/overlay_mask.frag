#version 150 core
uniform sampler2D maskImage;
in vec2 UV;
out vec4 fragColour;

void main()
{
    float m = texture(maskImage, UV).r > 0.5 ? 0.25 : 0.75;
    fragColour = vec4(0.5, 0.0, 1.0, m);
}
