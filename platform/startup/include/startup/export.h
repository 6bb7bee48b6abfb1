// Symbol visibility of the startup library.
#pragma once

#if defined(_WIN32)
#if defined(STARTUP_BUILD)
#define STARTUP_EXPORT __declspec(dllexport)
#else
#define STARTUP_EXPORT __declspec(dllimport)
#endif
#else
#define STARTUP_EXPORT __attribute__((visibility("default")))
#endif
