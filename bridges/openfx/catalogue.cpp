// SPDX-License-Identifier: MIT
#include "bridges/openfx/catalogue.h"

#include <cctype>
#include <clocale>
#include <stdexcept>

#if defined(_WIN32)
#include "host/win32.h"
#endif

namespace openfx {
namespace {

/// "de" of "de_DE.UTF-8". A host that is not translated leaves its process without a language.
std::string hostLanguage() {
#if defined(_WIN32)
    wchar_t locale[LOCALE_NAME_MAX_LENGTH] = {};
    LCIDToLocaleName(GetThreadUILanguage(), locale, LOCALE_NAME_MAX_LENGTH, 0);
    return {static_cast<char>(locale[0]), static_cast<char>(locale[1])};
#else
    const char* const locale = std::setlocale(LC_MESSAGES, nullptr);
    return locale == nullptr ? "" : std::string(locale).substr(0, 2);
#endif
}

void check(VireoStatus status) {
    if (status != VireoDone) throw std::runtime_error(vireoLastError()->sentence);
}

/// Letters and digits alone, which hosts take into scripts.
std::string wordOf(const char* name) {
    std::string word;
    for (const char* at = name; *at != '\0'; ++at) {
        if (std::isalnum(static_cast<unsigned char>(*at)) != 0) word += *at;
    }
    return word;
}

}  // namespace

Catalogue::Catalogue() {
    VireoEngine* opened = nullptr;
    check(vireoOpen(nullptr, &opened));
    engine_.reset(opened);
    vireoSetLanguage(opened, hostLanguage().c_str());

    char* mixLabel = nullptr;
    check(vireoTranslate(opened, "$$$/Page/Mix=Mix", &mixLabel));
    mixLabel_.reset(mixLabel);
    mix_.facts.label = mixLabel;
    mix_.facts.unit = "%";
    mix_.facts.maximum = mix_.facts.displayMaximum = 100;
    mix_.facts.initial = 100;

    for (std::uint32_t index = 0; index < vireoFilterCount(opened); ++index) {
        Filter& filter = filters_.emplace_back(Filter{index, {}, {}, {}});
        filter.facts.structSize = sizeof filter.facts;
        check(vireoDescribeFilter(opened, index, &filter.facts));
        filter.identifier = std::string("vireo.") + filter.facts.key;
        for (std::uint32_t i = 0; i < filter.facts.parameterCount; ++i) {
            Parameter& parameter = filter.parameters.emplace_back();
            parameter.facts.structSize = sizeof parameter.facts;
            check(vireoDescribeParameter(opened, index, i, &parameter.facts));
            parameter.name = wordOf(parameter.facts.englishName);
            for (std::uint32_t choice = 0; choice < parameter.facts.choiceCount; ++choice) {
                const char* word = "";
                check(vireoDescribeChoice(opened, index, i, choice, &word));
                parameter.choices.emplace_back(word);
            }
        }
    }
}

}  // namespace openfx
