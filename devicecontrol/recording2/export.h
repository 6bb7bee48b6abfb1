// Symbol visibility of the recording library. RECORDING2_STATIC is for tests that link the static core.
#pragma once

#if !defined(_WIN32)
#define RECORDING2_EXPORT __attribute__((visibility("default")))
#elif defined(RECORDING2_BUILD)
#define RECORDING2_EXPORT __declspec(dllexport)
#elif defined(RECORDING2_STATIC)
#define RECORDING2_EXPORT
#else
#define RECORDING2_EXPORT __declspec(dllimport)
#endif
