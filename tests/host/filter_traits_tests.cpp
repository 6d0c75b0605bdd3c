// SPDX-License-Identifier: MIT
// What resources/filters.toml declares of every filter, proved by what the filter renders: each trait holds
// where it is declared and is missing where it is not.
#include "host/hosting/filter_traits.h"

#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/hosting/parameter_value.h"
#include "host/pixkit/pixkit.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <set>

namespace {

using Random = std::mt19937;

int upTo(int largest, Random& random) { return std::uniform_int_distribution(0, largest)(random); }

struct Size {
    int width;
    int height;
};

/// Pixels row by row from the bottom.
struct Picture {
    Size size;
    std::vector<std::uint32_t> pixels;

    explicit Picture(Size size_)
        : size(size_), pixels(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height)) {}

    std::uint32_t* row(int y) { return pixels.data() + std::ptrdiff_t{y} * size.width; }
    const std::uint32_t* row(int y) const { return pixels.data() + std::ptrdiff_t{y} * size.width; }

    Picture rows(int begin, int end) const {
        Picture part({size.width, end - begin});
        std::copy(row(begin), row(end), part.pixels.begin());
        return part;
    }

    bool operator==(const Picture& other) const { return pixels == other.pixels; }
};

Picture noise(Size size, Random& random) {
    Picture picture(size);
    std::ranges::generate(picture.pixels, [&] { return random(); });
    return picture;
}

/// Transparent but for one row.
Picture lonelyRow(Size size, int row, Random& random) {
    Picture picture(size);
    std::generate_n(picture.row(row), size.width, [&] { return random() | 0xFF000000; });
    return picture;
}

/// How a host lays out its frames.
struct Layout {
    bool fromTheTop = false;
    int padding = 0;  ///< Pixels behind each row.
};

/// A frame in a host's memory.
class Frame {
public:
    Frame(const Picture& picture, const Layout& layout)
        : size_(picture.size), fromTheTop_(layout.fromTheTop), stride_(size_.width + layout.padding) {
        memory_.resize(static_cast<std::size_t>(stride_) * static_cast<std::size_t>(size_.height), gap_);
        for (int y = 0; y < size_.height; ++y) std::copy_n(picture.row(y), size_.width, row(y));
        buffer_ = {
            {0, 0, size_.width, size_.height}, (fromTheTop_ ? -4 : 4) * stride_, 0, memory_.data() + first()};
    }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    FrameBuffer* handle() { return &buffer_; }

    bool gapsHold() {
        for (int y = 0; y < size_.height; ++y) {
            const bool isLast = y == (fromTheTop_ ? 0 : size_.height - 1);
            const std::uint32_t* const gap = row(y) + size_.width;
            if (!std::all_of(gap, isLast ? gap : row(y) + stride_,
                             [this](std::uint32_t word) { return word == gap_; }))
                return false;
        }
        return true;
    }

    Picture picture() {
        Picture picture(size_);
        for (int y = 0; y < size_.height; ++y) std::copy_n(row(y), size_.width, picture.row(y));
        return picture;
    }

private:
    static std::uint32_t nextGap() {
        static std::uint32_t gap = 0;
        return ++gap * 0x01010101;
    }

    std::ptrdiff_t first() const { return fromTheTop_ ? std::ptrdiff_t{size_.height - 1} * stride_ : 0; }
    std::uint32_t* row(int y) {
        return memory_.data() + first() + (fromTheTop_ ? -1 : 1) * std::ptrdiff_t{y} * stride_;
    }

    Size size_;
    bool fromTheTop_;
    int stride_;
    std::uint32_t gap_ = nextGap();  ///< What lies between the rows, other than in another frame.
    std::vector<std::uint32_t> memory_;
    FrameBuffer buffer_{};
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
        Frame source(other, clip.layout);
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
    Frame from(source, layout), to(unfilled != nullptr ? *unfilled : Picture(source.size), layout);
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
    return {to.picture(), moment.frame - clip.earliest, clip.latest > moment.frame, to.gapsHold()};
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

/// The start values at first, then numbers from the whole range and from its ends.
void setForRound(int round, const hosting::Filter& filter, const hosting::FilterInstance& instance,
                 Random& random) {
    if (round > 0) setAll(filter, instance, random, round % 2 == 0 ? anyEnd : valueAtRandom);
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
        const hosting::FilterInstance instance = hosting::newInstance(filter);
        int changed = 0;
        for (int round = 0; round < 30; ++round) {
            setForRound(round, filter, instance, random);
            const Picture source = noise({37, 23}, random);
            const Picture first = render(instance, source, moments[0]).picture;
            changed += static_cast<int>(std::ranges::count_if(moments, [&](const Moment& moment) {
                return render(instance, source, moment).picture != first;
            }));
        }
        EXPECT_EQ(changed > 0, traits.readsTime) << changed;
    });
}

