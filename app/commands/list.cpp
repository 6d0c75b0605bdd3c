// SPDX-License-Identifier: MIT
// vireo list: the filters, or what outputs can be written with.
#include "app/commands/commands.h"
#include "app/commands/filter_json.h"
#include "app/commands/table.h"
#include "app/media/format_lists.h"

#include <iostream>
#include <memory>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

/// The same list for people and for programs.
struct Listing {
    std::vector<TableRow> rows;
    Json json = Json::array();
    std::size_t nameColumn = 0;
};

Listing filters(const Catalogue& catalogue) {
    Listing listing{{{"Id", "Name", "Category", "Parameters", "Match name"}}};
    listing.nameColumn = 1;
    for (const hosting::Filter& filter : catalogue.filters()) {
        const hosting::PropertyList& properties = filter.properties;
        listing.json.push_back(filterJson(filter));
        listing.rows.push_back({std::to_string(filter.id), localised(properties.nameKey),
                                localised(properties.categoryKey),
                                std::to_string(properties.parameters.size()), properties.matchName});
    }
    return listing;
}

const char* yesNo(bool value) { return value ? "yes" : "no"; }

Listing encoders() {
    Listing listing{{{"Encoder", "Codec", "Bits", "Alpha", "Description"}}};
    for (const ListedEncoder& encoder : listEncoders()) {
        const bool takesAny = encoder.pixelFormats.empty();
        listing.rows.push_back({encoder.name, encoder.codec, takesAny ? "any" : std::to_string(encoder.depth),
                                takesAny ? "any" : yesNo(encoder.alpha), encoder.description});
        listing.json.push_back({{"name", encoder.name},
                                {"codec", encoder.codec},
                                {"description", encoder.description},
                                {"pixelFormats", takesAny ? Json() : Json(encoder.pixelFormats)}});
    }
    return listing;
}

Listing formats() {
    Listing listing{{{"Format", "Endings", "Encoder", "With alpha", "Description"}}};
    for (const ListedFormat& format : listFormats()) {
        std::string endings;
        for (const std::string& ending : format.endings) endings += (endings.empty() ? "" : " ") + ending;
        listing.rows.push_back(
            {format.name, endings, format.encoder, format.alphaEncoder, format.description});
        listing.json.push_back({{"name", format.name},
                                {"kind", format.isPicture ? "picture" : "video"},
                                {"endings", format.endings},
                                {"encoder", format.encoder},
                                {"alphaEncoder", format.alphaEncoder},
                                {"description", format.description}});
    }
    return listing;
}

Listing pixelFormats() {
    Listing listing{{{"Pixel format", "Model", "Bits", "Alpha"}}};
    for (const ListedPixelFormat& format : listPixelFormats()) {
        listing.rows.push_back(
            {format.name, format.model, std::to_string(format.depth), yesNo(format.alpha)});
        listing.json.push_back({{"name", format.name},
                                {"model", format.model},
                                {"bits", format.depth},
                                {"alpha", format.alpha}});
    }
    return listing;
}

struct ListOptions {
    bool json = false;
    bool encoders = false, formats = false, pixelFormats = false;
};

void list(Session& session, const ListOptions& options) {
    const Listing listing = options.encoders       ? encoders()
                            : options.formats      ? formats()
                            : options.pixelFormats ? pixelFormats()
                                                   : filters(session.catalogue());
    if (options.json) {
        std::cout << listing.json.dump(2) << '\n';
    } else {
        printTable(listing.rows, "", listing.nameColumn);
    }
}

}  // namespace

void addListCommand(CommandSet& commands) {
    const auto options = std::make_shared<ListOptions>();
    CLI::App& command = commands.add("list", "List the filters, or what outputs are written with",
                                     [options](Session& session) {
                                         list(session, *options);
                                         return 0;
                                     });
    CLI::Option* encoders =
        command.add_flag("--encoders", options->encoders, "The video encoders that --encoder takes");
    CLI::Option* formats =
        command.add_flag("--formats", options->formats,
                         "The formats by the endings of names, and the words that --format takes");
    CLI::Option* pixelFormats = command.add_flag("--pixel-formats", options->pixelFormats,
                                                 "The pixel formats that --pixel-format takes");
    encoders->excludes(formats)->excludes(pixelFormats);
    formats->excludes(pixelFormats);
    command.add_flag("--json", options->json, "As JSON");
    command.footer(
        "Examples:\n  vireo list\n  vireo list --language de\n  vireo list --json\n"
        "  vireo list --encoders\n  vireo list --formats --json");
}

}  // namespace vireo
