// Symbol visibility of the base library.
#pragma once

#if defined(_WIN32)
#if defined(VKBASE_BUILD)
#define VKBASE_EXPORT __declspec(dllexport)
#else
#define VKBASE_EXPORT __declspec(dllimport)
#endif
#else
#define VKBASE_EXPORT __attribute__((visibility("default")))
#endif
