// SPDX-License-Identifier: MIT
.pragma library

/** Of texts by their language, the one of the user's, else the English one. */
function text(texts) {
    return texts[Qt.locale().name.slice(0, 2)] || texts.en;
}
