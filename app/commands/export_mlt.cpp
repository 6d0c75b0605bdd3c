// SPDX-License-Identifier: MIT
// vireo export mlt: a playlist that melt and the editors on MLT open.
#include "app/commands/exports.h"
#include "engine/error.h"
#include "engine/settings/parameter_value.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vireo {
namespace {

std::string xmlEscaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&': result += "&amp;"; break;
            case '<': result += "&lt;"; break;
            case '>': result += "&gt;"; break;
            case '"': result += "&quot;"; break;
            default: result += c;
        }
    }
    return result;
}

std::string mltText(const hosting::Parameter& parameter, std::int64_t value) {
    switch (parameter.kind) {
        case hosting::ParameterKind::Boolean: return value != 0 ? "1" : "0";
        case hosting::ParameterKind::Color: return valueText(parameter, value);
        case hosting::ParameterKind::Number: break;
    }
    return shareText(parameter, value);
}

/// One parameter as MLT animates it: straight lines between key frames where they give every frame its value,
/// else a key for each frame that changes.
class Animation {
public:
    Animation(const ExportedFilter& filter, std::size_t parameter)
        : filter_(filter), index_(parameter), parameter_(filter.parameters()[parameter]) {}

    std::string text(const ValueTrack& track, const ExportedClip& clip) const {
        std::vector<std::int64_t> keys{filter_.first()};
        for (const ValueTrack::Key& key : track.keys()) {
            const std::int64_t frame = clip.firstAt(key.time);
            if (frame > keys.back()) keys.push_back(frame);
        }
        std::string text;
        for (std::size_t i = 0; i + 1 < keys.size(); ++i) {
            if (isStraight(keys[i], keys[i + 1])) {
                add(text, keys[i], "=");
            } else {
                addSteps(text, keys[i], keys[i + 1]);
            }
        }
        add(text, keys.back(), "=");
        return text;
    }

private:
    std::int64_t valueAt(std::int64_t frame) const { return filter_.valuesAt(frame)[index_]; }

    bool isStraight(std::int64_t first, std::int64_t last) const {
        if (parameter_.kind != hosting::ParameterKind::Number) return false;
        // Nearer to where rounding turns, how the sum is made would decide.
        constexpr double margin = 0.5 - 1e-3;
        const auto from = static_cast<double>(valueAt(first));
        const double slope = (static_cast<double>(valueAt(last)) - from) / static_cast<double>(last - first);
        for (std::int64_t frame = first; frame < last; ++frame) {
            const double straight = from + slope * static_cast<double>(frame - first);
            if (std::abs(straight - static_cast<double>(valueAt(frame))) > margin) return false;
        }
        return true;
    }

    void add(std::string& text, std::int64_t frame, const char* transition) const {
        if (!text.empty()) text += ';';
        text += std::to_string(frame - filter_.first()) + transition + mltText(parameter_, valueAt(frame));
    }

    void addSteps(std::string& text, std::int64_t first, std::int64_t last) const {
        add(text, first, "|=");
        for (std::int64_t frame = first + 1; frame < last; ++frame)
            if (valueAt(frame) != valueAt(frame - 1)) add(text, frame, "|=");
    }

    const ExportedFilter& filter_;
    std::size_t index_;
    const hosting::Parameter& parameter_;
};

class Document {
public:
    void open(const std::string& element) {
        line('<' + element + '>');
        indent_ += 2;
    }
    void close(const std::string& name) {
        indent_ -= 2;
        line("</" + name + '>');
    }
    void property(const std::string& name, const std::string& value) {
        line("<property name=\"" + xmlEscaped(name) + "\">" + xmlEscaped(value) + "</property>");
    }
    void line(const std::string& text) { text_ += std::string(indent_, ' ') + text + '\n'; }
    std::string text() const { return text_; }

private:
    std::string text_ = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
    std::size_t indent_ = 0;
};

