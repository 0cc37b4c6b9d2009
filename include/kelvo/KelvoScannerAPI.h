/* The scanner: its configuration, the formats of scan heads, where the heads are, their bias, and messages to them.
 * Conventions: kelvo.h; configuration areas: KelvoConfigurationAPI.h.
 *
 * Field size, scan-head delay and the times of axes are in the card's own units, and heads have the card's own numbers,
 * from 0: the library passes them on.
 *
 * Axes are those of vlAxis, sets of axes combinations of vlAxes. In texts, a set that has no name of its own is the
 * names of its axes, as in "X|Z".
 *
 * A struct that is a list has room for a fixed number of Items, of which Count are there. When the card has more,
 * a function fails with "Error converting NAME to C."; a Count that is larger than that room fails with "Error
 * converting NAME from C.". NAME is ScannerConfig, ScanHeadConfig, ScannerPositions or ScannerMonitoringConfig.
 */
#ifndef KELVO_SCANNER_API_H
#define KELVO_SCANNER_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* Flags of which formats of scan heads are made. The first three are the protocol of the heads, in bits 0 and 1. */
typedef enum vlSHFlags {
  vlSHFlags_XY2 = 0,        /* protocol XY2 */
  vlSHFlags_SL2 = 1,        /* protocol SL2 */
  vlSHFlags_VL3 = 2,        /* protocol VL3 */
  vlSHFlags_Defocus = 4,    /* the fourth dimension moves no axis of its own */
  vlSHFlags_SingleHead = 0, /* one head */
  vlSHFlags_DualHead = 8,   /* two heads */
  vlSHFlags_Auxiliary = 16, /* vlAxis_Auxiliary */
  vlSHFlags_Extended = 32,  /* vlAxis_SensorZ */
  vlSHFlags_FourD = 64,     /* four dimensions; without Defocus, vlAxis_ZoomZ */
} vlSHFlags;

/* Formats of scan heads: of the combinations of vlSHFlags those that there are. In the names, D is the number of
 * dimensions, F stands for Defocus, X for Extended, A for Auxiliary. Axes stand in the order of their indices. */
typedef enum vlScanHeadFormat {
  vlScanHeadFormat_XY2_Single3D = 0,      /* one head: x y z; 3 dimensions */
  vlScanHeadFormat_XY2_Dual3D = 8,        /* two heads: x y z; 3 dimensions */
  vlScanHeadFormat_SL2_Single3D = 1,      /* one head: x y z; 3 dimensions */
  vlScanHeadFormat_SL2_Single3DX = 33,    /* one head: x y z sensor; 3 dimensions */
  vlScanHeadFormat_SL2_Single3DA = 17,    /* one head: x y z auxiliary; 3 dimensions */
  vlScanHeadFormat_SL2_Single4DF = 69,    /* one head: x y z; 4 dimensions */
  vlScanHeadFormat_SL2_Single4DFX = 101,  /* one head: x y z sensor; 4 dimensions */
  vlScanHeadFormat_SL2_Single4DFA = 85,   /* one head: x y z auxiliary; 4 dimensions */
  vlScanHeadFormat_SL2_Single4D = 65,     /* one head: x y z zoom; 4 dimensions */
  vlScanHeadFormat_SL2_Dual2D = 9,        /* two heads: x y; 2 dimensions */
  vlScanHeadFormat_VL3_Single3D = 2,      /* one head: x y z; 3 dimensions */
  vlScanHeadFormat_VL3_Single3DX = 34,    /* one head: x y z sensor; 3 dimensions */
  vlScanHeadFormat_VL3_Single3DA = 18,    /* one head: x y z auxiliary; 3 dimensions */
  vlScanHeadFormat_VL3_Single3DXA = 50,   /* one head: x y z auxiliary sensor; 3 dimensions */
  vlScanHeadFormat_VL3_Single4DF = 70,    /* one head: x y z; 4 dimensions */
  vlScanHeadFormat_VL3_Single4DFX = 102,  /* one head: x y z sensor; 4 dimensions */
  vlScanHeadFormat_VL3_Single4DFA = 86,   /* one head: x y z auxiliary; 4 dimensions */
  vlScanHeadFormat_VL3_Single4DFXA = 118, /* one head: x y z auxiliary sensor; 4 dimensions */
  vlScanHeadFormat_VL3_Single4D = 66,     /* one head: x y z zoom; 4 dimensions */
  vlScanHeadFormat_VL3_Single4DX = 98,    /* one head: x y z zoom sensor; 4 dimensions */
  vlScanHeadFormat_VL3_Single4DA = 82,    /* one head: x y z zoom auxiliary; 4 dimensions */
  vlScanHeadFormat_VL3_Single4DXA = 114,  /* one head: x y z zoom auxiliary sensor; 4 dimensions */
  vlScanHeadFormat_VL3_Dual3D = 10,       /* two heads: x y z; 3 dimensions */
} vlScanHeadFormat;

