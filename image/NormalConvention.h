#pragma once

class Image;

// What a height field says about a normal map's X and Y signs. A normal map
// made from height h points along (-dh/dx, -dh/dy) with y up (row 0 is the
// bottom row); tools that write green pointing down negate Y. Correlating
// the map's X and Y with the height's negated slope gives +1 for a map in
// this convention and -1 for a flipped one.
struct NormalConvention
{
    bool decided = false; // both correlations clear enough to trust
    bool flipX = false;   // relative to the map's current values
    bool flipY = false;
    double correlationX = 0.0;
    double correlationY = 0.0;
};

// `normal` must be of format Normal; `height`'s first channel is the height,
// sampled at the corresponding position when the sizes differ. Undecided
// when either is empty or a correlation is weaker than minCorrelation.
NormalConvention detectNormalConvention(const Image& normal, const Image& height);

constexpr double minNormalCorrelation = 0.2;

// Reconverts `normal` (format Normal) so that its X and Y are negated where
// asked, keeping its flags consistent so that saving writes the original
// colours back.
void flipNormalLayer(Image& normal, bool flipX, bool flipY);
