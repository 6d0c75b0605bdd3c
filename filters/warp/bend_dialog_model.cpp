// SPDX-License-Identifier: MIT
#include "filters/warp/bend_dialog_model.h"

namespace Bend {

std::vector<std::string> listKeys(std::string_view bytes) {
    constexpr std::string_view ends("\0\r", 2);
    std::vector<std::string> keys;
    while (!bytes.empty()) {
        const std::string_view key = bytes.substr(0, bytes.find_first_of(ends));
        if (key.empty()) break;
        keys.emplace_back(key);
        bytes.remove_prefix(std::min(bytes.size(), key.size() + 1));
    }
    return keys;
}

std::u16string listItem(std::u16string text) {
    text.erase(text.find_last_not_of(u"\\0") + 1);
    return text;
}

}  // namespace Bend
