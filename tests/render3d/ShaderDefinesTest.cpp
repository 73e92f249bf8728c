#include "LightingPreset.h"
#include "ShaderProgram.h"

#include <gtest/gtest.h>

TEST(ShaderDefines, GoRightAfterTheVersionLineOrAtTheStart)
{
    const QStringList defines = {"#define LIGHT_0\n", "#define NEED_TANGENTSPACE\n"};
    EXPECT_EQ(insertDefines("#version 120\nvoid main() {}\n", defines),
              "#version 120\n#define LIGHT_0\n#define NEED_TANGENTSPACE\nvoid main() {}\n");
    // Only the first line feed counts.
    EXPECT_EQ(insertDefines("#version 150\n\nx\n", {"#define A\n"}), "#version 150\n#define A\n\nx\n");
    EXPECT_EQ(insertDefines("void main() {}", defines), "#define LIGHT_0\n#define NEED_TANGENTSPACE\nvoid main() {}");
    EXPECT_EQ(insertDefines("#version 120\n", {}), "#version 120\n");
}

TEST(LightingPresets, ModesShareProgramsAndLightCountsAsDefined)
{
    EXPECT_EQ(lightingModeNames().at(3), "Rembrandt (2 light)");
    EXPECT_EQ(programClassOf(Rembrandt), programClassOf(SplitLighting));
    EXPECT_NE(programClassOf(NoLighting), programClassOf(EnvironmentOnly));
    for (int mode = 0; mode < LightingModeCount; ++mode)
        EXPECT_EQ(int(lightsOf(mode, 1.0f).size()), lightDefinesOf(programClassOf(mode)).size()) << mode;
    EXPECT_FLOAT_EQ(lightsOf(SplitLighting, 2.0f)[1].scale, 0.2f);
    EXPECT_EQ(lightsOf(ManyLight, 1.0f)[3].position, QVector3D(0, -1.2f, 1));
}
