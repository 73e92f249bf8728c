#version 120
// A direction per texel from the geometry: a projection of the normal
// (modes 0 to 2) or the way a world coordinate grows across the UV layout
// (modes 3 to 5). The y component is stored negated.
uniform int AutoMode;

varying vec3 GeometryPosition;
varying vec3 GeometryNormal;

void main()
{
    vec3 N = GeometryNormal;
    vec3 P = GeometryPosition;
    // Derivatives outside the branches, where control flow is uniform.
    vec3 dx = dFdx(P);
    vec3 dy = dFdy(P);

    gl_FragColor = vec4(0.0, 0.0, 0.0, 0.0);
    vec2 d = vec2(0.0, 0.0);
    bool known = true;
    if (AutoMode == 0)
        d = normalize(N.yz);
    else if (AutoMode == 1)
        d = normalize(N.xz);
    else if (AutoMode == 2)
        d = normalize(N.xy);
    else if (AutoMode == 3)
        d = normalize(vec2(dx.x, -dy.x));
    else if (AutoMode == 4)
        d = normalize(vec2(dx.y, -dy.y));
    else if (AutoMode == 5)
        d = normalize(vec2(dx.z, -dy.z));
    else
        known = false;
    if (known)
        gl_FragColor = vec4(d * vec2(0.5, -0.5) + vec2(0.5, 0.5), 0.0, 1.0);
}
