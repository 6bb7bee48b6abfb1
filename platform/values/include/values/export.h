// Symbol visibility of the values library.
#pragma once

#if defined(_WIN32)
#if defined(VALUES_BUILD)
#define VALUES_EXPORT __declspec(dllexport)
#else
#define VALUES_EXPORT __declspec(dllimport)
#endif
#else
#define VALUES_EXPORT __attribute__((visibility("default")))
#endif
