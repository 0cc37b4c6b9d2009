/* The adapter board, which brings the card's pins to the connectors of a laser and a machine. Conventions: kelvo.h;
 * configuration areas: KelvoConfigurationAPI.h.
 *
 * These functions are the project's own extension. A card has them when its firmware was made to know their methods
 * (docs/protocol.md lists them); of one that was not, they fail with its text for an unknown method, as in "Unknown
 * method 'ReadGpioPort'.". vlInternalGetMethodSupport tells beforehand.
 */
#ifndef KELVO_ADAPTER_BOARD_API_H
#define KELVO_ADAPTER_BOARD_API_H

#include "kelvo/KelvoGpioAPI.h"
#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* How many bytes each text of a board's identity has room for, its terminating zero included. */
#define KELVO_ADAPTER_BOARD_TEXT_CAPACITY 64

/* The levels of the signals that the board takes and gives. */
typedef struct vlAdapterBoardConfig {
  int32_t ConfigVersion;  /* 4 */
  int32_t InputVoltage;   /* vlIOVoltage_Volt24: of the machine's signals */
  int32_t OutputVoltage;  /* vlIOVoltage_Volt24: of the signals to the machine */
  int32_t LaserVoltage;   /* vlIOVoltage_Volt5: of the signals to the laser */
  bool EnableTermination; /* false: whether the ends of the lines from encoders are terminated */
} vlAdapterBoardConfig;

/* What board there is. All texts are empty when there is no board. */
typedef struct vlAdapterBoardIdentity {
  char Type[KELVO_ADAPTER_BOARD_TEXT_CAPACITY];         /* what kind of board it is */
  char SerialNumber[KELVO_ADAPTER_BOARD_TEXT_CAPACITY]; /* its serial number */
  char Revision[KELVO_ADAPTER_BOARD_TEXT_CAPACITY];     /* the revision of its hardware */
} vlAdapterBoardIdentity;

KELVO_STATIC_ASSERT(sizeof(vlAdapterBoardConfig) == 20 && sizeof(vlAdapterBoardIdentity) == 192,
                    "the layout is part of the interface");

/* Fills `*config` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlAdapterBoardInitConfig(vlAdapterBoardConfig* config);
/* Fetches the card's active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlAdapterBoardGetConfig(int32_t handle, vlAdapterBoardConfig* config);
/* Sends the configuration; it becomes the active one. Returns 0, or -1 with "ENUM::_from_integral: invalid
 * argument" for a number that the enumeration ENUM does not have; nothing is sent then. Remote. */
KELVO_API int32_t vlAdapterBoardSetConfig(int32_t handle, const vlAdapterBoardConfig* config);
/* Makes the card take its stored configuration as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlAdapterBoardLoadConfig(int32_t handle);
/* Makes the card store the active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlAdapterBoardStoreConfig(int32_t handle);
/* Writes the configuration as text into `buffer` of `size` bytes. Returns 0 or -1. Local. */
KELVO_API int32_t vlAdapterBoardToStringConfig(const vlAdapterBoardConfig* config, char* buffer,
                                               uint32_t size, uint32_t* length);
/* Writes what board there is to `*identity`. Returns 0, or -1 with "Error converting AdapterBoardIdentity to C." for
 * a text that is too long. Remote. */
KELVO_API int32_t vlAdapterBoardGetIdentity(int32_t handle, vlAdapterBoardIdentity* identity);

KELVO_EXTERN_C_END

#endif