std::string profileElement(const ClipFacts& facts) {
    const auto attribute = [](const char* name, std::int64_t value) {
        return std::string(" ") + name + "=\"" + std::to_string(value) + '"';
    };
    std::int64_t across = std::int64_t{facts.width} * facts.pixelAspect.numerator;
    std::int64_t down = std::int64_t{facts.height} * facts.pixelAspect.denominator;
    const std::int64_t common = std::gcd(across, down);
    across /= common;
    down /= common;
    return "profile description=\"The clip's own\"" + attribute("width", facts.width) +
           attribute("height", facts.height) + attribute("progressive", 1) +
           attribute("sample_aspect_num", facts.pixelAspect.numerator) +
           attribute("sample_aspect_den", facts.pixelAspect.denominator) +
           attribute("display_aspect_num", across) + attribute("display_aspect_den", down) +
           attribute("frame_rate_num", facts.frameRate.numerator) +
           attribute("frame_rate_den", facts.frameRate.denominator) +
           attribute("colorspace", facts.standardDefinition ? 601 : 709) + '/';
}

void addFilter(Document& document, const ExportedFilter& filter, const ExportedClip& clip) {
    if (filter.isMixed())
        throw Error(Fault::Usage, "MLT renders frei0r filters whole, and " + filter.name() + " has a mix");
    std::string element = "filter";
    if (filter.isStretch()) {
        if (filter.traits().readsTime && filter.first() > 0)
            throw Error(Fault::Usage, "in MLT " + filter.name() + "'s time begins with its stretch");
        const std::int64_t last = filter.last().value_or(clip.facts().frameCount);
        if (last <= filter.first()) return;
        element += " in=\"" + std::to_string(filter.first()) + "\" out=\"" + std::to_string(last - 1) + '"';
    }
    document.open(element);
    document.property("mlt_service", "frei0r." + filter.plugin());
    const StoredValues values = filter.valuesAt(filter.first());
    const StoredValues initial = filter.initialValues();
    for (std::size_t i = 0; i < values.size(); ++i) {
        const hosting::Parameter& parameter = filter.parameters()[i];
        const ValueTrack track = filter.settings().value(static_cast<ValueIndex>(i));
        if (!track.isConstant()) {
            document.property(parameter.name, Animation(filter, i).text(track, clip));
        } else if (values[i] != initial[i]) {
            document.property(parameter.name, mltText(parameter, values[i]));
        }
    }
    if (filter.traits().readsTime) {
        document.property("Frame Rate", clip.rateText());
        if (clip.facts().frameCount > 0)
            document.property("Clip Length", std::to_string(clip.facts().frameCount));
    }
    document.close("filter");
}

}  // namespace

Export exportForMlt(const std::vector<ExportedFilter>& filters, const ExportedClip& clip,
                    const std::string& clipFile) {
    const ClipFacts& facts = clip.facts();
    const std::string range = facts.frameCount > 0
                                  ? " in=\"0\" out=\"" + std::to_string(facts.frameCount - 1) + '"'
                                  : std::string();
    Document document;
    document.open("mlt LC_NUMERIC=\"C\" producer=\"vireo\"");
    document.line('<' + profileElement(facts) + '>');
    document.open("producer id=\"clip\"" + range);
    document.property("resource", clipFile);
    for (const ExportedFilter& filter : filters) addFilter(document, filter, clip);
    document.close("producer");
    document.open("playlist id=\"vireo\"");
    document.line("<entry producer=\"clip\"" + range + "/>");
    document.close("playlist");
    document.close("mlt");
    Export made{document.text(), {}, {}};
    if (!facts.seconds.empty() && facts.seconds.size() > 1) {
        const double rate = clip.rate();
        for (std::size_t i = 0; i < facts.seconds.size(); ++i) {
            if (std::abs(facts.seconds[i] * rate - static_cast<double>(i)) > 0.5) {
                made.warnings.emplace_back(
                    "MLT brings clips to one rate, and this clip's varies: frames come twice or "
                    "not at all");
                break;
            }
        }
    }
    return made;
}

}  // namespace vireo
