#pragma once

namespace Velmor {

// The names of the two synthesis methods: what methodName() returns, the
// "Type" of a surface record, and what the parameter panels show.
inline constexpr const char* blendedMethodName = "Patch Based Blended";
inline constexpr const char* cutoutMethodName = "Patch Based Cutout";

} // namespace Velmor
