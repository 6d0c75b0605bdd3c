// SPDX-License-Identifier: MIT
// What resources/filters.toml declares of every filter, proved by what the filter renders: each trait holds
// where it is declared and is missing where it is not.
#include "host/hosting/filter_traits.h"

#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/hosting/parameter_value.h"
#include "host/pixkit/pixkit.h"
#include "tests/support/test_frame.h"

#include <algorithm>
#include <set>

namespace {

int upTo(int largest, Random& random) { return std::uniform_int_distribution(0, largest)(random); }

constexpr Geometry oddSizes[] = {{37, 23}, {64, 32}, {1, 1}, {2, 9}, {130, 7}, {5, 231}};

Picture noise(const Geometry& size, Random& random) { return ::noise(size.width, size.height, random); }

/// A frame with this picture, whose rows lie as the layout's do.
TestFrame frameOf(const Picture& picture, Geometry layout) {
    layout.width = picture.width;
    layout.height = picture.height;
    return TestFrame(layout, picture);
}

/// A moment of a clip whose frames all differ.
struct Moment {
    std::uint32_t frame = 3;
    std::uint32_t frames = 10;  ///< 0: unknown.
    std::uint16_t fieldFlags = 0;

    std::uint32_t time() const { return 2 * frame + (fieldFlags == FieldFlagLower ? 1 : 0); }
};

constexpr std::uint16_t fields[] = {0, FieldFlagUpper, FieldFlagLower};

Moment momentAtRandom(Random& random) {
    const int frames = 1 + upTo(60, random);
    const int frame = upTo(frames - 1, random);
    return {static_cast<std::uint32_t>(frame), static_cast<std::uint32_t>(frames), fields[upTo(2, random)]};
}

/// The source at other frames, and which of them were asked for.
struct Clip {
    const Picture& now;
    Geometry layout;
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
        TestFrame source = frameOf(other, clip.layout);
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

std::int64_t valueAtRandom(const hosting::Parameter& parameter, Random& random) {
    const hosting::ValueRange range = hosting::valueRange(parameter);
    return std::uniform_int_distribution(range.minimum, range.maximum)(random);
}

std::int64_t anyEnd(const hosting::Parameter& parameter, Random& random) {
    const hosting::ValueRange range = hosting::valueRange(parameter);
    return random() % 2 == 0 ? range.minimum : range.maximum;
}

/// A filter in use.
struct Tested {
    const hosting::Filter& filter;
    const hosting::FilterTraits& traits = hosting::filterTraits(filter.properties.matchName);
    const std::vector<hosting::Parameter>& parameters = filter.properties.parameters;
    hosting::FilterInstance instance = hosting::newInstance(filter);
    Random random{7};

    /// `unfilled`: what the destination holds where the host fills no more than the traits say.
    Rendered render(const Picture& source, const Moment& moment = {}, const Geometry& layout = {},
                    const Picture* unfilled = nullptr) const {
        TestFrame from = frameOf(source, layout);
        TestFrame to =
            frameOf(unfilled != nullptr ? *unfilled : Picture{source.width, source.height}, layout);
        Clip clip{source, layout, moment.frame};
        EXPECT_EQ(instance.render({.source = from.handle(),
                                   .destination = to.handle(),
                                   .time = moment.time(),
                                   .duration = 2 * moment.frames,
                                   .fieldFlags = moment.fieldFlags,
                                   .getFrame = Clip::get,
                                   .getFrameData = &clip,
                                   .filledRows = unfilled == nullptr ? std::nullopt : traits.unwrittenRows}),
                  0);
        return {to.picture(), moment.frame - clip.earliest, clip.latest > moment.frame,
                bool{to.guardsHold()}};
    }

