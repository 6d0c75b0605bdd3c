// SPDX-License-Identifier: MIT
// What resources/filters.toml declares of every filter, proved by what the filter renders: each trait holds
// where it is declared and is missing where it is not.
#include "host/hosting/filter_traits.h"

#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/hosting/parameter_value.h"
#include "host/pixkit/pixkit.h"
#include "tests/support/test_frame.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

namespace {

int upTo(int largest, Random& random) { return std::uniform_int_distribution(0, largest)(random); }

struct Size {
    int width;
    int height;
};

Picture noise(Size size, Random& random) { return ::noise(size.width, size.height, random); }

Picture rowsOf(Picture picture, int begin, int end) {
    Picture part{picture.width, end - begin};
    std::copy(picture.row(begin), picture.row(end), part.row(0));
    return part;
}

/// Transparent but for one row.
Picture lonelyRow(Size size, int row, Random& random) {
    Picture picture{size.width, size.height};
    std::generate_n(picture.row(row), size.width, [&] { return random() | 0xFF000000; });
    return picture;
}

/// How a host lays out its frames.
struct Layout {
    bool fromTheTop = false;
    int padding = 0;  ///< Pixels behind each row.

    TestFrame frame(const Picture& picture) const {
        return TestFrame({.width = picture.width,
                          .height = picture.height,
                          .padding = 4 * padding,
                          .negativeRowBytes = fromTheTop},
                         picture);
    }
};

/// A moment of a clip whose frames all differ.
struct Moment {
    std::uint32_t frame = 3;
    std::uint32_t frames = 10;  ///< 0: unknown.
    std::uint16_t fieldFlags = 0;

    std::uint32_t time() const { return 2 * frame + (fieldFlags == FieldFlagLower ? 1 : 0); }
};

Moment momentAtRandom(Random& random) {
    constexpr std::uint16_t fields[] = {0, FieldFlagUpper, FieldFlagLower};
    const auto frames = static_cast<std::uint32_t>(1 + upTo(60, random));
    return {static_cast<std::uint32_t>(upTo(static_cast<int>(frames) - 1, random)), frames,
            fields[upTo(2, random)]};
}

/// The source at other frames, and which of them were asked for.
struct Clip {
    const Picture& now;
    Layout layout;
    std::uint32_t frame;
    std::uint32_t earliest = frame;
    std::uint32_t latest = frame;

    static std::int32_t get(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds, void* data) {
        auto& clip = *static_cast<Clip*>(data);
        const std::uint32_t frame = time / 2;
        clip.earliest = std::min(clip.earliest, frame);
        clip.latest = std::max(clip.latest, frame);
        Picture other = clip.now;
        for (std::uint32_t& pixel : other.pixels) pixel ^= (clip.frame - frame) * 0x9E3779B1;
        TestFrame source = clip.layout.frame(other);
        vpixCopy(source.handle(), target, &source.handle()->bounds, bounds, VPixCopyReplace);
        return 0;
    }
};

struct Rendered {
    Picture picture;
    std::uint32_t lookedBack;  ///< Frames.
    bool lookedAhead;
    bool gapsHold;
};

/// `unfilled`: what the destination holds where the host does not fill it.
Rendered render(const hosting::FilterInstance& instance, const Picture& source, const Moment& moment = {},
                const Layout& layout = {}, const Picture* unfilled = nullptr) {
    TestFrame from = layout.frame(source);
    TestFrame to = layout.frame(unfilled != nullptr ? *unfilled : Picture{source.width, source.height});
    Clip clip{source, layout, moment.frame};
    EXPECT_EQ(instance.render({.source = from.handle(),
                               .destination = to.handle(),
                               .time = moment.time(),
                               .duration = 2 * moment.frames,
                               .fieldFlags = moment.fieldFlags,
                               .getFrame = Clip::get,
                               .getFrameData = &clip,
                               .isFilled = unfilled == nullptr}),
              0);
    return {to.picture(), moment.frame - clip.earliest, clip.latest > moment.frame, bool{to.guardsHold()}};
}

std::int64_t valueAtRandom(const hosting::Parameter& parameter, Random& random) {
    const hosting::ValueRange range = hosting::valueRange(parameter);
    return std::uniform_int_distribution(range.minimum, range.maximum)(random);
}

std::int64_t anyEnd(const hosting::Parameter& parameter, Random& random) {
    const hosting::ValueRange range = hosting::valueRange(parameter);
    return upTo(1, random) == 0 ? range.minimum : range.maximum;
}

void setAll(const hosting::Filter& filter, const hosting::FilterInstance& instance, Random& random,
            std::int64_t (*value)(const hosting::Parameter&, Random&)) {
    for (const hosting::Parameter& parameter : filter.properties.parameters) {
        hosting::writeValue(parameter, value(parameter, random), instance.settings());
    }
}

/// Calls `round(instance, number)` with the start values at first, then with numbers from the whole range and
/// from its ends, and counts how often it answers true.
template <class Round>
int countRounds(int rounds, const hosting::Filter& filter, Random& random, Round&& round) {
    const hosting::FilterInstance instance = hosting::newInstance(filter);
    int count = 0;
    for (int number = 0; number < rounds; ++number) {
        if (number > 0) setAll(filter, instance, random, number % 2 == 0 ? anyEnd : valueAtRandom);
        if (round(instance, number)) ++count;
    }
    return count;
}

/// Every filter of the module with its traits.
class Traits : public testing::Test {
protected:
    template <class Test>
    void forEachFilter(Test&& test) {
        for (const hosting::Filter& filter : module_.filters()) {
            SCOPED_TRACE(filter.properties.name);
            Random random(7);
            test(filter, hosting::filterTraits(filter.properties.matchName), random);
        }
    }

