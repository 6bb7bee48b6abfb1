// Symbol visibility of the zelvo library.
#pragma once

#if defined(_WIN32)
#if defined(ZELVO_BUILD)
#define ZELVO_EXPORT __declspec(dllexport)
#else
#define ZELVO_EXPORT __declspec(dllimport)
#endif
#else
#define ZELVO_EXPORT __attribute__((visibility("default")))
#endif
