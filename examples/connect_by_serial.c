/* Connects to a card of which nothing but the serial number is known, wherever it is on this host's networks, and says
 * what it is. It takes nine seconds.
 *
 *     connect_by_serial SERIAL
 */
#include <stdio.h>
#include <stdlib.h>

#include "call.h"
#include "kelvo/kelvo.h"

int main(int count, char** arguments) {
  char version[256];
  uint32_t length = 0;
  /* Zeroed, so that every text ends with a zero. An address that is nobody's makes the library look for the card. */
  vlCardInfo card = {.IPAddress = "0.0.0.0"};
  const int size = (int)sizeof card.SerialNumber;
  if (count != 2 || snprintf(card.SerialNumber, sizeof card.SerialNumber, "%s", arguments[1]) >= size) {
    fprintf(stderr, "usage: %s SERIAL\n", arguments[0]);
    return 2;
  }
  const int32_t handle = (int32_t)CALL(vlConnectByCardInfo, &card);
  CALL(vlSystemGetFirmwareVersion, handle, version, sizeof version, &length);
  printf("Card %s runs firmware %s.\n", card.SerialNumber, version);
  CALL(vlDisconnect, handle);
  return EXIT_SUCCESS;
}