    const hosting::MetaPlugin module_{VIREO_TESTED_MODULE};
};

TEST_F(Traits, AreKnownOfEveryFilter) {
    std::set<std::string_view> files;
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random&) {
        EXPECT_EQ(traits.id, filter.id);
        EXPECT_EQ(traits.matchName, filter.properties.matchName);
        EXPECT_EQ(traits.fileName.find_first_not_of("abcdefghijklmnopqrstuvwxyz_"), std::string_view::npos);
        EXPECT_TRUE(files.insert(traits.fileName).second) << traits.fileName;
    });
    EXPECT_EQ(files.size(), 22U);
}

TEST_F(Traits, OfUnknownFiltersAreSafeForAll) {
    for (const char* name : {"of another module", "", "QULN"}) {
        const hosting::FilterTraits& unknown = hosting::filterTraits(name);
        EXPECT_TRUE(unknown.readsTime && !unknown.takesRowsFromTheTop && !unknown.neighbourRows &&
                    unknown.touchesGaps)
            << name;
        EXPECT_TRUE(unknown.identity.empty() && unknown.parameters.empty()) << name;
        EXPECT_TRUE(unknown.id == 0 && unknown.fileName.empty()) << name;
        forEachFilter([&](const hosting::Filter&, const hosting::FilterTraits& traits, Random&) {
            EXPECT_LE(traits.earlierFrames, unknown.earlierFrames);
        });
    }
}

TEST_F(Traits, SayWhetherThePictureChangesWithTime) {
    constexpr Moment moments[] = {{0, 0}, {1, 0}, {7, 0}, {0, 40}, {1, 40}, {7, 40}, {7, 41}, {39, 40}};
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        const int changed = countRounds(30, filter, random, [&](const auto& instance, int) {
            const Picture source = noise({37, 23}, random);
            const Picture first = render(instance, source, moments[0]).picture;
            return std::ranges::any_of(moments, [&](const Moment& moment) {
                return render(instance, source, moment).picture != first;
            });
        });
        EXPECT_EQ(changed > 0, traits.readsTime) << changed;
    });
}

TEST_F(Traits, SayHowFarBackTheFilterLooks) {
    constexpr std::uint32_t farInside = 1 << 20;
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        std::uint32_t furthest = 0;
        const int ahead = countRounds(30, filter, random, [&](const auto& instance, int) {
            const Picture source = noise({16, 16}, random);
            bool lookedAhead = false;
            for (const std::uint32_t frame : {farInside, 0U, 1U, 5U}) {
                for (const std::uint16_t fields : {0, int{FieldFlagUpper}, int{FieldFlagLower}}) {
                    const Rendered rendered = render(instance, source, {frame, 2 * farInside, fields});
                    furthest = std::max(furthest, rendered.lookedBack);
                    lookedAhead |= rendered.lookedAhead;
                }
            }
            return lookedAhead;
        });
        EXPECT_EQ(ahead, 0);
        EXPECT_EQ(furthest, static_cast<std::uint32_t>(traits.earlierFrames));
    });
}

constexpr Size oddSizes[] = {{37, 23}, {64, 32}, {1, 1}, {2, 9}, {130, 7}, {5, 231}};

