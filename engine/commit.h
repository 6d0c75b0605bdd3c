// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_COMMIT_H
#define VIREO_ENGINE_COMMIT_H

namespace vireo {

/// The commit that the program was built from, with "-modified" behind it where the sources differed, or
/// "unknown".
const char* builtFrom();

}  // namespace vireo

#endif
