// SPDX-License-Identifier: MIT
#include "bridges/mlt/engine.h"

#include <algorithm>

namespace vireo::mlt {

void check(VireoStatus status) {
    if (status != VireoDone) throw Failure(vireoLastError()->sentence);
}

Engine openEngine(const char* language) {
    auto options = sized<VireoOpenOptions>();
    options.language = language;
    VireoEngine* engine;
    check(vireoOpen(&options, &engine));
    return Engine(engine);
}

VireoFilter describe(const VireoEngine* engine, std::uint32_t filter) {
    auto description = sized<VireoFilter>();
    check(vireoDescribeFilter(engine, filter, &description));
    return description;
}

VireoParameter describe(const VireoEngine* engine, std::uint32_t filter, std::uint32_t parameter) {
    auto description = sized<VireoParameter>();
    check(vireoDescribeParameter(engine, filter, parameter, &description));
    return description;
}

std::vector<std::string> choices(const VireoEngine* engine, std::uint32_t filter, std::uint32_t parameter) {
    std::vector<std::string> words;
    const std::uint32_t count = describe(engine, filter, parameter).choiceCount;
    for (std::uint32_t choice = 0; choice < count; ++choice) {
        const char* word;
        check(vireoDescribeChoice(engine, filter, parameter, choice, &word));
        words.emplace_back(word);
    }
    return words;
}

std::string dashedName(const VireoFilter& filter) {
    std::string name = filter.fileName;
    std::ranges::replace(name, '_', '-');
    return name;
}

std::string serviceName(const VireoFilter& filter) {
    return chainService + std::string(".") + dashedName(filter);
}

std::optional<std::uint32_t> filterOf(const VireoEngine* engine, std::string_view service) {
    if (service == chainService) return std::nullopt;
    for (std::uint32_t filter = 0; filter < vireoFilterCount(engine); ++filter) {
        if (serviceName(describe(engine, filter)) == service) return filter;
    }
    throw Failure("there is no filter of the service " + std::string(service));
}

}  // namespace vireo::mlt
