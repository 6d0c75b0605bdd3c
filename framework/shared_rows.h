// SPDX-License-Identifier: MIT
// Rows of a frame that a host's threads render side by side. The module starts no thread.
#ifndef VIREO_FRAMEWORK_SHARED_ROWS_H
#define VIREO_FRAMEWORK_SHARED_ROWS_H

#include <cstdint>

using RowsTask = void(void* render, std::int32_t begin, std::int32_t end);

/// Calls task(render, begin, end) for parts of [0, rows) that leave no row out, and returns when all are
/// done.
void shareRows(std::int32_t rows, RowsTask* task, void* render);

/// Calls render(begin, end) so: on several threads at once where the host offers VIREO_TASK_SUITE and has
/// some, else once for all rows. It throws nothing.
template <class Render>
void shareRows(std::int32_t rows, const Render& render) {
    const auto task = [](void* given, std::int32_t begin, std::int32_t end) {
        (*static_cast<const Render*>(given))(begin, end);
    };
    shareRows(rows, task, const_cast<Render*>(&render));
}

#endif