    std::int64_t valueOf(const hosting::Parameter& parameter) const {
        return hosting::readValue(parameter, instance.settings());
    }
    void setValue(const hosting::Parameter& parameter, std::int64_t value) {
        hosting::writeValue(parameter, value, instance.settings());
    }
    void setAll(std::int64_t (*value)(const hosting::Parameter&, Random&)) {
        for (const hosting::Parameter& parameter : parameters) setValue(parameter, value(parameter, random));
    }
    void setIdentity() {
        for (const auto& [index, value] : traits.identity) {
            const hosting::ValueRange range = hosting::valueRange(parameters.at(index));
            EXPECT_TRUE(value >= range.minimum && value <= range.maximum) << parameters[index].name;
            setValue(parameters[index], value);
        }
    }

    /// Calls `round(number)` with the start values at first, then with numbers from the whole range and from
    /// its ends, and counts how often it answers true.
    template <class Round>
    int countRounds(int rounds, Round&& round) {
        int count = 0;
        instance = hosting::newInstance(filter);
        for (int number = 0; number < rounds; ++number) {
            if (number > 0) setAll(number % 2 == 0 ? anyEnd : valueAtRandom);
            if (round(number)) ++count;
        }
        return count;
    }
};

class Traits : public testing::Test {
protected:
    template <class Test>
    void forEachFilter(Test&& test) {
        for (const hosting::Filter& filter : module_.filters()) {
            SCOPED_TRACE(filter.properties.name);
            Tested tested{filter};
            test(tested);
        }
    }

