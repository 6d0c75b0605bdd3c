// SPDX-License-Identifier: MIT
// vireo list: the filters.
#include "app/commands/commands.h"
#include "app/commands/filter_json.h"
#include "app/commands/table.h"

#include <iostream>
#include <memory>

namespace vireo {
namespace {

void listFilters(const Catalogue& catalogue, bool asJson) {
    if (asJson) {
        nlohmann::ordered_json list = nlohmann::ordered_json::array();
        for (const hosting::Filter& filter : catalogue.filters()) list.push_back(filterJson(filter));
        std::cout << list.dump(2) << '\n';
        return;
    }
    std::vector<TableRow> rows{{"Id", "Name", "Category", "Parameters", "Match name"}};
    for (const hosting::Filter& filter : catalogue.filters()) {
        const hosting::PropertyList& properties = filter.properties;
        rows.push_back({std::to_string(filter.id), localised(properties.nameKey),
                        localised(properties.categoryKey), std::to_string(properties.parameters.size()),
                        properties.matchName});
    }
    printTable(rows, "", 1);
}

}  // namespace

void addListCommand(CommandSet& commands) {
    const auto json = std::make_shared<bool>(false);
    CLI::App& command = commands.add("list", "List the filters", [json](Session& session) {
        listFilters(session.catalogue(), *json);
        return 0;
    });
    command.add_flag("--json", *json, "As JSON");
    command.footer("Examples:\n  vireo list\n  vireo list --language de\n  vireo list --json");
}

}  // namespace vireo
