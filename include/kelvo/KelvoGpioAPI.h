/* General-purpose input and output: the pins of the card's ports. Conventions: kelvo.h; configuration areas:
 * KelvoConfigurationAPI.h.
 *
 * These functions are the project's own extension. A card has them when its firmware was made to know their methods
 * (docs/protocol.md lists them); of one that was not, they fail with its text for an unknown method, as in "Unknown
 * method 'ReadGpioPort'.". vlInternalGetMethodSupport tells beforehand.
 */
#ifndef KELVO_GPIO_API_H
#define KELVO_GPIO_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* How many ports a configuration has room for. */
#define KELVO_GPIO_PORT_CAPACITY 8
/* How many names of pins a port has room for. */
#define KELVO_GPIO_PIN_CAPACITY 32
/* How many bytes a name has room for, its terminating zero included. */
#define KELVO_GPIO_NAME_CAPACITY 32

/* The ports. Conditions and commands of lists name them by the same numbers. */
typedef enum vlIOPort {
  vlIOPort_PortA = 0, /* port 0 */
  vlIOPort_PortB = 1, /* port 1 */
  vlIOPort_PortC = 2, /* port 2 */
  vlIOPort_PortD = 3, /* port 3 */
  vlIOPort_PortE = 4, /* port 4 */
  vlIOPort_PortF = 5, /* port 5 */
  vlIOPort_PortG = 6, /* port 6 */
  vlIOPort_PortH = 7, /* port 7 */
} vlIOPort;

/* Which way a port's pins go. */
typedef enum vlIODirection {
  vlIODirection_Input = 0,  /* the machine sets them */
  vlIODirection_Output = 1, /* the card sets them */
} vlIODirection;

/* The level of a pin that is high. */
typedef enum vlIOVoltage {
  vlIOVoltage_Volt3_3 = 0, /* 3.3 V */
  vlIOVoltage_Volt5 = 1,   /* 5 V */
  vlIOVoltage_Volt12 = 2,  /* 12 V */
  vlIOVoltage_Volt24 = 3,  /* 24 V */
} vlIOVoltage;

/* What is done to an output port. The same numbers are the `action` of vlListAppendGpioValue. */
typedef enum vlPinAction {
  vlPinAction_Write = 0,  /* the pins whose bits are set become active, all others inactive */
  vlPinAction_Set = 1,    /* the pins whose bits are set become active */
  vlPinAction_Clear = 2,  /* the pins whose bits are set become inactive */
  vlPinAction_Toggle = 3, /* the pins whose bits are set become what they were not */
} vlPinAction;

/* Names of a port's pins, that of pin 0 first; one may be empty. */
typedef struct vlGpioPinNames {
  uint32_t Count; /* 0; how many there are, up to KELVO_GPIO_PIN_CAPACITY */
  char Items[KELVO_GPIO_PIN_CAPACITY][KELVO_GPIO_NAME_CAPACITY]; /* the names, each with a terminating zero */
} vlGpioPinNames;

/* One port. */
typedef struct vlGpioPort {
  int32_t Direction;   /* vlIODirection: ports 0, 2, 4, 6 are inputs, 1, 3, 5, 7 outputs */
  int32_t Voltage;     /* vlIOVoltage_Volt24 */
  int32_t PinPolarity; /* vlPolarity_ActiveHigh: a pin that is high is active */
  double DebounceTime; /* 0 us: for so long an input must stay as it is before it counts */
  char PortName[KELVO_GPIO_NAME_CAPACITY]; /* empty */
  vlGpioPinNames PinNames;                 /* none */
} vlGpioPort;

/* Ports, that of vlIOPort_PortA first. */
typedef struct vlGpioPorts {
  uint32_t Count;                             /* how many there are, 0 to KELVO_GPIO_PORT_CAPACITY */
  vlGpioPort Items[KELVO_GPIO_PORT_CAPACITY]; /* the ports */
} vlGpioPorts;

/* What the ports are. */
typedef struct vlGpioConfig {
  int32_t ConfigVersion; /* 1 */
  vlGpioPorts Ports;     /* at first eight */
} vlGpioConfig;

