#version 120
// drawMask 0: every covered texel gets red = island + 1 (at least 1).
// drawMask 1: white on the selected island only.
uniform int drawMask;
uniform int selIslandID;

varying float UVIsland;

void main()
{
    if (drawMask == 0) {
        gl_FragColor = vec4(UVIsland + 1.0, 0.0, 0.0, 1.0);
    } else {
        if (abs(UVIsland - float(selIslandID)) >= 0.5)
            discard;
        gl_FragColor = vec4(1.0, 1.0, 1.0, 1.0);
    }
}
