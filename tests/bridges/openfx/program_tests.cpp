// SPDX-License-Identifier: MIT
// The effects' pixels are those of `vireo render`, to the byte.
#include "tests/bridges/openfx/program.h"
#include "tests/bridges/openfx/support.h"

#include <cstring>

namespace openfx::test {
namespace {

class OpenFxBesideTheProgram : public OpenFx, public testing::WithParamInterface<std::string> {};

TEST_P(OpenFxBesideTheProgram, RendersTheSameBytes) {
    TestHost host;
    DescribedPlugin plugin(pluginNamed(GetParam()), host);
    TestInstance instance(plugin);
    Reference reference(plugin.plugin);
    for (const VireoDepth depth : {VireoDepth8, VireoDepth16}) {
        std::vector<Plain> clip;
        for (std::uint32_t i = 0; i < 10; ++i) clip.push_back(noise(43, 31, i, depth));
        reference.setAtRandom(instance, depth);
        instance.setSource(clip, {.x = 1, .y = 2});
        const std::vector<Plain> expected = Program::render(clip, reference.text());
        for (std::size_t frame = 0; frame < clip.size(); ++frame) {
            const Plain rendered = instance.rendered({.time = static_cast<double>(frame)}, {.x = 1, .y = 2});
            if (depth == VireoDepth8) {
                ASSERT_EQ(rendered, expected[frame]) << reference.text() << ", frame " << frame;
                continue;
            }
            for (std::size_t i = 0; i < expected[frame].bytes.size(); ++i) {
                std::uint16_t sample = 0;
                std::memcpy(&sample, &rendered.bytes[2 * i], sizeof sample);
                // The program writes 8 bits: of what was rendered in 16 the nearest.
                ASSERT_EQ((sample * 255 + 32767) / 65535, expected[frame].bytes[i]) << reference.text();
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Effects, OpenFxBesideTheProgram, testing::ValuesIn(effectKeys()),
                         [](const auto& tested) { return tested.param; });

}  // namespace
}  // namespace openfx::test