KELVO_STATIC_ASSERT(sizeof(vlGpioPort) == 1088 && sizeof(vlGpioConfig) == 8720,
                    "the layout is part of the interface");

/* Fills `*config` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlGpioInitConfig(vlGpioConfig* config);
/* Fetches the card's active configuration. Returns 0, or -1 with "Error converting GpioConfig to C." when
 * the struct has no room for the card's ports, pins or names. Remote. */
KELVO_API int32_t vlGpioGetConfig(int32_t handle, vlGpioConfig* config);
/* Sends the configuration; it becomes the active one. Returns 0, or -1 with "Error converting GpioConfig from C."
 * when a count is greater than its capacity or a name has no terminating zero, or "ENUM::_from_integral: invalid
 * argument" for a number that the enumeration ENUM does not have; nothing is sent then. Remote. */
KELVO_API int32_t vlGpioSetConfig(int32_t handle, const vlGpioConfig* config);
/* Makes the card take its stored configuration as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlGpioLoadConfig(int32_t handle);
/* Makes the card store the active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlGpioStoreConfig(int32_t handle);
/* Writes the configuration as text into `buffer` of `size` bytes. Returns 0, or -1 also as vlGpioSetConfig. Local. */
KELVO_API int32_t vlGpioToStringConfig(const vlGpioConfig* config, char* buffer, uint32_t size,
                                       uint32_t* length);
/* Looks for the pin of that name and writes its port and its number. Returns 0, or -1: "There is no pin 'NAME'.", or
 * as vlGpioSetConfig. Local. */
KELVO_API int32_t vlGpioConfigFindPin(const vlGpioConfig* config, const char* name, int32_t* port,
                                      int32_t* pin);

/* In all of these `port` is a vlIOPort ("IOPort::_from_integral: invalid argument"), `pin` 0 to 31 ("Pin must be
 * between 0 and 31."), and bit N of a number stands for pin N; it is set when the pin is active. */

/* Writes which pins are active to `*pins`: of an input what the machine sets, of an output what was set last. Returns
 * 0 or -1. Remote. */
KELVO_API int32_t vlGpioReadPort(int32_t handle, int32_t port, uint32_t* pins);
/* Does `action` (vlPinAction; "PinAction::_from_integral: invalid argument") to an output. Pins change at once and
 * all together. Returns 0, or -1, also when the card says that the port is an input. Remote. */
KELVO_API int32_t vlGpioWritePort(int32_t handle, int32_t port, int32_t action, uint32_t pins);
/* The same for one pin: whether it is active. Returns 0 or -1. Remote. */
KELVO_API int32_t vlGpioReadPin(int32_t handle, int32_t port, int32_t pin, bool* active);
/* Makes one pin of an output active or inactive; the others stay. Returns 0 or -1. Remote. */
KELVO_API int32_t vlGpioWritePin(int32_t handle, int32_t port, int32_t pin, bool active);
/* Toggles pins of an output, and again `duration_us` microseconds later. Does not wait for that. Returns 0 or -1.
 * Remote. */
KELVO_API int32_t vlGpioPulsePins(int32_t handle, int32_t port, uint32_t pins, double duration_us);
/* Waits until one of the `pins` of a port is another than in `known`, and writes which pins of the port are active to
 * `*now`; a pin that differs already ends the wait at once. To follow a port, wait with `*now` as `known` again: of
 * several changes between two waits the last one counts, and pins that are back are none. `timeout_ms` is in
 * milliseconds (0 only looks, negative: the connection's time-out), and may be longer than the connection's. Other
 * calls of the connection go on meanwhile, other waits too. Returns
 *   -  0: a pin differs
 *   -  1: none did in time; `*now` is written, and there is no last error
 *   - -1: as above, or kelvo.h, 5; a disconnect ends the wait
 * Remote. */
KELVO_API int32_t vlGpioWaitForChange(int32_t handle, int32_t port, uint32_t pins, uint32_t known,
                                      int32_t timeout_ms, uint32_t* now);

KELVO_EXTERN_C_END

#endif