    const hosting::MetaPlugin module_{VIREO_TESTED_MODULE};
};

TEST_F(Traits, AreKnownOfEveryFilterAndSafeForOthers) {
    EXPECT_EQ(module_.path(), VIREO_TESTED_MODULE);
    std::set<std::string_view> files;
    const hosting::FilterTraits& unknown = hosting::filterTraits("of another module");
    EXPECT_TRUE(unknown.id == 0 && unknown.fileName.empty() && unknown.parameters.empty());
    EXPECT_TRUE(unknown.readsTime && unknown.touchesGaps && unknown.identity.empty());
    EXPECT_FALSE(unknown.takesRowsFromTheTop || unknown.neighbourRows || unknown.unwrittenRows);
    forEachFilter([&](const Tested& tested) {
        EXPECT_EQ(tested.traits.id, tested.filter.id);
        EXPECT_TRUE(files.insert(tested.traits.fileName).second) << tested.traits.fileName;
        EXPECT_LE(tested.traits.earlierFrames, unknown.earlierFrames);
    });
    EXPECT_EQ(files.size(), 22U);
}

TEST_F(Traits, SayWhatTimeComesTo) {
    constexpr std::uint32_t farInside = 1 << 20;
    forEachFilter([&](Tested& tested) {
        std::uint32_t furthest = 0;
        const int changed = tested.countRounds(30, [&](int) {
            const Picture source = noise({16, 16}, tested.random);
            const Picture first = tested.render(source, {0, 0}).picture;
            bool changes = false;
            for (const std::uint32_t frame : {0U, 1U, 5U, 39U, farInside}) {
                for (const std::uint32_t frames : {0U, 40U, 41U, 2 * farInside}) {
                    for (const std::uint16_t flags : fields) {
                        const Rendered rendered = tested.render(source, {frame, frames, flags});
                        changes |= flags == 0 && rendered.picture != first;
                        furthest = std::max(furthest, rendered.lookedBack);
                        EXPECT_FALSE(rendered.lookedAhead);
                    }
                }
            }
            return changes;
        });
        EXPECT_EQ(changed > 0, tested.traits.readsTime) << changed;
        EXPECT_EQ(furthest, static_cast<std::uint32_t>(tested.traits.earlierFrames));
    });
}

// That no memory is needed to write every pixel, the tests of allocation faults prove.
TEST_F(Traits, SayHowRowsMayLieAndWhatIsWritten) {
    forEachFilter([&](Tested& tested) {
        const hosting::FilterTraits& traits = tested.traits;
        Random& random = tested.random;
        int touched = 0;
        const int different = tested.countRounds(200, [&](int round) {
            const Picture source = noise(oddSizes[round % std::size(oddSizes)], random);
            const Picture before = ::noise(source.width, source.height, random);
            const Moment moment = momentAtRandom(random);
            const Geometry upward{.padding = 4 * upTo(20, random)};
            const Geometry downward{.padding = upward.padding, .negativeRowBytes = true};
            const Picture expected = tested.render(source, moment).picture;
            const Rendered padded = tested.render(source, moment, upward);
            const Rendered fromTheTop = tested.render(source, moment, downward);
            EXPECT_EQ(padded.picture, expected) << upward.padding;
            if (!padded.gapsHold || !fromTheTop.gapsHold) ++touched;
            if (traits.unwrittenRows) {
                const Geometry& layout = traits.takesRowsFromTheTop ? downward : upward;
                EXPECT_EQ(tested.render(source, moment, layout, &before).picture, expected);
            }
            return fromTheTop.picture != expected;
        });
        EXPECT_EQ(different == 0, traits.takesRowsFromTheTop) << different;
        EXPECT_EQ(touched > 0, traits.touchesGaps) << touched;
    });
}

/// What comes out where each band is rendered with `margin` rows of the source above and below.
Picture renderInBands(const Tested& tested, Picture source, const Moment& moment, int bands, int margin) {
    Picture result{source.width, source.height};
    for (int band = 0; band < bands; ++band) {
        const int begin = source.height * band / bands, end = source.height * (band + 1) / bands;
        if (begin == end) continue;
        const int first = std::max(begin - margin, 0), last = std::min(end + margin, source.height);
        Picture part{source.width, last - first};
        std::copy(source.row(first), source.row(last), part.row(0));
        part = tested.render(part, moment).picture;
        std::copy(part.row(begin - first), part.row(end - first), result.row(begin));
    }
    return result;
}

TEST_F(Traits, SayHowManyRowsBandsNeedOfTheirNeighbours) {
    constexpr Geometry sizes[] = {{1, 7}, {3, 23}, {17, 61}, {64, 1}, {130, 35}};
    constexpr Geometry high{5, 231};
    constexpr int cut = high.height / 2, plenty = 8;
    forEachFilter([&](Tested& tested) {
        const std::optional<std::int32_t> rows = tested.traits.neighbourRows;
        const auto isWrongWith = [&](int margin) {
            bool wrong = false;
            const auto compare = [&](const Picture& source, int bands) {
                const Moment moment = momentAtRandom(tested.random);
                wrong = wrong || renderInBands(tested, source, moment, bands, margin) !=
                                     tested.render(source, moment).picture;
            };
            tested.countRounds(100, [&](int) {
                for (const Geometry& size : sizes)
                    compare(noise(size, tested.random), 1 + upTo(6, tested.random));
                // What comes from the furthest row that a cut may leave out.
                for (const int row : {cut - margin - 1, cut - margin, cut + margin - 1, cut + margin}) {
                    Picture lonely{high.width, high.height};
                    std::generate_n(lonely.row(row), high.width,
                                    [&] { return tested.random() | 0xFF000000; });
                    compare(lonely, 2);
                }
                return wrong;
            });
            return wrong;
        };
        EXPECT_EQ(isWrongWith(rows.value_or(plenty)), !rows);
        EXPECT_TRUE(rows.value_or(0) == 0 || isWrongWith(*rows - 1)) << "takes fewer";
    });
}

TEST_F(Traits, SayWhereTablesMakeThePicture) {
    Picture ramp{256, 1};
    for (int value = 0; value < 256; ++value) ramp.row(0)[value] = pixelOf(value, value, value, value);
    forEachFilter([&](Tested& tested) {
        const int different = tested.countRounds(60, [&](int) {
            const Moment moment = momentAtRandom(tested.random);
            const Picture tables = tested.render(ramp, moment).picture;
            Picture expected = noise({37, 23}, tested.random);
            const Picture source = expected;
            for (std::uint32_t& pixel : expected.pixels) {
                const auto mapped = [&](int channel) {
                    return channelOf(tables.pixels[static_cast<std::size_t>(channelOf(pixel, channel))],
                                     channel);
                };
                pixel = pixelOf(mapped(0), mapped(1), mapped(2), channelOf(pixel, 3));
            }
            return tested.render(source, moment).picture != expected;
        });
        EXPECT_EQ(different == 0, tested.traits.mapsChannels) << different;
    });
}

/// Noise with some pixels of the colours that the filter is set to.
Picture noiseWithSetColors(const Geometry& size, Tested& tested) {
    Picture picture = noise(size, tested.random);
    for (const hosting::Parameter& parameter : tested.parameters) {
        if (parameter.kind != hosting::ParameterKind::Color) continue;
        const auto color = static_cast<std::uint32_t>(tested.valueOf(parameter));
        const std::uint32_t pixel = pixelOf(channelOf(color, 2), channelOf(color, 1), channelOf(color, 0), 0);
        for (int i = 0; i < 9; ++i)
            picture.pixels[tested.random() % picture.pixels.size()] = pixel | (tested.random() & 0xFF000000);
    }
    return picture;
}

TEST_F(Traits, NameTheSettingsThatLeaveThePicture) {
    constexpr Geometry sizes[] = {{61, 47}, {1, 1}, {3, 40}, {200, 5}};
    forEachFilter([&](Tested& tested) {
        const bool isNamed = !tested.traits.identity.empty();
        const int changed = tested.countRounds(100, [&](int round) {
            // Not the ends of the ranges: there Color Replace may put a colour in its own place.
            if (!isNamed && round > 0) tested.setAll(valueAtRandom);
            tested.setIdentity();
            const Geometry& size = isNamed ? sizes[round % std::size(sizes)] : sizes[0];
            const Picture source = noiseWithSetColors(size, tested);
            return std::ranges::any_of(std::initializer_list<Moment>{{3, 40}, {20, 40}}, [&](Moment moment) {
                return tested.render(source, moment).picture != source;
            });
        });
        EXPECT_EQ(changed, isNamed ? 0 : 100);

        for (const hosting::IdentityValue& named : tested.traits.identity) {
            const hosting::Parameter& parameter = tested.parameters[named.parameter];
            const int mattered = tested.countRounds(30, [&](int) {
                const std::int64_t value = tested.valueOf(parameter);
                tested.setIdentity();
                tested.setValue(parameter, value);
                const Picture source = noise(sizes[0], tested.random);
                return tested.render(source).picture != source;
            });
            EXPECT_GT(mattered, 0) << parameter.name << " may have any value";
        }
    });
}

TEST_F(Traits, ReadAsTheParametersDo) {
    forEachFilter([&](const Tested& tested) {
        ASSERT_EQ(tested.traits.parameters.size(), tested.parameters.size());
        for (std::size_t i = 0; i < tested.parameters.size(); ++i) {
            const hosting::Parameter& parameter = tested.parameters[i];
            const auto& [unit, labelKey, choices, inPixels] = tested.traits.parameters[i];
            SCOPED_TRACE(parameter.name);
            const bool isShownAsItIs = parameter.displayMinimum == parameter.minimum &&
                                       parameter.displayMaximum == parameter.maximum;
            const bool isPercentage = parameter.displayMinimum == 0 &&
                                      (parameter.displayMaximum == 100 || parameter.displayMaximum == 200);
            EXPECT_TRUE(unit.empty() || parameter.kind == hosting::ParameterKind::Number);
            EXPECT_TRUE(unit == "%" ? isPercentage : isShownAsItIs || !isPercentage);
            EXPECT_TRUE(unit != "°" || parameter.displayMaximum == 360);
            EXPECT_TRUE(!inPixels || (choices.empty() && unit != "%" && isShownAsItIs));
            EXPECT_NE(hosting::defaultText(std::string(labelKey)), labelKey);
            if (choices.empty()) continue;
            EXPECT_TRUE(isShownAsItIs && unit.empty());
            const std::set<std::string_view> words(choices.begin(), choices.end());
            EXPECT_EQ(static_cast<double>(words.size()), parameter.maximum - parameter.minimum + 1);
        }
    });
}

}  // namespace
