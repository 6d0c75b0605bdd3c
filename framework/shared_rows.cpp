// SPDX-License-Identifier: MIT
#include "framework/shared_rows.h"

#include "framework/cached_suite.h"

namespace {

/// Fewer rows are rendered before other threads are awake.
constexpr std::int32_t leastRows = 32;

CachedSuite taskSuite(VIREO_TASK_SUITE, 1);

}  // namespace

void shareRows(std::int32_t rows, RowsTask* task, void* render) {
    const auto* const suite = static_cast<const TaskSuite*>(taskSuite.find());
    if (suite == nullptr || suite->share.get()(task, render, rows, leastRows) < 0) task(render, 0, rows);
}
