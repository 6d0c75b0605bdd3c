// SPDX-License-Identifier: GPL-2.0-or-later
// The module's entry points.
#include "bridges/obs/engine.h"
#include "bridges/obs/filter.h"

#include <obs-module.h>

OBS_DECLARE_MODULE()
OBS_MODULE_USE_DEFAULT_LOCALE("vireo", "en-US")
OBS_MODULE_AUTHOR("Vireo developers")

const char* obs_module_name() { return "Vireo"; }

const char* obs_module_description() { return obs_module_text("Description"); }

bool obs_module_load() {
    if (!vireo::obs::openEngine(obs_get_locale())) {
        blog(LOG_ERROR, "[vireo] the filters are not there: %s", vireoLastError()->sentence);
        return false;
    }
    const obs_source_info info = vireo::obs::filterInfo();
    obs_register_source(&info);
    blog(LOG_INFO, "[vireo] version %s (%s)", vireoVersion(), vireoInstructionSet());
    return true;
}

void obs_module_unload() { vireo::obs::closeEngine(); }