TEST_F(Traits, SayWhetherRowsMayLieFromTheTop) {
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        const int different = countRounds(100, filter, random, [&](const auto& instance, int round) {
            const Picture source = noise(oddSizes[round % std::size(oddSizes)], random);
            const Moment moment = momentAtRandom(random);
            const int padding = upTo(1, random) * upTo(20, random);
            const Picture expected = render(instance, source, moment).picture;
            EXPECT_EQ(render(instance, source, moment, {false, padding}).picture, expected) << padding;
            return render(instance, source, moment, {true, padding}).picture != expected;
        });
        EXPECT_EQ(different == 0, traits.takesRowsFromTheTop) << different;
    });
}

// That no memory is needed for it, the tests of allocation faults prove.
TEST_F(Traits, SayWhetherEveryPixelIsWritten) {
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        if (!traits.writesAll) return;
        const int left = countRounds(200, filter, random, [&](const auto& instance, int round) {
            const Picture source = noise(oddSizes[round % std::size(oddSizes)], random);
            const Picture before = noise({source.width, source.height}, random);
            const Moment moment = momentAtRandom(random);
            const Layout layout{traits.takesRowsFromTheTop && upTo(1, random) == 0, upTo(20, random)};
            const Picture expected = render(instance, source, moment, layout).picture;
            return render(instance, source, moment, layout, &before).picture != expected;
        });
        EXPECT_EQ(left, 0);
    });
}

TEST_F(Traits, SayWhetherBytesBetweenRowsAreTouched) {
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        const int touched = countRounds(60, filter, random, [&](const auto& instance, int round) {
            const Picture source = noise({37, 23}, random);
            return !render(instance, source, momentAtRandom(random), {round % 2 == 1, 5}).gapsHold;
        });
        EXPECT_EQ(touched > 0, traits.touchesGaps) << touched;
    });
}

/// What comes out where each band is rendered with `margin` rows of the source above and below.
Picture renderInBands(const hosting::FilterInstance& instance, const Picture& source, const Moment& moment,
                      int bands, int margin) {
    const int height = source.height;
    Picture result{source.width, height};
    for (int band = 0; band < bands; ++band) {
        const int begin = height * band / bands, end = height * (band + 1) / bands;
        if (begin == end) continue;
        const int first = std::max(begin - margin, 0), last = std::min(end + margin, height);
        Picture part = render(instance, rowsOf(source, first, last), moment).picture;
        std::copy(part.row(begin - first), part.row(end - first), result.row(begin));
    }
    return result;
}

/// Counts the rounds in which renderings in bands are not as the whole one.
int wrongInBands(const hosting::Filter& filter, int margin, Random& random) {
    constexpr Size sizes[] = {{1, 7}, {3, 23}, {17, 61}, {64, 1}, {130, 35}};
    constexpr Size high{5, 231};
    return countRounds(100, filter, random, [&](const auto& instance, int) {
        bool wrong = false;
        const auto compare = [&](const Picture& source, int bands) {
            const Moment moment = momentAtRandom(random);
            const Picture whole = render(instance, source, moment).picture;
            wrong |= renderInBands(instance, source, moment, bands, margin) != whole;
        };
        for (const Size size : sizes) compare(noise(size, random), 1 + upTo(6, random));
        // What comes from the furthest row that a cut may leave out.
        const int cut = high.height / 2;
        for (const int row : {cut - margin - 1, cut - margin, cut + margin - 1, cut + margin})
            compare(lonelyRow(high, row, random), 2);
        return wrong;
    });
}

TEST_F(Traits, SayHowManyRowsBandsNeedOfTheirNeighbours) {
    constexpr int plenty = 8;
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        if (!traits.neighbourRows) {
            EXPECT_GT(wrongInBands(filter, plenty, random), 0) << "could be rendered in bands";
            return;
        }
        EXPECT_EQ(wrongInBands(filter, *traits.neighbourRows, random), 0);
        if (*traits.neighbourRows > 0) {
            EXPECT_GT(wrongInBands(filter, *traits.neighbourRows - 1, random), 0) << "takes fewer";
        }
    });
}

void setIdentity(const hosting::Filter& filter, const hosting::FilterTraits& traits,
                 const hosting::FilterInstance& instance) {
    for (const auto& [index, value] : traits.identity) {
        const hosting::Parameter& parameter = filter.properties.parameters.at(index);
        const hosting::ValueRange range = hosting::valueRange(parameter);
        EXPECT_TRUE(value >= range.minimum && value <= range.maximum) << parameter.name;
        hosting::writeValue(parameter, value, instance.settings());
    }
}

