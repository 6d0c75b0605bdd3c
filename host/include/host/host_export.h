// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_HOST_EXPORT_H
#define VIREO_HOST_HOST_EXPORT_H

#if defined(_WIN32) && defined(VIREO_HOST_BUILD)
#define VIREO_HOST_API __declspec(dllexport)
#elif defined(_WIN32)
#define VIREO_HOST_API __declspec(dllimport)
#else
#define VIREO_HOST_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define VIREO_HOST_C extern "C" VIREO_HOST_API
#else
#define VIREO_HOST_C VIREO_HOST_API
#endif

#endif
