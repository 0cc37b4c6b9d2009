/* The scanner: its configuration, the formats of scan heads, where the heads are, their bias, and messages to them.
 * Conventions: kelvo.h; configuration areas: KelvoConfigurationAPI.h.
 *
 * Field size, scan-head delay and the times of axes are in the card's own units, and heads have the card's own numbers,
 * from 0: the library passes them on.
 *
 * Axes have numbers: 0 x, 1 y, 2 z, 3 zoom z, 4 auxiliary, 5 sensor z; in sets of axes (flags), axis N is 1 << N.
 * A struct that is a list has room for a fixed number of Items, of which Count are there. When the card has more,
 * a function fails with "Error converting NAME to C."; a Count that is larger than that room fails with "Error
 * converting NAME from C.". NAME is ScannerConfig, ScanHeadConfig, ScannerPositions or ScannerMonitoringConfig.
 */
#ifndef KELVO_SCANNER_API_H
#define KELVO_SCANNER_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

typedef struct vlScanHeadAxis {
  double AccelerationTime; /* 0 */
  double TrackingError;    /* 0 */
  double HeadBias;         /* 0 */
} vlScanHeadAxis;

/* In the order of the axes' indices in the head format. */
typedef struct vlScanHeadAxisList {
  uint32_t Count; /* 3 */
  vlScanHeadAxis Items[6];
} vlScanHeadAxisList;

typedef struct vlScanHeadConfig {
  int32_t AxisCount;            /* 3: that of the head format */
  int32_t ConfigVersion;        /* 10 */
  vlTransform3D FieldTransform; /* the identity */
  vlScanHeadAxisList Axes;      /* one for each of the AxisCount axes */
  bool EnableFieldCorrection;   /* false */
} vlScanHeadConfig;

typedef struct vlScanHeadList {
  uint32_t Count; /* 1 */
  vlScanHeadConfig Items[2];
} vlScanHeadList;

/* Whoever changes the head format changes the number of heads and axes with it (vlScannerHeadFormat...). */
typedef struct vlScannerConfig {
  int32_t ConfigVersion;   /* 12 */
  vlPoint3D FieldSize;     /* 65536, 65536, 1 */
  double MaxMagnification; /* 1 */
  int32_t HeadCount;       /* 1: that of the head format */
  vlScanHeadList Heads;    /* one for each of the HeadCount heads */
  double ScanHeadDelay;    /* 0 */
  int32_t HeadFormat;      /* 1, SL2_Single3D */
} vlScannerConfig;

/* An entry for each head: which of its axes, by one of 0 none, 1 x, 2 y, 3 x and y, 4 z, 7 x, y and z, 8 zoom z,
 * 16 auxiliary, 32 sensor z. */
typedef struct vlScanHeadAxes {
  uint32_t Count;
  int32_t Items[2];
} vlScanHeadAxes;

/* How the card watches its scan heads; a part of the system configuration. */
typedef struct vlScannerMonitoringConfig {
  int32_t ConfigVersion;         /* 2 */
  bool Enabled;                  /* false */
  bool UsePingPong;              /* false */
  uint32_t Command;              /* 21120 */
  uint32_t Mask;                 /* 11136 */
  uint32_t GoodValue;            /* 11136 */
  uint32_t Command1;             /* 0 */
  uint32_t Mask1;                /* 0 */
  uint32_t GoodValue1;           /* 0 */
  uint32_t Period;               /* 1000 */
  uint32_t MinConsecutiveErrors; /* 3 */
  bool ContinueOnError;          /* false */
  vlScanHeadAxes ScanHeadAxes;   /* one entry, x and y */
} vlScannerMonitoringConfig;

/* The positions of a head's axes, in the order of the axes' indices in the head format. */
typedef struct vlScanHeadPositions {
  uint32_t Count;
  double Items[6];
} vlScanHeadPositions;

typedef struct vlScanHeadPositionsList {
  uint32_t Count;
  vlScanHeadPositions Items[2];
} vlScanHeadPositionsList;

typedef struct vlScannerPositions {
  vlScanHeadPositionsList Heads;
} vlScannerPositions;

KELVO_STATIC_ASSERT(sizeof(vlScanHeadConfig) == 264 && sizeof(vlScannerConfig) == 600,
                    "the layout is part of the interface");
KELVO_STATIC_ASSERT(sizeof(vlScannerMonitoringConfig) == 56 && sizeof(vlScannerPositions) == 120,
                    "the layout is part of the interface");

/* Fills `*config` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlScannerInitConfig(vlScannerConfig* config);
/* Fetches the card's active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerGetConfig(int32_t handle, vlScannerConfig* config);
/* Sends the configuration; it becomes the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerSetConfig(int32_t handle, const vlScannerConfig* config);
/* Makes the card take its stored configuration as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerLoadConfig(int32_t handle);
/* Makes the card store the active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerStoreConfig(int32_t handle);
/* Writes the configuration as text into `buffer` of `size` bytes. Returns 0 or -1. Local. */
KELVO_API int32_t vlScannerToStringConfig(const vlScannerConfig* config, char* buffer, uint32_t size,
                                          uint32_t* length);

/* ---- Positions and bias ---- */

