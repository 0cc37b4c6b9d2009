/* Marking on the fly: the card follows the motion of a part, which it takes from encoders or over SPI. Conventions:
 * kelvo.h; configuration areas: KelvoConfigurationAPI.h.
 *
 * The library passes times, distances and speeds on as they are: their units are the card's own.
 */
#ifndef KELVO_MOTF_API_H
#define KELVO_MOTF_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* How many decoder modules a configuration has room for. */
#define KELVO_DECODER_MODULE_CAPACITY 4

/* What tells the way of the part. */
typedef enum vlMotfSourceType {
  vlMotfSourceType_QuadratureDecoder = 0, /* pulses of an encoder */
  vlMotfSourceType_Spi = 1,               /* a device on SPI */
} vlMotfSourceType;

/* How parts are marked. */
typedef enum vlMotfOperatingMode {
  vlMotfOperatingMode_Standard = 0,   /* separate parts */
  vlMotfOperatingMode_Continuous = 1, /* one endless part */
} vlMotfOperatingMode;

/* Where the card takes the way of the part from. */
typedef struct vlMotfSource {
  int32_t ConfigVersion; /* 2 */
  int32_t SourceType;    /* vlMotfSourceType_QuadratureDecoder */
  int32_t ModuleID;      /* number of the decoder or the SPI module */
} vlMotfSource;

/* Defaults are 0 and false where nothing else is said. */
typedef struct vlMotfConfig {
  int32_t ConfigVersion;           /* 9 */
  int32_t OperatingMode;           /* vlMotfOperatingMode_Standard */
  vlMotfSource MainSource;         /* quadrature decoder, module 0 */
  bool UseCompensation;            /* whether motion across the main direction counts */
  vlMotfSource CompensationSource; /* quadrature decoder, module 1 */
  bool EnableDebounce;             /* whether the signal of a part is debounced */
  double DebounceTime;             /* how long that signal must stay */
  bool EnableSuppression;          /* whether signals that come too early are suppressed */
  double SuppressionDistance;      /* within which way after a part there is no other */
  double PartDistance;             /* from the signal to the part */
  double ResponseTime;             /* how long the card needs from the signal to the first mark */
  vlPoint3D MainDirection;         /* (1, 0, 0) */
  vlPoint3D CompensationDirection; /* (0, 1, 0) */
  vlPoint3D Offset;                /* by what everything is moved */
} vlMotfConfig;

/* Defaults are 0 and false where nothing else is said. */
typedef struct vlQuadratureDecoderModule {
  int32_t ConfigVersion;         /* 4 */
  bool SimulateEncoder;          /* whether the way is made up instead of taken from the encoder */
  double SimulationSpeed;        /* speed of the way that is made up */
  double SimulationAcceleration; /* its acceleration */
  bool InvertDirection;          /* whether the way counts backwards */
  bool EnableIndex;              /* whether the encoder's index signal is used */
  double DistancePerCount;       /* 1; way of a count */
} vlQuadratureDecoderModule;

/* Decoder modules. */
typedef struct vlQuadratureDecoderModules {
  uint32_t Count; /* how many there are, 0 to KELVO_DECODER_MODULE_CAPACITY */
  vlQuadratureDecoderModule Items[KELVO_DECODER_MODULE_CAPACITY]; /* the modules, 0 first */
} vlQuadratureDecoderModules;

/* How encoder pulses become a way. */
typedef struct vlQuadratureDecoderConfig {
  int32_t ConfigVersion;              /* 4 */
  vlQuadratureDecoderModules Modules; /* two, with their defaults */
} vlQuadratureDecoderConfig;

KELVO_STATIC_ASSERT(sizeof(vlMotfSource) == 12 && sizeof(vlMotfConfig) == 152,
                    "the layout is part of the interface");
KELVO_STATIC_ASSERT(sizeof(vlQuadratureDecoderModule) == 40 && sizeof(vlQuadratureDecoderConfig) == 176,
                    "the layout is part of the interface");

/* Fills `*config` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlMotfInitConfig(vlMotfConfig* config);
/* Fetches the card's active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlMotfGetConfig(int32_t handle, vlMotfConfig* config);
/* Sends the configuration; it becomes the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlMotfSetConfig(int32_t handle, const vlMotfConfig* config);
/* Makes the card take its stored configuration as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlMotfLoadConfig(int32_t handle);
/* Makes the card store the active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlMotfStoreConfig(int32_t handle);
/* Writes the configuration as text into `buffer` of `size` bytes. Returns 0 or -1. Local. */
KELVO_API int32_t vlMotfToStringConfig(const vlMotfConfig* config, char* buffer, uint32_t size,
                                       uint32_t* length);
/* Sets MainDirection to (cos angle, sin angle, 0), with the angle in radians, and CompensationDirection to a quarter
 * turn counter-clockwise from it; an angle of 0 gives the defaults. No other field is touched or looked at. Returns 0
 * or -1. Local. */
KELVO_API int32_t vlMotfConfigSetDirectionFromAngle(vlMotfConfig* config, double angle);

/* Resets what the card knows of the parts. Returns 0 or -1. Remote. */
KELVO_API int32_t vlMotfResetState(int32_t handle);
/* Writes how many parts have been detected and are not marked yet to `*parts`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlMotfGetPendingParts(int32_t handle, int32_t* parts);
/* Writes the speed factor of marking on the fly to `*factor`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlGetFactor1xSpeed(int32_t handle, double* factor);
/* Sets the speed factor of marking on the fly. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSetFactor1xSpeed(int32_t handle, double factor);

/* ---- The decoders of encoder pulses ---- */

/* Fills `*config` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlMotfQuadratureDecoderInitConfig(vlQuadratureDecoderConfig* config);
/* Fetches the card's active configuration. Returns 0, or -1 with "Error converting QuadratureDecoderConfig to C." when
 * the struct has no room for the card's modules. Remote. */
KELVO_API int32_t vlMotfQuadratureDecoderGetConfig(int32_t handle, vlQuadratureDecoderConfig* config);
/* Sends the configuration; it becomes the active one. Returns 0, or -1 with "Error converting QuadratureDecoderConfig
 * from C." when the count is greater than KELVO_DECODER_MODULE_CAPACITY; nothing is sent then. Remote. */
KELVO_API int32_t vlMotfQuadratureDecoderSetConfig(int32_t handle, const vlQuadratureDecoderConfig* config);
/* Makes the card take its stored configuration as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlMotfQuadratureDecoderLoadConfig(int32_t handle);
/* Makes the card store the active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlMotfQuadratureDecoderStoreConfig(int32_t handle);
/* Writes the configuration as text into `buffer` of `size` bytes. Returns 0, or -1 also as
 * vlMotfQuadratureDecoderSetConfig. Local. */
KELVO_API int32_t vlMotfQuadratureDecoderToStringConfig(const vlQuadratureDecoderConfig* config, char* buffer,
                                                        uint32_t size, uint32_t* length);
/* Sets the encoder position of a decoder module to 0. Returns 0 or -1. Remote. */
KELVO_API int32_t vlMotfQuadratureDecoderResetEncoderPosition(int32_t handle, int32_t module);
/* Writes the encoder position of a decoder module, in counts, to `*position`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlMotfQuadratureDecoderReadEncoderPosition(int32_t handle, int32_t module,
                                                             int32_t* position);

KELVO_EXTERN_C_END

#endif
