// SPDX-License-Identifier: MIT
/**
 * @file
 * How the functions are declared: C linkage, and the import or visibility attribute.
 */
#ifndef VEKCH_EXPORT_H
#define VEKCH_EXPORT_H

/** Programs that link the static archive on Windows define VEKCH_STATIC. */
#if defined(_WIN32) && !defined(VEKCH_BUILD) && !defined(VEKCH_STATIC)
#define VEKCH_API __declspec(dllimport)
#elif defined(_WIN32)
#define VEKCH_API
#else
#define VEKCH_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define VEKCH_BEGIN_DECLS extern "C" {
#define VEKCH_END_DECLS }
#define VEKCH_NOEXCEPT noexcept
#else
#define VEKCH_BEGIN_DECLS
#define VEKCH_END_DECLS
#define VEKCH_NOEXCEPT
#endif

#endif
