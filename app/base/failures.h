// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_FAILURES_H
#define VIREO_APP_BASE_FAILURES_H

#include <exception>
#include <string>

namespace vireo {

/// What went wrong, as a sentence.
std::string sentenceOf(const std::exception& failure);

/// The program's exit status for it.
int statusOf(const std::exception& failure);

/// Lets the program end with a sentence and status 1 where memory is short and nothing can be thrown.
void endInWordsWithoutMemory();

}  // namespace vireo

#endif
