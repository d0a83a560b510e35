#pragma once

/// Marks the classes and functions that leave the shared library; everything else stays hidden.
#if defined(_WIN32)
#if defined(VELMORA_BUILDING)
#define VELMORA_EXPORT __declspec(dllexport)
#else
#define VELMORA_EXPORT __declspec(dllimport)
#endif
#else
#define VELMORA_EXPORT __attribute__((visibility("default")))
#endif
