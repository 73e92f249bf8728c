#version 120
#extension GL_ARB_shader_texture_lod : require

uniform sampler2D EnvMap;
uniform vec3 backgroundColor;
uniform float environmentScaler;
uniform float EnvMapScaler;
varying vec3 direction;

vec2 envCoord(vec3 D)
{
    return vec2(atan(D.z, D.x) / 3.14 / 2.0 + 0.5, asin(clamp(D.y, -1.0, 1.0)) / 3.14 + 0.5);
}

void main()
{
    vec3 D = normalize(direction);
    // Encoded like the reflections on the mesh.
    vec3 environment = pow(texture2DLod(EnvMap, envCoord(D), 0.0).rgb * EnvMapScaler, vec3(0.45));
    gl_FragColor = vec4(mix(backgroundColor, environment, environmentScaler), 1.0);
}