TEST_F(Traits, SayHowFarBackTheFilterLooks) {
    constexpr std::uint32_t farInside = 1 << 20;
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        const hosting::FilterInstance instance = hosting::newInstance(filter);
        std::uint32_t furthest = 0;
        for (int round = 0; round < 30; ++round) {
            setForRound(round, filter, instance, random);
            const Picture source = noise({16, 16}, random);
            for (const std::uint32_t frame : {farInside, 0U, 1U, 5U}) {
                for (const std::uint16_t fields : {0, int{FieldFlagUpper}, int{FieldFlagLower}}) {
                    const Rendered rendered = render(instance, source, {frame, 2 * farInside, fields});
                    furthest = std::max(furthest, rendered.lookedBack);
                    EXPECT_FALSE(rendered.lookedAhead) << frame;
                }
            }
        }
        EXPECT_EQ(furthest, static_cast<std::uint32_t>(traits.earlierFrames));
    });
}

TEST_F(Traits, SayWhetherRowsMayLieFromTheTop) {
    constexpr Size sizes[] = {{37, 23}, {64, 32}, {1, 1}, {2, 9}, {130, 7}};
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        const hosting::FilterInstance instance = hosting::newInstance(filter);
        int different = 0;
        for (int round = 0; round < 100; ++round) {
            setForRound(round, filter, instance, random);
            const Picture source = noise(sizes[round % std::size(sizes)], random);
            const Moment moment = momentAtRandom(random);
            const int padding = upTo(1, random) * upTo(20, random);
            const Picture expected = render(instance, source, moment).picture;
            if (render(instance, source, moment, {true, padding}).picture != expected) ++different;
            EXPECT_EQ(render(instance, source, moment, {false, padding}).picture, expected) << padding;
        }
        EXPECT_EQ(different == 0, traits.takesRowsFromTheTop) << different;
    });
}

// That no memory is needed for it, the tests of allocation faults prove.
TEST_F(Traits, SayWhetherEveryPixelIsWritten) {
    constexpr Size sizes[] = {{37, 23}, {64, 32}, {1, 1}, {2, 9}, {130, 7}, {5, 231}};
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        if (!traits.writesAll) return;
        const hosting::FilterInstance instance = hosting::newInstance(filter);
        int left = 0;
        for (int round = 0; round < 200; ++round) {
            setForRound(round, filter, instance, random);
            const Picture source = noise(sizes[round % std::size(sizes)], random);
            const Picture before = noise(source.size, random);
            const Moment moment = momentAtRandom(random);
            const Layout layout{traits.takesRowsFromTheTop && upTo(1, random) == 0, upTo(20, random)};
            const Picture expected = render(instance, source, moment, layout).picture;
            if (render(instance, source, moment, layout, &before).picture != expected) ++left;
        }
        EXPECT_EQ(left, 0);
    });
}

TEST_F(Traits, SayWhetherBytesBetweenRowsAreTouched) {
    forEachFilter([&](const hosting::Filter& filter, const hosting::FilterTraits& traits, Random& random) {
        const hosting::FilterInstance instance = hosting::newInstance(filter);
        int touched = 0;
        for (int round = 0; round < 60; ++round) {
            setForRound(round, filter, instance, random);
            const Picture source = noise({37, 23}, random);
            if (!render(instance, source, momentAtRandom(random), {round % 2 == 1, 5}).gapsHold) ++touched;
        }
        EXPECT_EQ(touched > 0, traits.touchesGaps) << touched;
    });
}

/// What comes out where each band is rendered with `margin` rows of the source above and below.
Picture renderInBands(const hosting::FilterInstance& instance, const Picture& source, const Moment& moment,
                      int bands, int margin) {
    const int height = source.size.height;
    Picture result(source.size);
    for (int band = 0; band < bands; ++band) {
        const int begin = height * band / bands, end = height * (band + 1) / bands;
        if (begin == end) continue;
        const int first = std::max(begin - margin, 0), last = std::min(end + margin, height);
        const Picture part = render(instance, source.rows(first, last), moment).picture;
        std::copy(part.row(begin - first), part.row(end - first), result.row(begin));
    }
    return result;
}

/// Counts the renderings in bands that are not as the whole one.
int wrongInBands(const hosting::Filter& filter, int margin, Random& random) {
    constexpr Size sizes[] = {{1, 7}, {3, 23}, {17, 61}, {64, 1}, {130, 35}};
    constexpr Size high{5, 231};
    const hosting::FilterInstance instance = hosting::newInstance(filter);
    int wrong = 0;
    const auto compare = [&](const Picture& source, int bands) {
        const Moment moment = momentAtRandom(random);
        const Picture whole = render(instance, source, moment).picture;
        if (renderInBands(instance, source, moment, bands, margin) != whole) ++wrong;
    };
    for (int round = 0; round < 100; ++round) {
        setForRound(round, filter, instance, random);
        for (const Size size : sizes) compare(noise(size, random), 1 + upTo(6, random));
        // What comes from the furthest row that a cut may leave out.
        const int cut = high.height / 2;
        for (const int row : {cut - margin - 1, cut - margin, cut + margin - 1, cut + margin}) {
            compare(lonelyRow(high, row, random), 2);
        }
    }
    return wrong;
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
        const hosting::FilterInstance instance = hosting::newInstance(filter);
        for (int round = 0; round < 100; ++round) {
            setForRound(round, filter, instance, random);
            setIdentity(filter, traits, instance);
            const Picture source =
                noiseWithSetColors(sizes[round % std::size(sizes)], filter, instance, random);
            EXPECT_EQ(render(instance, source, momentAtRandom(random)).picture, source);
        }
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
