/* Types, enumerations and macros that several headers of the library share. Plain C11, also valid C++17. */
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

/* A point or a vector in the plane, in field units unless a function says otherwise. */
typedef struct vlPoint2D {
  double X; /* along x */
  double Y; /* along y */
} vlPoint2D;
/* A point or a vector in space. */
typedef struct vlPoint3D {
  double X; /* along x */
  double Y; /* along y */
  double Z; /* along z */
} vlPoint3D;
/* A position in the plane, in the card's own increments. */
typedef struct vlPoint2DInt {
  int32_t X; /* along x */
  int32_t Y; /* along y */
} vlPoint2DInt;
/* One in space. */
typedef struct vlPoint3DInt {
  int32_t X; /* along x */
  int32_t Y; /* along y */
  int32_t Z; /* along z */
} vlPoint3DInt;

/* Values for x, y, z and the magnification. */
typedef struct vlPointXYZM {
  double X; /* that for x */
  double Y; /* that for y */
  double Z; /* that for z */
  double M; /* that for the magnification */
} vlPointXYZM;

/* An affine map x' = A x + b; A[row][column]. */
typedef struct vlTransform3D {
  double A[3][3]; /* its matrix */
  double b[3];    /* what it adds */
} vlTransform3D;

/* The axes of a scan head. */
typedef enum vlAxis {
  vlAxis_X = 0,         /* x */
  vlAxis_Y = 1,         /* y */
  vlAxis_Z = 2,         /* z */
  vlAxis_ZoomZ = 3,     /* the zoom of the optics */
  vlAxis_Auxiliary = 4, /* the auxiliary axis */
  vlAxis_SensorZ = 5,   /* the sensor of z */
} vlAxis;

/* Sets of axes: flags, of which any combination is a value. Axis N is 1 << N. */
typedef enum vlAxes {
  vlAxes_None = 0x00,      /* no axis */
  vlAxes_X = 0x01,         /* vlAxis_X */
  vlAxes_Y = 0x02,         /* vlAxis_Y */
  vlAxes_Z = 0x04,         /* vlAxis_Z */
  vlAxes_ZoomZ = 0x08,     /* vlAxis_ZoomZ */
  vlAxes_Auxiliary = 0x10, /* vlAxis_Auxiliary */
  vlAxes_SensorZ = 0x20,   /* vlAxis_SensorZ */
  vlAxes_XY = 0x03,        /* x and y */
  vlAxes_XYZ = 0x07,       /* x, y and z */
} vlAxes;

/* The outputs that the power of the laser can go to. */
typedef enum vlPowerTarget {
  vlPowerTarget_None = 0,         /* none */
  vlPowerTarget_Dac0 = 1,         /* the first analogue output */
  vlPowerTarget_Dac1 = 2,         /* the second analogue output */
  vlPowerTarget_Digital1Bit = 3,  /* the digital output, one bit of it */
  vlPowerTarget_Digital2Bit = 4,  /* two bits of it */
  vlPowerTarget_Digital8Bit = 5,  /* eight bits of it */
  vlPowerTarget_Digital16Bit = 6, /* sixteen bits of it */
  vlPowerTarget_LmFrequency = 11, /* the frequency of the laser modulation */
  vlPowerTarget_LmWidth = 12,     /* the pulse width of the laser modulation */
} vlPowerTarget;

/* Where sky-writing adds run-ups and run-outs. */
typedef enum vlSkyWritingMode {
  vlSkyWritingMode_Disabled = 0,           /* nowhere */
  vlSkyWritingMode_ForceAtStartFinish = 1, /* at the start and the finish of every run of marks */
  vlSkyWritingMode_MinimumCoH = 2, /* also at corners where the cosine of the turn is below the minimum */
} vlSkyWritingMode;

KELVO_STATIC_ASSERT(sizeof(vlPoint2D) == 16 && sizeof(vlPoint3D) == 24,
                    "the layout is part of the interface");
KELVO_STATIC_ASSERT(sizeof(vlPoint2DInt) == 8 && sizeof(vlPoint3DInt) == 12,
                    "the layout is part of the interface");
KELVO_STATIC_ASSERT(sizeof(vlPointXYZM) == 32 && sizeof(vlTransform3D) == 96,
                    "the layout is part of the interface");

KELVO_EXTERN_C_END

#endif
