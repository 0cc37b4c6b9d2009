/* Card events: which of its numbered events the card reports. Conventions: kelvo.h; configuration areas:
 * KelvoConfigurationAPI.h (this one has no text). The numbers of events and of exclusions are the card's own.
 */
#ifndef KELVO_EVENT_API_H
#define KELVO_EVENT_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* How many events a configuration has room for. */
#define KELVO_EVENT_CAPACITY 64
/* How many exclusions an event has room for. */
#define KELVO_EVENT_EXCLUSION_CAPACITY 32

/* What the reporting of an event leaves out. */
typedef struct vlEventExclusions {
  uint32_t Count;                                /* how many there are, 0 to KELVO_EVENT_EXCLUSION_CAPACITY */
  int32_t Items[KELVO_EVENT_EXCLUSION_CAPACITY]; /* their numbers */
} vlEventExclusions;

/* Whether and how an event is reported. */
typedef struct vlEventStatus {
  bool EnableGlobally;          /* whether the event is reported */
  vlEventExclusions Exclusions; /* what its reporting leaves out; fetched ones rise, each comes once */
} vlEventStatus;

/* An event and how it is reported. */
typedef struct vlEventSetting {
  int32_t Number;      /* of the event */
  vlEventStatus Value; /* how it is reported */
} vlEventSetting;

/* Events, at most once each. */
typedef struct vlEventSettings {
  uint32_t Count;                             /* how many there are, 0 to KELVO_EVENT_CAPACITY */
  vlEventSetting Items[KELVO_EVENT_CAPACITY]; /* fetched ones in rising order of their numbers */
} vlEventSettings;

/* Which events the card reports. */
typedef struct vlEventConfig {
  int32_t ConfigVersion;         /* 1 */
  vlEventSettings EventSettings; /* at first none */
} vlEventConfig;
KELVO_STATIC_ASSERT(sizeof(vlEventSetting) == 140 && sizeof(vlEventConfig) == 8968,
                    "the layout is part of the interface");

/* Fills `*config` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlEventInitConfig(vlEventConfig* config);
/* Fetches the card's active configuration. Returns 0, or -1 with "Error converting EventConfig to C." when the struct
 * has no room for the card's events or exclusions. Remote. */
KELVO_API int32_t vlEventGetConfig(int32_t handle, vlEventConfig* config);
/* Sends the configuration; it becomes the active one. Returns 0, or -1 with "Error converting EventConfig from C." when
 * a count is greater than its capacity or an event comes twice; nothing is sent then. Remote. */
KELVO_API int32_t vlEventSetConfig(int32_t handle, const vlEventConfig* config);
/* Makes the card take its stored configuration as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlEventLoadConfig(int32_t handle);
/* Makes the card store the active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlEventStoreConfig(int32_t handle);

KELVO_EXTERN_C_END

#endif