/// Noise with some pixels of the colours that the filter is set to.
Picture noiseWithSetColors(Size size, const hosting::Filter& filter, const hosting::FilterInstance& instance,
                           Random& random) {
    Picture picture = noise(size, random);
    for (const hosting::Parameter& parameter : filter.properties.parameters) {
        if (parameter.kind != hosting::ParameterKind::Color) continue;
        const auto color = static_cast<std::uint32_t>(hosting::readValue(parameter, instance.settings()));
        const std::uint32_t pixel = (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
        for (int i = 0; i < 9; ++i) {
            const auto place =
                static_cast<std::size_t>(upTo(static_cast<int>(picture.pixels.size()) - 1, random));
            picture.pixels[place] = pixel | (random() & 0xFF000000);
        }
    }
    return picture;
}

TEST_F(Traits, SayWhichSettingsLeaveThePicture) {
    constexpr Size sizes[] = {{61, 47}, {1, 1}, {3, 40}, {200, 5}};
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        if (traits.identity.empty()) return;
        const int changed = countRounds(100, filter, random, [&](const auto& instance, int round) {
            setIdentity(filter, traits, instance);
            const Picture source =
                noiseWithSetColors(sizes[round % std::size(sizes)], filter, instance, random);
            return render(instance, source, momentAtRandom(random)).picture != source;
        });
        EXPECT_EQ(changed, 0);
    });
}

TEST_F(Traits, NameSuchSettingsWhereThereAreAny) {
    constexpr Moment moments[] = {{3, 40}, {20, 40}};
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        if (!traits.identity.empty()) return;
        const hosting::FilterInstance instance = hosting::newInstance(filter);
        for (int round = 0; round < 100; ++round) {
            // Not the ends of the ranges: there Color Replace may put a colour in its own place.
            if (round > 0) setAll(filter, instance, random, valueAtRandom);
            const Picture source = noiseWithSetColors({61, 47}, filter, instance, random);
            EXPECT_TRUE(std::ranges::any_of(moments, [&](const Moment& moment) {
                return render(instance, source, moment).picture != source;
            }));
        }
    });
}

TEST_F(Traits, NameOnlySettingsThatMatter) {
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        for (const hosting::IdentityValue& named : traits.identity) {
            const hosting::Parameter& parameter = filter.properties.parameters.at(named.parameter);
            const hosting::FilterInstance instance = hosting::newInstance(filter);
            int changed = 0;
            for (int round = 0; round < 30; ++round) {
                setAll(filter, instance, random, anyEnd);
                setIdentity(filter, traits, instance);
                hosting::writeValue(parameter, (round % 2 == 0 ? anyEnd : valueAtRandom)(parameter, random),
                                    instance.settings());
                const Picture source = noise({61, 47}, random);
                if (render(instance, source).picture != source) ++changed;
            }
            EXPECT_GT(changed, 0) << parameter.name << " may have any value";
        }
    });
}

TEST_F(Traits, ReadAsTheParametersDo) {
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random&) {
        const auto& parameters = filter.properties.parameters;
        ASSERT_EQ(traits.parameters.size(), parameters.size());
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            const hosting::Parameter& parameter = parameters[i];
            const auto& [unit, labelKey, choices] = traits.parameters[i];
            SCOPED_TRACE(parameter.name);
            const bool isNumber = parameter.kind == hosting::ParameterKind::Number;
            const bool isShownAsItIs = parameter.displayMinimum == parameter.minimum &&
                                       parameter.displayMaximum == parameter.maximum;
            const bool isPercentage = parameter.displayMinimum == 0 &&
                                      (parameter.displayMaximum == 100 || parameter.displayMaximum == 200);
            EXPECT_TRUE(unit.empty() || isNumber);
            EXPECT_THAT(unit, testing::AnyOf("", "%", "px", "°"));
            EXPECT_TRUE(unit != "%" || isPercentage);
            EXPECT_TRUE(unit == "%" || !isNumber || !isPercentage || isShownAsItIs);
            EXPECT_TRUE(unit != "px" || isShownAsItIs);
            EXPECT_TRUE(unit != "°" || (isShownAsItIs && parameter.maximum == 360));

            if (choices.empty()) {
                EXPECT_EQ(labelKey, parameter.key);
                continue;
            }
            EXPECT_TRUE(isNumber && isShownAsItIs && unit.empty());
            EXPECT_EQ(static_cast<double>(choices.size()), parameter.maximum - parameter.minimum + 1);
            std::set<std::string> words;
            for (const std::string_view key : choices) words.insert(hosting::defaultText(std::string(key)));
            EXPECT_EQ(words.size(), choices.size());
            EXPECT_NE(hosting::defaultText(std::string(labelKey)), labelKey);
        }
    });
}

}  // namespace
