/* The card that a program's last arguments name. */
#ifndef CARD_ADDRESS_H
#define CARD_ADDRESS_H

#include <stdbool.h>
#include <stdint.h>

typedef struct CardAddress {
  const char* host;
  int32_t port;
} CardAddress;

/* Reads `[HOST [PORT]]` from `count` arguments; what is left out becomes 127.0.0.1 and the default port. False
 * when there is anything else. */
bool ParseCardAddress(int count, char* const* arguments, CardAddress* address);

#endif
