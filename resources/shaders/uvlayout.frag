#version 120
// The UV layout wireframe: mint, the selected island pink.
uniform int islandSelection;
uniform int selIslandID;

varying float UVIsland;

void main()
{
    if (islandSelection != 0 && abs(UVIsland - float(selIslandID)) < 0.5)
        gl_FragColor = vec4(1.0, 0.7, 1.0, 1.0);
    else
        gl_FragColor = vec4(0.61, 0.9, 0.82, 1.0);
}
