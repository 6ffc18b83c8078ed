#pragma once

/// Marks what the shared library exports.
#if defined(_WIN32)
#if defined(TNV_SAMPLEBENCH_BUILD)
#define TNV_SAMPLEBENCH_API __declspec(dllexport)
#else
#define TNV_SAMPLEBENCH_API __declspec(dllimport)
#endif
#else
#define TNV_SAMPLEBENCH_API __attribute__((visibility("default")))
#endif
