/* The process variables: speeds, delays, laser, power, transformation, sky-writing and wobble that hold at the start of
 * every list; list commands change them for the rest of a list (KelvoListAppendAPI.h). Conventions: kelvo.h;
 * configuration areas: KelvoConfigurationAPI.h.
 *
 * The library passes all values on as they are: their units are the card's own, those of the list commands that
 * change the same.
 */
#ifndef KELVO_PROCESS_API_H
#define KELVO_PROCESS_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* How many values an on-off pattern has room for. */
#define KELVO_ON_OFF_PATTERN_CAPACITY 64

/* Defaults are 0 and false where nothing else is said. */
typedef struct vlSkyWritingSettings {
  int32_t ConfigVersion; /* 4 */
  int32_t Mode;          /* vlSkyWritingMode_Disabled */
  double MinCoH;
  double MergedExtensionsMaxCoH; /* not a number: no limit is set; the default */
  double ExtensionTime;
  double AccelerationDelay;
  double DecelerationDelay;
  double LaserOnDelay;
  double LaserOffDelay;
} vlSkyWritingSettings;

/* While marking, x and y swing by Amplitude * sin(2 pi Frequency t + Phase). */
typedef struct vlWobbleSettings {
  int32_t ConfigVersion; /* 1 */
  vlPoint2D Amplitude;   /* (0, 0) */
  vlPoint2D Frequency;   /* (0.0001, 0.0001) */
  vlPoint2D Phase;       /* (0, a quarter turn: 1.5707963267948966) */
} vlWobbleSettings;

/* The lengths of dashed lines, on and off by turns. */
typedef struct vlOnOffPattern {
  uint32_t Count;
  double Items[KELVO_ON_OFF_PATTERN_CAPACITY];
} vlOnOffPattern;

/* Defaults are 0 and false where nothing else is said. A field that ends in 1 is that of the second power channel. */
typedef struct vlProcessVariables {
  int32_t ConfigVersion; /* 18 */
  double SpeedScale;     /* 1 */
  double JumpSpeed;      /* 1 */
  double JumpDelay;
  bool EnableVariableJumpDelay;
  double MinJumpDelay;
  double JumpLengthLimit;
  double MarkSpeed; /* 1 */
  double MarkDelay;
  double MagnificationSpeed; /* 5e-07 */
  bool EnableVariablePolyDelay;
  double PolyDelay;
  double LaserOnDelay;
  double LaserOffDelay;
  double MaxDwellTime; /* 1000; in the text it stands behind PolyDelay */
  double LmFrequency;  /* 0.1 */
  double LmWidth;      /* 1 */
  uint16_t Power;
  uint16_t Power1;
  vlTransform3D Transformation; /* the identity */
  vlPoint3D HeadingScale;       /* (1, 1, 1) */
  double TileOffset;
  vlOnOffPattern OnOffPattern; /* empty */
  bool EnableDashedLine;
  double EvaluationLeadTime;
  vlSkyWritingSettings SkyWriting; /* its defaults */
  vlWobbleSettings Wobble;         /* its defaults */
} vlProcessVariables;

KELVO_STATIC_ASSERT(sizeof(vlSkyWritingSettings) == 64 && sizeof(vlWobbleSettings) == 56,
                    "the layout is part of the interface");
KELVO_STATIC_ASSERT(sizeof(vlOnOffPattern) == 520 && sizeof(vlProcessVariables) == 928,
                    "the layout is part of the interface");

/* Fills `*variables` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlProcessInitVariables(vlProcessVariables* variables);
/* Fetches the card's active variables. Returns 0, or -1 with "Too much OnOffPattern values" when the struct has no room
 * for the card's. Remote. */
KELVO_API int32_t vlProcessGetVariables(int32_t handle, vlProcessVariables* variables);
/* Sends the variables; they become the active ones. Returns 0, or -1 with "Illegal number of OnOffPattern values" when
 * the count is greater than KELVO_ON_OFF_PATTERN_CAPACITY; nothing is sent then. Remote. */
KELVO_API int32_t vlProcessSetVariables(int32_t handle, const vlProcessVariables* variables);
/* Makes the card take its stored variables as the active ones. Returns 0 or -1. Remote. */
KELVO_API int32_t vlProcessLoadVariables(int32_t handle);
/* Makes the card store the active variables. Returns 0 or -1. Remote. */
KELVO_API int32_t vlProcessStoreVariables(int32_t handle);
/* Writes the variables as text into `buffer` of `size` bytes. Returns 0, or -1 also as vlProcessSetVariables. Local. */
KELVO_API int32_t vlProcessToStringVariables(const vlProcessVariables* variables, char* buffer, uint32_t size,
                                             uint32_t* length);

/* Writes the factor of all speeds to `*scale`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlProcessGetSpeedScale(int32_t handle, double* scale);
/* Sets the factor of all speeds. Returns 0 or -1. Remote. */
KELVO_API int32_t vlProcessSetSpeedScale(int32_t handle, double scale);
/* Writes the transformation of the field to `*transformation`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlProcessGetTransformation(int32_t handle, vlTransform3D* transformation);
/* Sets the transformation of the field. Returns 0 or -1. Remote. */
KELVO_API int32_t vlProcessSetTransformation(int32_t handle, const vlTransform3D* transformation);

/* Fills `*wobble` with a circle, as vlListAppendWobbleCircle makes one. Returns 0 or -1. Local. */
KELVO_API int32_t vlProcessWobbleSetCircle(vlWobbleSettings* wobble, double amplitude, double frequency);
/* Fills `*wobble` with a figure eight, as vlListAppendWobbleEight makes one. Returns 0 or -1. Local. */
KELVO_API int32_t vlProcessWobbleSetEight(vlWobbleSettings* wobble, double amplitude_x, double amplitude_y,
                                          double frequency);

KELVO_EXTERN_C_END

#endif