/* Writes where the heads ought to be, in field units. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerGetNominalPosition(int32_t handle, double* x, double* y, double* z);
/* Makes the card ask its heads where they are. Returns 0, or -1 with "Out parameter must not be null". Remote. */
KELVO_API int32_t vlScannerReadPositions(int32_t handle, vlScannerPositions* positions);
/* Writes what the heads told the last time. Returns 0, or -1 with "Out parameter must not be null". Remote. */
KELVO_API int32_t vlScannerReadLastPositions(int32_t handle, vlScannerPositions* positions);
/* Writes the bias of a head's x, y and z axes. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerGetHeadBias(int32_t handle, uint32_t head, vlPoint3D* bias);
/* Sets the bias of a set of a head's axes: a value for each, in the order of the axes' numbers. Returns 0 or -1.
 * Remote. */
KELVO_API int32_t vlScannerSetHeadBias(int32_t handle, uint32_t head, uint32_t axes, const double* values,
                                       uint32_t count);

/* ---- Formats of scan heads ----
 *
 * A format is a sum of flags: protocol 0 XY2, 1 SL2 or 2 VL3; 4 defocus; 8 two heads; 16 auxiliary axis; 32 extended;
 * 64 four dimensions. Of all sums these are formats:
 *   XY2: 0, 8;  SL2: 1, 9, 17, 33, 65, 69, 85, 101;
 *   VL3: 2, 10, 18, 34, 50, 66, 70, 82, 86, 98, 102, 114, 118.
 * Each function fails with "Out parameter must not be null" for a null result pointer, whatever the format. */

/* Writes the number of heads. Returns 0, or -1 with "Unknown head format". Local. */
KELVO_API int32_t vlScannerHeadFormatGetHeadCount(int32_t format, int32_t* count);
/* Writes the number of axes of a head. Returns 0, or -1 with "Unknown head format". Local. */
KELVO_API int32_t vlScannerHeadFormatGetAxisCount(int32_t format, int32_t* count);
/* Writes the index of axis number `axis` among the format's axes, which are in the order of their numbers. Returns 0,
 * or -1 with "Axis::_from_integral: invalid argument", "Unknown head format." or "The head format has no such axis.".
 * Local. */
KELVO_API int32_t vlScannerHeadFormatGetIndexOfAxis(int32_t format, int32_t axis, int32_t* index);
/* Writes the number of the axis at an index. Returns 0, or -1 with "Unknown head format." or "The head format has no
 * such axis.". Local. */
KELVO_API int32_t vlScannerHeadFormatGetAxisAtIndex(int32_t format, int32_t index, int32_t* axis);
/* Writes the number of dimensions: 2, 3 or 4. Returns 0, or -1 with "Unknown head format". Local. */
KELVO_API int32_t vlScannerHeadFormatGetDimensions(int32_t format, int32_t* dimensions);
/* Writes the set of a head's axes. Returns 0, or -1 with "Unknown head format." (here with a full stop). Local. */
KELVO_API int32_t vlScannerHeadFormatGetAxes(int32_t format, int32_t* axes);
/* Writes whether heads zoom by optics. Returns 0, or -1 with "Unknown head format". Local. */
KELVO_API int32_t vlScannerHeadFormatHasOpticalZoom(int32_t format, bool* zoom);
/* Writes whether the auxiliary flag is set, also in what is no format. Returns 0 or -1. Local. */
KELVO_API int32_t vlScannerHeadFormatHasAuxiliary(int32_t format, bool* auxiliary);
/* Writes whether the extended flag is set, also in what is no format. Returns 0 or -1. Local. */
KELVO_API int32_t vlScannerHeadFormatIsExtended(int32_t format, bool* extended);

/* ---- Messages to a head as they are ----
 *
 * `timeout` is how long the card waits for the head, in milliseconds; the connection's own time-out ought to be longer.
 * Answers go into `answer`, which has room for `capacity` elements, and their number to `*count`; when there are more,
 * the function fails with "Buffer is too small" (without a full stop) and writes nothing, though the head has got
 * the message. */

/* Sends a message of `length` bytes to axis number `axis`. Returns 0, or -1 ("Axis::_from_integral: invalid argument").
 * Remote. */
KELVO_API int32_t vlScannerCommunicationTransmitVeltro(int32_t handle, uint32_t head, uint32_t axis,
                                                       const uint8_t* message, uint32_t length,
                                                       uint32_t timeout);
/* The same, and fetches the answer. Returns as vlScannerCommunicationTransmitVeltro. Remote. */
KELVO_API int32_t vlScannerCommunicationTransceiveVeltro(int32_t handle, uint32_t head, uint32_t axis,
                                                         const uint8_t* message, uint32_t length,
                                                         uint8_t* answer, uint32_t capacity, uint32_t* count,
                                                         uint32_t timeout);
/* Sends `length` commands to a set of axes. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerCommunicationTransmitEnhanced(int32_t handle, uint32_t head, uint32_t axes,
                                                         const uint32_t* commands, uint32_t length,
                                                         uint32_t timeout);
/* Fetches the answer of a set of axes. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerCommunicationReceiveEnhanced(int32_t handle, uint32_t head, uint32_t axes,
                                                        uint32_t* answer, uint32_t capacity, uint32_t* count,
                                                        uint32_t timeout);
/* Sends `length` commands to a set of axes and fetches the answer. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerCommunicationTransceiveEnhanced(int32_t handle, uint32_t head, uint32_t axes,
                                                           const uint32_t* commands, uint32_t length,
                                                           uint32_t* answer, uint32_t capacity,
                                                           uint32_t* count, uint32_t timeout);

KELVO_EXTERN_C_END

#endif