/* An axis of a head. */
typedef struct vlScanHeadAxis {
  double AccelerationTime; /* 0; how long it takes to reach its speed */
  double TrackingError;    /* 0; by how much it lags */
  double HeadBias;         /* 0; what is added to its positions */
} vlScanHeadAxis;

/* In the order of the axes' indices in the head format. */
typedef struct vlScanHeadAxisList {
  uint32_t Count;          /* 3; how many there are, 0 to 6 */
  vlScanHeadAxis Items[6]; /* the axes */
} vlScanHeadAxisList;

/* A head. */
typedef struct vlScanHeadConfig {
  int32_t AxisCount;            /* 3: that of the head format */
  int32_t ConfigVersion;        /* 10 */
  vlTransform3D FieldTransform; /* the identity; maps this head's positions */
  vlScanHeadAxisList Axes;      /* one for each of the AxisCount axes */
  bool EnableFieldCorrection;   /* false; whether its correction is used (KelvoHeadCorrectionAPI.h) */
} vlScanHeadConfig;

/* Heads. */
typedef struct vlScanHeadList {
  uint32_t Count;            /* 1; how many there are, 0 to 2 */
  vlScanHeadConfig Items[2]; /* the heads, 0 first */
} vlScanHeadList;

/* Whoever changes the head format changes the number of heads and axes with it (vlScannerConfigSetHeadFormat). */
typedef struct vlScannerConfig {
  int32_t ConfigVersion;   /* 12 */
  vlPoint3D FieldSize;     /* (65536, 65536, 1); of the whole field */
  double MaxMagnification; /* 1; the largest magnification of the optics */
  int32_t HeadCount;       /* 1: that of the head format */
  vlScanHeadList Heads;    /* one for each of the HeadCount heads */
  double ScanHeadDelay;    /* 0; how long a head needs until it follows */
  int32_t HeadFormat;      /* vlScanHeadFormat_SL2_Single3D; what heads there are */
} vlScannerConfig;

/* An entry for each head: which of its axes, as a combination of vlAxes. A number with other bits fails with
 * "Axes::_from_integral: invalid argument". */
typedef struct vlScanHeadAxes {
  uint32_t Count;   /* how many heads there are, 0 to 2 */
  int32_t Items[2]; /* the axes of each */
} vlScanHeadAxes;

/* How the card watches its scan heads; a part of the system configuration. */
typedef struct vlScannerMonitoringConfig {
  int32_t ConfigVersion;         /* 2 */
  bool Enabled;                  /* false; whether heads are watched */
  bool UsePingPong;              /* false; whether both commands are sent by turns */
  uint32_t Command;              /* 21120; what a head is asked */
  uint32_t Mask;                 /* 11136; which bits of its answer count */
  uint32_t GoodValue;            /* 11136; what they are when all is well */
  uint32_t Command1;             /* 0; the second question */
  uint32_t Mask1;                /* 0; which bits of its answer count */
  uint32_t GoodValue1;           /* 0; what they are when all is well */
  uint32_t Period;               /* 1000; how often heads are asked */
  uint32_t MinConsecutiveErrors; /* 3; so many wrong answers in a row are an error */
  bool ContinueOnError;          /* false; whether a list runs on then */
  vlScanHeadAxes ScanHeadAxes;   /* one entry, vlAxes_XY */
} vlScannerMonitoringConfig;

/* The positions of a head's axes, in the order of the axes' indices in the head format. */
typedef struct vlScanHeadPositions {
  uint32_t Count;  /* how many there are, 0 to 6 */
  double Items[6]; /* the positions, in field units */
} vlScanHeadPositions;

/* The positions of heads. */
typedef struct vlScanHeadPositionsList {
  uint32_t Count;               /* how many there are, 0 to 2 */
  vlScanHeadPositions Items[2]; /* those of each head, 0 first */
} vlScanHeadPositionsList;

