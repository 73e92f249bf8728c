#pragma once

class LayeredImage;

namespace Velmor {

// The least error one ring pixel can add during a run, for stopping
// candidate evaluations early without changing their outcome: 0 when only
// non-negative errors can occur, a small slack per compared Normal layer
// (1 - dot of two unit normals can fall a little below 0 by rounding), and
// negative when no floor is certain: non-finite source values, normals that
// may blend to zero length or stop being unit vectors once rotated or scaled
// (`guided`), or a target that starts with content of its own (`startFilled`).
double ringErrorFloor(const LayeredImage& source, bool useAllLayers, bool guided, bool startFilled);

} // namespace Velmor
