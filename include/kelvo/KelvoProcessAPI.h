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
  double MinCoH;         /* as vlListAppendSkyWritingMinCoH sets it */
  double
      MergedExtensionsMaxCoH; /* NaN; as vlListAppendSkyWritingMergedExtensionsMaxCoH sets it; NaN is no limit */
  double ExtensionTime;       /* as vlListAppendSkyWritingExtensionTime sets it */
  double AccelerationDelay; /* as vlListAppendSkyWritingAccelerationDelay sets it */
  double DecelerationDelay; /* as vlListAppendSkyWritingDecelerationDelay sets it */
  double LaserOnDelay;      /* as vlListAppendSkyWritingLaserOnDelay sets it */
  double LaserOffDelay;     /* as vlListAppendSkyWritingLaserOffDelay sets it */
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
  uint32_t Count;                              /* how many there are, 0 to KELVO_ON_OFF_PATTERN_CAPACITY */
  double Items[KELVO_ON_OFF_PATTERN_CAPACITY]; /* the lengths, that of the first dash first */
} vlOnOffPattern;

/* Defaults are 0 and false where nothing else is said. A field that ends in 1 is that of the second power channel. */
typedef struct vlProcessVariables {
  int32_t ConfigVersion;        /* 18 */
  double SpeedScale;            /* 1; as vlListAppendSpeedScale sets it */
  double JumpSpeed;             /* 1; as vlListAppendJumpSpeed sets it */
  double JumpDelay;             /* as vlListAppendJumpDelay sets it */
  bool EnableVariableJumpDelay; /* as vlListAppendEnableVariableJumpDelay sets it */
  double MinJumpDelay;          /* as vlListAppendMinJumpDelay sets it */
  double JumpLengthLimit;       /* as vlListAppendJumpLengthLimit sets it */
  double MarkSpeed;             /* 1; as vlListAppendMarkSpeed sets it */
  double MarkDelay;             /* as vlListAppendMarkDelay sets it */
  double MagnificationSpeed;    /* 5e-07; as vlListAppendMagnificationSpeed sets it */
  bool EnableVariablePolyDelay; /* as vlListAppendEnableVariablePolyDelay sets it */
  double PolyDelay;             /* as vlListAppendPolyDelay sets it */
  double LaserOnDelay;          /* as vlListAppendLaserOnDelay sets it */
  double LaserOffDelay;         /* as vlListAppendLaserOffDelay sets it */
  double MaxDwellTime; /* 1000; how long the laser may stay at a place; in the text behind PolyDelay */
  double LmFrequency;  /* 0.1; as vlListAppendLmFrequency sets it */
  double LmWidth;      /* 1; as vlListAppendLmWidth sets it */
  uint16_t Power;      /* as vlListAppendPower sets it for channel 0 */
  uint16_t Power1;     /* the same for channel 1 */
  vlTransform3D Transformation;    /* the identity */
  vlPoint3D HeadingScale;          /* (1, 1, 1) */
  double TileOffset;               /* as vlListAppendMotfTileOffset sets it */
  vlOnOffPattern OnOffPattern;     /* empty */
  bool EnableDashedLine;           /* as vlListAppendEnableDashedLine sets it */
  double EvaluationLeadTime;       /* as vlListAppendEvaluationLeadTime sets it */
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
