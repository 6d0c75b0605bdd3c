// SPDX-License-Identifier: MIT
#include "host/vrm/meta_plugin.h"

#include <iostream>

int main(int, char** arguments) {
    const VRM::MetaPlugin module(arguments[1]);
    for (const VRM::Filter& filter : module.filters()) std::cout << filter.properties.name << '\n';
}
