// SPDX-License-Identifier: MIT
// Writes what MLT and its programs read about the services, in every language of the engine, into a folder.
#include "bridges/mlt/engine.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

namespace vireo::mlt {
namespace {

const char* const languages[] = {"en", "fr", "de", "ja", "es", "it", "ko"};

/// MLT reads double quotes alone, and none within.
std::string quoted(const std::string& text) { return '"' + text + '"'; }

std::string plain(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

class Writer {
public:
    Writer(const std::filesystem::path& folder, const std::string& name, const std::string& language)
        : language_(language),
          file_(folder / ("filter_" + name + (language == "en" ? "" : "_" + language) + ".yml")) {
        file_.exceptions(std::ios::failbit | std::ios::badbit);
    }

    void head(const std::string& service, const std::string& title, const std::string& description) {
        file_ << "# SPDX-License-Identifier: MIT\nschema_version: 7.0\ntype: filter\nidentifier: " << service
              << "\ntitle: " << quoted(title) << "\nversion: " << quoted(vireoVersion())
              << "\ncopyright: The Vireo Filters developers\ncreator: The Vireo Filters developers\nlicense: "
                 "MIT"
              << "\nlanguage: " << language_ << "\ntags:\n  - Video\ndescription: " << quoted(description)
              << "\n\nparameters:\n";
    }

    void parameter(const std::string& name, const std::string& title, const char* type, const char* widget) {
        file_ << "  - identifier: " << quoted(name) << "\n    title: " << quoted(title)
              << "\n    type: " << type << "\n    widget: " << widget << "\n    mutable: yes\n";
    }

    void fact(const char* name, const std::string& value) {
        file_ << "    " << name << ": " << value << '\n';
    }

    void range(double minimum, double maximum, double initial) {
        fact("minimum", plain(minimum));
        fact("maximum", plain(maximum));
        fact("default", plain(initial));
    }

    void values(const std::vector<std::string>& words) {
        file_ << "    values:\n";
        for (const std::string& word : words) file_ << "      - " << quoted(word) << '\n';
    }

private:
    std::string language_;
    std::ofstream file_;
};

/// What the words that are typed mean, where they are not of the reader's language.
std::string explained(const std::vector<std::string>& typed, const std::vector<std::string>& words,
                      double first) {
    std::string text;
    for (std::size_t i = 0; i < typed.size(); ++i) {
        if (!text.empty()) text += ", ";
        text += plain(first + static_cast<double>(i)) + " = " + words[i];
    }
    return text;
}

void writeParameter(Writer& writer, const VireoEngine* english, const VireoEngine* engine,
                    std::uint32_t filter, std::uint32_t index) {
    const VireoParameter parameter = describe(engine, filter, index);
    const double initial = static_cast<double>(parameter.initial);
    const auto begin = [&](const char* type, const char* widget) {
        writer.parameter(parameter.englishName, parameter.label, type, widget);
    };
    if (parameter.kind == VireoBoolean) {
        begin("boolean", "checkbox");
        writer.fact("default", plain(initial));
    } else if (parameter.kind == VireoColor) {
        begin("color", "color");
        writer.fact("animation", "yes");
        char color[16];
        std::snprintf(color, sizeof color, "#%06llx", static_cast<unsigned long long>(parameter.initial));
        writer.fact("default", quoted(color));
    } else if (parameter.choiceCount > 0) {
        begin("string", "dropdown");
        const auto typed = choices(english, filter, index);
        writer.fact("description",
                    quoted(explained(typed, choices(engine, filter, index), parameter.minimum)));
        writer.fact("default", quoted(typed.at(static_cast<std::size_t>(initial - parameter.minimum))));
        writer.values(typed);
    } else {
        begin("integer", "slider");
        writer.fact("animation", "yes");
        // Units belong to what the dialogs show.
        const bool asShown =
            parameter.displayMinimum == parameter.minimum && parameter.displayMaximum == parameter.maximum;
        if (*parameter.unit != 0 && asShown) writer.fact("unit", quoted(parameter.unit));
        writer.range(parameter.minimum, parameter.maximum, initial);
    }
}

void writeFilter(const std::filesystem::path& folder, const std::string& language, const VireoEngine* english,
                 const VireoEngine* engine, std::uint32_t index) {
    const VireoFilter filter = describe(engine, index);
    Writer writer(folder, dashedName(filter), language);
    writer.head(serviceName(filter), std::string("Vireo ") + filter.name,
                std::string(filter.name) + " (" + filter.category + ")");
    for (std::uint32_t i = 0; i < filter.parameterCount; ++i)
        writeParameter(writer, english, engine, index, i);
    writer.parameter("mix", "Mix", "integer", "slider");
    writer.fact("animation", "yes");
    writer.fact("unit", quoted("%"));
    writer.range(0, 100, 100);
}

void writeChain(const std::filesystem::path& folder) {
    Writer writer(folder, chainService, "en");
    writer.head(chainService, "Vireo Chain", "Several of the Vireo filters, one after another");
    writer.parameter("preset", "Preset", "string", "text");
    writer.fact("description", "A ready-made look by its name; it comes first.");
    writer.parameter("settings", "Settings", "string", "fileopen");
    writer.fact("description", "A settings file or a Levels file; it comes behind the preset.");
    writer.parameter("chain", "Chain", "string", "textbox");
    writer.fact("argument", "yes");
    writer.fact("description",
                "Filters as the command vireo takes them after -f, with semicolons between them. "
                "They come last.");
}

}  // namespace
}  // namespace vireo::mlt

int main(int count, char** arguments) {
    using namespace vireo::mlt;
    if (count != 2) return std::fprintf(stderr, "usage: vireo_mlt_describe FOLDER\n"), 2;
    try {
        const std::filesystem::path folder = arguments[1];
        std::filesystem::create_directories(folder);
        const Engine english = openEngine("en");
        for (const char* language : languages) {
            const Engine engine = openEngine(language);
            for (std::uint32_t filter = 0; filter < vireoFilterCount(engine.get()); ++filter)
                writeFilter(folder, language, english.get(), engine.get(), filter);
        }
        writeChain(folder);
        return 0;
    } catch (const std::exception& error) {
        return std::fprintf(stderr, "vireo_mlt_describe: %s\n", error.what()), 1;
    }
}
