/* The card's SPI modules. Conventions: kelvo.h; configuration areas: KelvoConfigurationAPI.h.
 *
 * These functions are the project's own extension. A card has them when its firmware was made to know their methods
 * (docs/protocol.md lists them); of one that was not, they fail with its text for an unknown method, as in "Unknown
 * method 'ReadGpioPort'.". vlInternalGetMethodSupport tells beforehand.
 */
#ifndef KELVO_SPI_API_H
#define KELVO_SPI_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* How many modules a configuration has room for. */
#define KELVO_SPI_MODULE_CAPACITY 8

/* One module. */
typedef struct vlSpiModule {
  int32_t ConfigVersion; /* 1 */
  int32_t Mode;          /* 0; clock polarity x 2 + clock phase, 0 to 3 */
  double ClockFrequency; /* 1; in MHz */
  int32_t WordLength;    /* 8; bits of a word */
  bool LsbFirst;         /* false; whether the lowest bit of a word comes first */
  bool SelectActiveHigh; /* false; whether a module is chosen while its select line is high */
} vlSpiModule;

/* Modules. */
typedef struct vlSpiModules {
  uint32_t Count;                               /* how many there are, 0 to KELVO_SPI_MODULE_CAPACITY */
  vlSpiModule Items[KELVO_SPI_MODULE_CAPACITY]; /* the modules, 0 first */
} vlSpiModules;

/* How the modules work. */
typedef struct vlSpiConfig {
  int32_t ConfigVersion; /* 3 */
  vlSpiModules Modules;  /* at first two, with their defaults */
} vlSpiConfig;

KELVO_STATIC_ASSERT(sizeof(vlSpiModule) == 24 && sizeof(vlSpiConfig) == 208,
                    "the layout is part of the interface");

/* Fills `*config` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlSpiInitConfig(vlSpiConfig* config);
/* Fetches the card's active configuration. Returns 0, or -1 with "Error converting SpiConfig to C." when
 * the struct has no room for the card's modules. Remote. */
KELVO_API int32_t vlSpiGetConfig(int32_t handle, vlSpiConfig* config);
/* Sends the configuration; it becomes the active one. Returns 0, or -1 with "Error converting SpiConfig from C." when
 * the count is greater than its capacity, or "ENUM::_from_integral: invalid argument" for a number that the
 * enumeration ENUM does not have; nothing is sent then. Remote. */
KELVO_API int32_t vlSpiSetConfig(int32_t handle, const vlSpiConfig* config);
/* Makes the card take its stored configuration as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSpiLoadConfig(int32_t handle);
/* Makes the card store the active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSpiStoreConfig(int32_t handle);
/* Writes the configuration as text into `buffer` of `size` bytes. Returns 0, or -1 also as vlSpiSetConfig. Local. */
KELVO_API int32_t vlSpiToStringConfig(const vlSpiConfig* config, char* buffer, uint32_t size,
                                      uint32_t* length);
/* Sends `count` bytes to the module of that number, which counts from 0, and writes the bytes that came meanwhile, as
 * many, to `received`. Both may be the same array. Returns 0, or -1 with "The card sent another number of bytes." or
 * kelvo.h, 5. Remote. */
KELVO_API int32_t vlSpiTransfer(int32_t handle, int32_t module, const uint8_t* sent, uint32_t count,
                                uint8_t* received);

KELVO_EXTERN_C_END

#endif
