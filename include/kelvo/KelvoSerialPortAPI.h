/* The card's serial ports. Conventions: kelvo.h; configuration areas: KelvoConfigurationAPI.h.
 *
 * These functions are the project's own extension. A card has them when its firmware was made to know their methods
 * (docs/protocol.md lists them); of one that was not, they fail with its text for an unknown method, as in "Unknown
 * method 'ReadGpioPort'.". vlInternalGetMethodSupport tells beforehand.
 */
#ifndef KELVO_SERIAL_PORT_API_H
#define KELVO_SERIAL_PORT_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* How many serial ports a configuration has room for. */
#define KELVO_SERIAL_PORT_CAPACITY 4

/* The parity bit of a character. */
typedef enum vlSerialPortParity {
  vlSerialPortParity_None = 0, /* no parity bit */
  vlSerialPortParity_Odd = 1,  /* the number of bits that are 1 is odd */
  vlSerialPortParity_Even = 2, /* it is even */
} vlSerialPortParity;

/* The stop bits of a character. */
typedef enum vlSerialPortStopBits {
  vlSerialPortStopBits_One = 1, /* one stop bit */
  vlSerialPortStopBits_Two = 2, /* two stop bits */
} vlSerialPortStopBits;

/* How a side tells the other to wait. */
typedef enum vlSerialPortHandshake {
  vlSerialPortHandshake_None = 0,    /* either side sends when it wants to */
  vlSerialPortHandshake_XOnXOff = 1, /* by the characters XOFF and XON */
  vlSerialPortHandshake_RtsCts = 2,  /* by the lines RTS and CTS */
} vlSerialPortHandshake;

/* What ends a line that a list sends, or expects. */
typedef enum vlSerialPortLineEnd {
  vlSerialPortLineEnd_CrLf = 0, /* carriage return and line feed */
  vlSerialPortLineEnd_Lf = 1,   /* line feed */
  vlSerialPortLineEnd_Cr = 2,   /* carriage return */
} vlSerialPortLineEnd;

/* One serial port. */
typedef struct vlPortConfig {
  int32_t ConfigVersion;    /* 1 */
  int32_t BaudRate;         /* 115200; bits in a second */
  int32_t DataBits;         /* 8; of a character */
  int32_t Parity;           /* vlSerialPortParity_None; which parity bit there is */
  int32_t StopBits;         /* vlSerialPortStopBits_One; how many stop bits there are */
  int32_t Handshake;        /* vlSerialPortHandshake_None; how a side stops the other */
  int32_t LineEnd;          /* vlSerialPortLineEnd_CrLf; what ends the lines of lists */
  uint32_t ResponseTimeout; /* 1000 ms: for so long a list waits for an answer that it expects */
} vlPortConfig;

/* Serial ports. */
typedef struct vlPortConfigs {
  uint32_t Count;                                 /* how many there are, 0 to KELVO_SERIAL_PORT_CAPACITY */
  vlPortConfig Items[KELVO_SERIAL_PORT_CAPACITY]; /* the ports, 0 first */
} vlPortConfigs;

/* How the serial ports work. */
typedef struct vlSerialPortConfig {
  int32_t ConfigVersion; /* 1 */
  vlPortConfigs Ports;   /* at first one, with its defaults; lists use the first */
} vlSerialPortConfig;

KELVO_STATIC_ASSERT(sizeof(vlPortConfig) == 32 && sizeof(vlSerialPortConfig) == 136,
                    "the layout is part of the interface");

/* Fills `*config` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlSerialPortInitConfig(vlSerialPortConfig* config);
/* Fetches the card's active configuration. Returns 0, or -1 with "Error converting SerialPortConfig to C." when
 * the struct has no room for the card's ports. Remote. */
KELVO_API int32_t vlSerialPortGetConfig(int32_t handle, vlSerialPortConfig* config);
/* Sends the configuration; it becomes the active one. Returns 0, or -1 with "Error converting SerialPortConfig from
 * C." when the count is greater than its capacity, or "ENUM::_from_integral: invalid argument" for a number that the
 * enumeration ENUM does not have; nothing is sent then. Remote. */
KELVO_API int32_t vlSerialPortSetConfig(int32_t handle, const vlSerialPortConfig* config);
/* Makes the card take its stored configuration as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSerialPortLoadConfig(int32_t handle);
/* Makes the card store the active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSerialPortStoreConfig(int32_t handle);
/* Writes the configuration as text into `buffer` of `size` bytes. Returns 0, or -1 also as vlSerialPortSetConfig.
 * Local. */
KELVO_API int32_t vlSerialPortToStringConfig(const vlSerialPortConfig* config, char* buffer, uint32_t size,
                                             uint32_t* length);
/* Sends `count` bytes over the serial port of that number, which counts from 0. Returns 0 when the card has taken all
 * of them, or -1. Remote. */
KELVO_API int32_t vlSerialPortWrite(int32_t handle, int32_t port, const uint8_t* bytes, uint32_t count);
/* Takes what the port has received, as soon as there is something: at most `capacity` bytes (1 or more; "The buffer
 * has no room."), whose number goes to `*count`. `timeout_ms` is in milliseconds (0 only looks, negative: the
 * connection's time-out), and may be longer than the connection's. Other calls of the connection go on meanwhile.
 * Returns
 *   -  0: there are bytes
 *   -  1: none came in time; `*count` is 0, and there is no last error
 *   - -1: "The card sent more than it was asked for."; kelvo.h, 5; a disconnect ends the wait
 * Remote. */
KELVO_API int32_t vlSerialPortRead(int32_t handle, int32_t port, uint8_t* bytes, uint32_t capacity,
                                   uint32_t* count, int32_t timeout_ms);
/* Forgets what the port has received and nobody has read. Returns 0 or -1. Remote. */
KELVO_API int32_t vlSerialPortFlush(int32_t handle, int32_t port);

KELVO_EXTERN_C_END

#endif
