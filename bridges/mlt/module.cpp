// SPDX-License-Identifier: MIT
// What MLT calls when it loads libmltvireo.so.
#include "bridges/mlt/engine.h"
#include "bridges/mlt/service.h"

#include <filesystem>
#include <string>

namespace {

// Opened when MLT asks for the services, closed with MLT.
const VireoEngine* engine = nullptr;

void* create(mlt_profile, mlt_service_type, const char* service, const void* argument) {
    return vireo::mlt::makeFilter(engine, service, static_cast<const char*>(argument));
}

/// The description in the first of the user's languages that there is, else in English.
std::string descriptionOf(const std::string& service) {
    const std::string name = service.substr(service.find('.') + 1);
    const std::string path = std::string(mlt_environment("MLT_DATA")) + "/vireo/filter_" + name;
    const auto file = [&](const std::string& ending) { return path + ending + ".yml"; };
    mlt_properties languages = mlt_repository_languages(mlt_factory_repository());
    for (int i = 0; i < mlt_properties_count(languages); ++i) {
        const std::string language = std::string(mlt_properties_get_value(languages, i)).substr(0, 2);
        if (language == "en") break;
        const std::string translated = file('_' + language);
        std::error_code unreadable;
        if (std::filesystem::exists(translated, unreadable)) return translated;
    }
    return file("");
}

mlt_properties metadata(mlt_service_type, const char* service, void*) {
    return mlt_properties_parse_yaml(descriptionOf(service).c_str());
}

}  // namespace

extern "C" VIREO_API MLT_REPOSITORY {
    const auto add = [repository](const std::string& service) {
        MLT_REGISTER(mlt_service_filter_type, service.c_str(), create);
        MLT_REGISTER_METADATA(mlt_service_filter_type, service.c_str(), metadata, nullptr);
    };
    try {
        vireo::mlt::Engine opened = vireo::mlt::openEngine("en");
        for (std::uint32_t filter = 0; filter < vireoFilterCount(opened.get()); ++filter)
            add(vireo::mlt::serviceName(vireo::mlt::describe(opened.get(), filter)));
        add(vireo::mlt::chainService);
        engine = opened.get();
        mlt_factory_register_for_clean_up(opened.release(), [](void* closed) {
            vireoClose(static_cast<VireoEngine*>(closed));
            engine = nullptr;
        });
    } catch (const std::exception& error) {
        mlt_log_error(nullptr, "vireo: %s\n", error.what());
    }
}
