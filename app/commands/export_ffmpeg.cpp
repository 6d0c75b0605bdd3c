// SPDX-License-Identifier: MIT
// vireo export ffmpeg: a filter graph for -vf, and a file for its sendcmd filter where values change.
#include "app/commands/exports.h"
#include "engine/error.h"
#include "engine/settings/parameter_value.h"

#include <algorithm>
#include <cstdio>

namespace vireo {
namespace {

/// A value of an option within a filter graph.
std::string graphEscaped(const std::string& text) {
    const auto escaped = [](const std::string& plain, std::string_view special) {
        std::string result;
        for (const char c : plain) {
            if (special.find(c) != std::string_view::npos) result += '\\';
            result += c;
        }
        return result;
    };
    return escaped(escaped(text, "\\':"), "\\'[],;");
}

std::string ffmpegText(const hosting::Parameter& parameter, std::int64_t value) {
    switch (parameter.kind) {
        case hosting::ParameterKind::Boolean: return value != 0 ? "y" : "n";
        case hosting::ParameterKind::Color: return "0x" + valueText(parameter, value).substr(1);
        case hosting::ParameterKind::Number: break;
    }
    return shareText(parameter, value);
}

class FfmpegExport {
public:
    FfmpegExport(const ExportedClip& clip, const std::string& commandFile)
        : clip_(clip), commandFile_(commandFile) {}

    Export write(const std::vector<ExportedFilter>& filters) {
        for (const ExportedFilter& filter : filters) {
            if (!made_.text.empty()) made_.text += ',';
            add(filter);
        }
        if (!made_.commands.empty()) {
            if (commandFile_.empty())
                throw Error(Fault::Usage,
                            "values change along the clip, which FFmpeg reads from a file; "
                            "--commands FILE names it");
            made_.text = "sendcmd=f=" + graphEscaped(commandFile_) + ',' + made_.text;
        }
        constexpr int paddedWidth = 16;
        if (clip_.facts().width % paddedWidth != 0)
            made_.warnings.push_back(
                "older FFmpeg, 5.1 among them, renders only widths that are a multiple of 16 correctly "
                "with frei0r filters, and the clip is " +
                std::to_string(clip_.facts().width) + " pixels wide");
        return std::move(made_);
    }

private:
    void add(const ExportedFilter& filter) {
        const std::string number = std::to_string(++number_);
        const bool isMixed = filter.isMixed();
        // What looks back, or counts its frames, must see those before its stretch too.
        const bool seesAll = filter.traits().earlierFrames > 0 || filter.traits().readsTime;
        const bool isBlended = isMixed || (filter.isStretch() && seesAll);
        if (!isBlended) {
            made_.text += pluginText(filter, number) + stretchText(filter);
            return;
        }
        const std::string name = filter.isMixAnimated() ? "blend@vireo" + number : "blend";
        const std::string kept = "[kept" + number + ']';
        const std::string taken = "[taken" + number + ']';
        const std::string rendered = "[made" + number + ']';
        made_.text += "format=gbrap,split" + kept + taken + ';' + taken + pluginText(filter, number) +
                      ",format=gbrap" + rendered + ';' + kept + rendered + name + "=all_expr='" +
                      mixText(filter.mixAt(0)) + '\'' + stretchText(filter);
        if (filter.isMixAnimated())
            // While it runs, the filter takes expressions of single planes alone.
            addCommands(filter, name, {"c0_expr", "c1_expr", "c2_expr", "c3_expr"},
                        [&](std::int64_t frame) { return mixText(filter.mixAt(frame)); });
        if (isMixed && clip_.facts().alpha)
            made_.warnings.push_back("FFmpeg mixes colours without regard to alpha; where " + filter.name() +
                                     " or the clip is not opaque, its pixels differ");
    }

    /// Whole per cents, rounded half up.
    static std::string mixText(int mix) {
        return "floor((A*" + std::to_string(100 - mix) + "+B*" + std::to_string(mix) + "+50)/100)";
    }

    std::string pluginText(const ExportedFilter& filter, const std::string& number) {
        const StoredValues first = filter.valuesAt(0);
        std::int64_t changes = 0;
        for (std::int64_t frame = 1; frame <= filter.settledAt() && changes == 0; ++frame)
            changes += filter.valuesAt(frame) != first ? 1 : 0;
        const bool isAnimated = changes > 0;
        const std::string name = isAnimated ? "frei0r@vireo" + number : "frei0r";
        if (isAnimated)
            addCommands(filter, name, {"filter_params"}, [&](std::int64_t frame) {
                return parametersText(filter, filter.valuesAt(frame), true);
            });
        const std::string parameters = parametersText(filter, first, isAnimated);
        return name + "=filter_name=" + filter.plugin() +
               (parameters.empty() ? "" : ":filter_params=" + parameters);
    }

    /// Parameters go by their place; those behind the last one that counts may be left out. The plug-in
    /// counts its frames: for some widths FFmpeg does not hand out their times.
    std::string parametersText(const ExportedFilter& filter, const StoredValues& values, bool all) const {
        const bool isTimed = filter.traits().readsTime && clip_.facts().frameCount > 0;
        std::size_t count = values.size();
        const StoredValues initial = filter.initialValues();
        while (!all && !isTimed && count > 0 && values[count - 1] == initial[count - 1]) --count;
        std::string text;
        for (std::size_t i = 0; i < count; ++i)
            text += (i > 0 ? "|" : "") + ffmpegText(filter.parameters()[i], values[i]);
        if (isTimed) text += (count > 0 ? "||s|" : "|s|") + std::to_string(clip_.facts().frameCount);
        return text;
    }

    static std::string stretchText(const ExportedFilter& filter) {
        if (!filter.isStretch()) return {};
        std::string text = "gte(n," + std::to_string(filter.first()) + ')';
        if (filter.last()) text += "*lt(n," + std::to_string(*filter.last()) + ')';
        return ":enable='" + text + '\'';
    }

    /// A line for each frame at which the text changes. It takes effect half-way from the frame before, so
    /// that no rounding of times moves it to another frame.
    template <class TextAt>
    void addCommands(const ExportedFilter& filter, const std::string& target,
                     std::initializer_list<const char*> options, const TextAt& textAt) {
        std::string before = textAt(0);
        for (std::int64_t frame = 1; frame <= filter.settledAt(); ++frame) {
            std::string text = textAt(frame);
            if (text == before) continue;
            const double time =
                clip_.facts().start + (clip_.position(frame - 1).seconds + clip_.position(frame).seconds) / 2;
            char seconds[32];
            std::snprintf(seconds, sizeof seconds, "%.6f", time);
            const char* separator = " ";
            made_.commands += seconds;
            for (const char* option : options) {
                made_.commands.append(separator).append(target).append(" ").append(option);
                made_.commands.append(" '").append(text).append("'");
                separator = ", ";
            }
            made_.commands += ";\n";
            before = std::move(text);
        }
    }

    const ExportedClip& clip_;
    const std::string& commandFile_;
    Export made_;
    int number_ = 0;
};

}  // namespace

Export exportForFfmpeg(const std::vector<ExportedFilter>& filters, const ExportedClip& clip,
                       const std::string& commandFile) {
    return FfmpegExport(clip, commandFile).write(filters);
}

}  // namespace vireo
