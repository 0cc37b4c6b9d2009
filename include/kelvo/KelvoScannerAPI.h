/* The scanner: its configuration. Conventions: kelvo.h; configuration areas: KelvoConfigurationAPI.h.
 */
#ifndef KELVO_SCANNER_API_H
#define KELVO_SCANNER_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* An entry for each of at most two scan heads: which of its axes, by one of 0 none, 1 x, 2 y, 3 x and y, 4 z, 7 x, y
 * and z, 8 zoom z, 16 auxiliary, 32 sensor z. */
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
KELVO_STATIC_ASSERT(sizeof(vlScannerMonitoringConfig) == 56, "the layout is part of the interface");

KELVO_EXTERN_C_END

#endif
