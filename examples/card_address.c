#include "card_address.h"

#include <stdlib.h>

#include "kelvo/kelvo.h"

static bool ParsePort(const char* text, int32_t* port) {
  char* end = NULL;
  const long number = strtol(text, &end, 10);
  *port = (int32_t)number;
  return end != text && *end == '\0' && number >= 1 && number <= 65535;
}

bool ParseCardAddress(int count, char* const* arguments, CardAddress* address) {
  *address = (CardAddress){.host = "127.0.0.1", .port = KELVO_DEFAULT_PORT};
  if (count > 0) address->host = arguments[0];
  return count <= 2 && (count < 2 || ParsePort(arguments[1], &address->port));
}
