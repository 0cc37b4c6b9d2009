/* The card as a whole: its configuration, its versions and serial number, its operating state, and its clock.
 * Conventions: kelvo.h; configuration areas: KelvoConfigurationAPI.h.
 *
 * Texts are written into a buffer that must have room for the text and two bytes more, else "Buffer is too small.";
 * `*length` receives the length without the zero.
 */
#ifndef KELVO_SYSTEM_API_H
#define KELVO_SYSTEM_API_H

#include "kelvo/KelvoScannerAPI.h"
#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* What holds for the card as a whole. */
typedef struct vlSystemConfig {
  int32_t ConfigVersion;                  /* 5 */
  char TimeZone[128];                     /* "UTC"; one of vlSystemGetSupportedTimeZones, zero-terminated */
  bool EnableStandAloneMode;              /* false; run a list without a client */
  int32_t StandAloneListID;               /* 0; that list */
  int32_t StandAloneExecuteOnErrorListID; /* 0; the list that runs when that fails */
  vlScannerMonitoringConfig ScannerMonitoring; /* its defaults */
} vlSystemConfig;
KELVO_STATIC_ASSERT(sizeof(vlSystemConfig) == 200, "the layout is part of the interface");

/* Fills `*config` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlSystemInitConfig(vlSystemConfig* config);
/* Fetches the card's active configuration. Returns 0, or -1 with "Error converting SystemConfig to C." (the time zone's
 * name has more than 127 bytes) or "Error converting ScannerMonitoringConfig to C." (more than two scan heads). Remote.
 */
KELVO_API int32_t vlSystemGetConfig(int32_t handle, vlSystemConfig* config);
/* Sends the configuration; it becomes the active one. Returns 0, or -1 with "Error converting SystemConfig from C."
 * (the time zone has no terminating zero, or the count of scan heads is more than two) and sends nothing then. Remote.
 */
KELVO_API int32_t vlSystemSetConfig(int32_t handle, const vlSystemConfig* config);
/* Makes the card take its stored configuration as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemLoadConfig(int32_t handle);
/* Makes the card store the active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemStoreConfig(int32_t handle);
/* Writes the configuration as text into `buffer` of `size` bytes. Returns 0, or -1, also with the text of
 * vlSystemSetConfig. Local. */
KELVO_API int32_t vlSystemToStringConfig(const vlSystemConfig* config, char* buffer, uint32_t size,
                                         uint32_t* length);

/* Makes the card take the defaults of all its configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemResetToDefaults(int32_t handle);

/* ---- What the card is ---- */

/* Fetches the version of the firmware into `buffer` of `size` bytes. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemGetFirmwareVersion(int32_t handle, char* buffer, uint32_t size, uint32_t* length);
/* Fetches the version of the product that the firmware belongs to. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemGetFirmwareProductVersion(int32_t handle, char* buffer, uint32_t size,
                                                    uint32_t* length);
/* Fetches the version of the card's programmable logic. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemGetFPGAVersion(int32_t handle, char* buffer, uint32_t size, uint32_t* length);
/* Fetches the version of the card's operating system. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemGetOSVersion(int32_t handle, char* buffer, uint32_t size, uint32_t* length);
/* Fetches the card's serial number. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemGetCardSerialNumber(int32_t handle, char* buffer, uint32_t size, uint32_t* length);
/* Writes how many connections the card takes at once to `*limit`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemGetConnectionLimit(int32_t handle, uint32_t* limit);

/* ---- How it is ---- */

/* The operating state of the card: flags. */
typedef enum vlOperatingState {
  vlOperatingState_Normal = 0,               /* nothing is wrong */
  vlOperatingState_ConfigurationFailed = 1,  /* something of the configuration could not be taken */
  vlOperatingState_InitializationFailed = 2, /* the card could not be initialized */
  vlOperatingState_ScannerError = 4,         /* something is wrong with a scan head */
} vlOperatingState;

/* Writes the operating state (vlOperatingState) to `*state`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemGetOperatingState(int32_t handle, uint32_t* state);
/* Makes the operating state normal again. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemResetOperatingState(int32_t handle);

/* ---- The clock. Times are in seconds since 1 January 1970, 00:00; earlier ones come as negative numbers cast to
 * uint64_t. ---- */

/* Writes the card's time, in the time zone of its configuration, to `*seconds`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemGetTime(int32_t handle, uint64_t* seconds);
/* Writes the card's time in UTC to `*seconds`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSystemGetUniversalTime(int32_t handle, uint64_t* seconds);
/* Sets the card's clock, in UTC. Returns 0, or -1 with "The time is beyond the year 9999." (above 253402300799), and
 * sends nothing then. Remote. */
KELVO_API int32_t vlSystemSetSystemTime(int32_t handle, uint64_t seconds);
/* Fetches the names of the time zones that the card knows into `buffer` of `size` 32-bit elements, 4 * `size` bytes,
 * and writes the number of names to `*count`. The names are texts in UTF-8, each with its terminating zero, one right
 * behind the other:
 *     uint32_t buffer[4096], count;
 *     if (vlSystemGetSupportedTimeZones(handle, buffer, 4096, &count) == 0)
 *       for (const char* name = (const char*)buffer; count-- > 0; name += strlen(name) + 1) puts(name);
 * Returns 0, or -1 with "Error converting TimeZone data." when the buffer is too small, or a name has a zero inside,
 * and writes nothing then. Remote. */
KELVO_API int32_t vlSystemGetSupportedTimeZones(int32_t handle, uint32_t* buffer, uint32_t size,
                                                uint32_t* count);

KELVO_EXTERN_C_END

#endif
