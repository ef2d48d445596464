// KORASSOC_EXPORT marks what the shared library shows to its hosts; everything else stays hidden.

#pragma once

#if defined(KORASSOC_STATIC)
#define KORASSOC_EXPORT
#elif defined(_WIN32)
#if defined(KORASSOC_BUILDING)
#define KORASSOC_EXPORT __declspec(dllexport)
#else
#define KORASSOC_EXPORT __declspec(dllimport)
#endif
#else
#define KORASSOC_EXPORT __attribute__((visibility("default")))
#endif