/* Where the heads are. */
typedef struct vlScannerPositions {
  vlScanHeadPositionsList Heads; /* a list of positions for each head */
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

/* Makes `format` (vlScanHeadFormat) the head format of `*config`, with the number of heads and of their axes that it
 * has: what there is too much goes, heads and axes that are new have their defaults, those that stay keep their values.
 * What the head format was is not looked at. Returns 0, or -1 with "Unknown head format", or as vlScannerSetConfig, and
 * changes nothing then. Local. */
KELVO_API int32_t vlScannerConfigSetHeadFormat(vlScannerConfig* config, int32_t format);

/* ---- Positions and bias ---- */

/* Writes where the heads ought to be, in field units. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerGetNominalPosition(int32_t handle, double* x, double* y, double* z);
/* Makes the card ask its heads where they are. Returns 0, or -1 with "Out parameter must not be null". Remote. */
KELVO_API int32_t vlScannerReadPositions(int32_t handle, vlScannerPositions* positions);
/* Writes what the heads told the last time. Returns 0, or -1 with "Out parameter must not be null". Remote. */
KELVO_API int32_t vlScannerReadLastPositions(int32_t handle, vlScannerPositions* positions);
/* Writes the bias of a head's x, y and z axes. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerGetHeadBias(int32_t handle, uint32_t head, vlPoint3D* bias);
/* Sets the bias of a set of a head's axes (vlAxes): a value for each, in the order of vlAxis. Returns 0 or -1.
 * Remote. */
KELVO_API int32_t vlScannerSetHeadBias(int32_t handle, uint32_t head, uint32_t axes, const double* values,
                                       uint32_t count);

/* ---- Formats of scan heads ----
 *
 * `format` is one of vlScanHeadFormat. Each function fails with "Out parameter must not be null" for a null result
 * pointer, whatever the format. */

/* Writes the number of heads. Returns 0, or -1 with "Unknown head format". Local. */
KELVO_API int32_t vlScannerHeadFormatGetHeadCount(int32_t format, int32_t* count);
/* Writes the number of axes of a head. Returns 0, or -1 with "Unknown head format". Local. */
KELVO_API int32_t vlScannerHeadFormatGetAxisCount(int32_t format, int32_t* count);
/* Writes the index of `axis` (vlAxis) among the format's axes, which are in the order of vlAxis. Returns 0,
 * or -1 with "Axis::_from_integral: invalid argument", "Unknown head format." or "The head format has no such axis.".
 * Local. */
KELVO_API int32_t vlScannerHeadFormatGetIndexOfAxis(int32_t format, int32_t axis, int32_t* index);
/* Writes the axis (vlAxis) at an index. Returns 0, or -1 with "Unknown head format." or "The head format has no
 * such axis.". Local. */
KELVO_API int32_t vlScannerHeadFormatGetAxisAtIndex(int32_t format, int32_t index, int32_t* axis);
/* Writes the number of dimensions: 2, 3 or 4. Returns 0, or -1 with "Unknown head format". Local. */
KELVO_API int32_t vlScannerHeadFormatGetDimensions(int32_t format, int32_t* dimensions);
/* Writes the set of a head's axes (vlAxes). Returns 0, or -1 with "Unknown head format." (here with a full stop).
 * Local. */
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

/* Sends a message of `length` bytes to `axis` (vlAxis). Returns 0, or -1 ("Axis::_from_integral: invalid argument").
 * Remote. */
KELVO_API int32_t vlScannerCommunicationTransmitVeltro(int32_t handle, uint32_t head, uint32_t axis,
                                                       const uint8_t* message, uint32_t length,
                                                       uint32_t timeout);
/* The same, and fetches the answer. Returns as vlScannerCommunicationTransmitVeltro. Remote. */
KELVO_API int32_t vlScannerCommunicationTransceiveVeltro(int32_t handle, uint32_t head, uint32_t axis,
                                                         const uint8_t* message, uint32_t length,
                                                         uint8_t* answer, uint32_t capacity, uint32_t* count,
                                                         uint32_t timeout);
/* Sends `length` commands to a set of axes (vlAxes). Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerCommunicationTransmitEnhanced(int32_t handle, uint32_t head, uint32_t axes,
                                                         const uint32_t* commands, uint32_t length,
                                                         uint32_t timeout);
/* Fetches the answer of a set of axes (vlAxes). Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerCommunicationReceiveEnhanced(int32_t handle, uint32_t head, uint32_t axes,
                                                        uint32_t* answer, uint32_t capacity, uint32_t* count,
                                                        uint32_t timeout);
/* Sends `length` commands to a set of axes (vlAxes) and fetches the answer. Returns 0 or -1. Remote. */
KELVO_API int32_t vlScannerCommunicationTransceiveEnhanced(int32_t handle, uint32_t head, uint32_t axes,
                                                           const uint32_t* commands, uint32_t length,
                                                           uint32_t* answer, uint32_t capacity,
                                                           uint32_t* count, uint32_t timeout);

KELVO_EXTERN_C_END

#endif
