// SPDX-License-Identifier: MIT
#include "host/qrb/language.h"

#include "host/vireo_host.h"

#include <atomic>

namespace {

std::atomic<std::uint16_t> language{QRB::makeLanguageID(QRB::kSubLanguage_Default, QRB::kLanguage_English)};

}  // namespace

namespace QRB {

std::uint16_t GetLanguageID() { return language; }

}  // namespace QRB

void vireoHostSetLanguage(std::uint16_t value) { language = value; }
