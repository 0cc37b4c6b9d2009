/* Types and macros that all headers of the library share. Plain C11, also valid C++17. */
#ifndef KELVO_TYPES_H
#define KELVO_TYPES_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
#define KELVO_EXTERN_C_BEGIN extern "C" {
#define KELVO_EXTERN_C_END }
#define KELVO_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define KELVO_EXTERN_C_BEGIN
#define KELVO_EXTERN_C_END
#define KELVO_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

#define KELVO_API __attribute__((visibility("default")))

#endif
