// SPDX-License-Identifier: MIT
// Proxies look like the final picture made small.
#include "tests/bridges/openfx/program.h"
#include "tests/bridges/openfx/support.h"

#include <cmath>
#include <map>

namespace openfx::test {
namespace {

/// Each pixel the mean of a square of pixels.
Plain madeSmall(const Plain& large, int factor) {
    Plain small(large.width / factor, large.height / factor, VireoDepth8, true);
    for (int y = 0; y < small.height; ++y) {
        for (int i = 0; i < 4 * small.width; ++i) {
            int sum = factor * factor / 2;
            for (int row = 0; row < factor; ++row) {
                for (int column = 0; column < factor; ++column)
                    sum += large.row(y * factor + row)[(i / 4 * factor + column) * 4 + i % 4];
            }
            small.row(y)[i] = static_cast<std::uint8_t>(sum / (factor * factor));
        }
    }
    return small;
}

const Plain& photographNamed(const std::string& name) {
    static std::map<std::string, Plain> read;
    const auto found = read.find(name);
    return found != read.end() ? found->second : read.emplace(name, Program::read(name)).first->second;
}

double psnr(const Plain& one, const Plain& other) {
    double squares = 0;
    for (std::size_t i = 0; i < one.bytes.size(); ++i) {
        const double distance = double(one.bytes[i]) - other.bytes[i];
        squares += distance * distance;
    }
    return squares == 0 ? 99 : 10 * std::log10(255.0 * 255 * static_cast<double>(one.bytes.size()) / squares);
}

/// Settings that show what a filter does, and what a proxy has to reach: where every pixel is decided for
/// itself, the mean of some is not what becomes of their mean.
struct Look {
    std::string key;
    std::map<std::string, double> settings;
    double least = 30;
};

const Look looks[] = {
    {"AlphaGlow", {{"Glow", 24}, {"Brightness", 200}}},
    {"Antialias", {}},
    {"Bend", {{"HorizontalRate", 9}, {"VerticalRate", 5}}},
    {"BlackAndWhite", {}},
    {"CameraBlur", {{"PercentBlur", 15}}},
    {"CameraView", {{"Longitude", 40}, {"Zoom", 130}}},
    {"ColorBalance", {{"Red", 300}, {"Blue", 190}}},
    {"ColorPass", {{"Similarity", 45}}},
    {"ColorReplace", {{"Similarity", 30}}},
    {"ConvolutionKernel", {{"M12", -1}, {"M21", -1}, {"M22", 7}, {"M23", -1}, {"M32", -1}, {"Scale", 3}}},
    {"EdgeFeather", {{"Amount", 25}}},
    {"Extract", {{"BlackInputLevel", 60}, {"WhiteInputLevel", 170}}, 20},
    {"GammaCorrection", {{"Gamma", 5}}},
    {"Ghosting", {}},
    {"HorizontalFlip", {}},
    {"HorizontalHold", {{"Offset", 20000}, {"EndStep", 90000}}},
    {"LensDistort", {{"Curvature", 60}}},
    {"Levels", {{"RGBGamma", 180}, {"RGBBlackInputLevel", 30}}},
    {"Replicate", {{"Count", 3}}},
    {"Solarize", {{"Threshold", 120}}, 20},
    {"VerticalFlip", {}},
    {"VerticalHold", {}},
};

std::ostream& operator<<(std::ostream& out, const Look& look) { return out << look.key; }

class OpenFxProxies : public OpenFx, public testing::WithParamInterface<Look> {};

TEST_P(OpenFxProxies, LookLikeTheFinalPicture) {
    TestHost host;
    DescribedPlugin plugin(pluginNamed(GetParam().key), host);
    TestInstance whole(plugin), proxy(plugin);
    for (const auto& [name, value] : GetParam().settings) {
        whole.set(name, {value, 0, 0});
        proxy.set(name, {value, 0, 0});
    }
    for (const char* photograph : {"fruit.jpg", "cutout.png"}) {
        const Plain& large = photographNamed(photograph);
        whole.setStill(large, 20);
        const Plain final = whole.rendered({.time = 13}, {});
        for (const int factor : {2, 4}) {
            proxy.setStill(madeSmall(large, factor), 20);
            const double scale = 1.0 / factor;
            const Plain result = proxy.rendered({.time = 13, .scaleX = scale, .scaleY = scale}, {});
            const double likeness = psnr(result, madeSmall(final, factor));
            EXPECT_GE(likeness, GetParam().least) << photograph << " at 1/" << factor;
            RecordProperty(std::string(photograph) + std::to_string(factor), std::to_string(likeness));
        }
    }
}

TEST(OpenFxProxyTable, HasEveryEffect) { EXPECT_EQ(std::size(looks), effectKeys().size()); }

INSTANTIATE_TEST_SUITE_P(Effects, OpenFxProxies, testing::ValuesIn(looks),
                         [](const auto& tested) { return tested.param.key; });

}  // namespace
}  // namespace openfx::test
