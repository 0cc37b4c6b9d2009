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

KELVO_EXTERN_C_BEGIN

/* Points, in field units unless a function says otherwise. */
typedef struct vlPoint2D {
  double X, Y;
} vlPoint2D;
typedef struct vlPoint3D {
  double X, Y, Z;
} vlPoint3D;
typedef struct vlPoint2DInt {
  int32_t X, Y;
} vlPoint2DInt;
typedef struct vlPoint3DInt {
  int32_t X, Y, Z;
} vlPoint3DInt;

/* Values for x, y, z and the magnification. */
typedef struct vlPointXYZM {
  double X, Y, Z, M;
} vlPointXYZM;

/* An affine map x' = A x + b; A[row][column]. */
typedef struct vlTransform3D {
  double A[3][3];
  double b[3];
} vlTransform3D;

KELVO_STATIC_ASSERT(sizeof(vlPoint2D) == 16 && sizeof(vlPoint3D) == 24,
                    "the layout is part of the interface");
KELVO_STATIC_ASSERT(sizeof(vlPoint2DInt) == 8 && sizeof(vlPoint3DInt) == 12,
                    "the layout is part of the interface");
KELVO_STATIC_ASSERT(sizeof(vlPointXYZM) == 32 && sizeof(vlTransform3D) == 96,
                    "the layout is part of the interface");

KELVO_EXTERN_C_END

#endif
