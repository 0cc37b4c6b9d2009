/* Lists the cards that answer on this host's networks: serial number, address, port. It takes nine seconds.
 *
 *     list_cards
 */
#include <stdio.h>
#include <stdlib.h>

#include "call.h"
#include "kelvo/kelvo.h"

enum { MOST_CARDS = 256 };

int main(int count, char** arguments) {
  vlCardInfo cards[MOST_CARDS] = {0}; /* zeroed: the last character of each text is not written */
  uint32_t found = 0;
  if (count > 1) {
    fprintf(stderr, "usage: %s\n", arguments[0]);
    return 2;
  }
  CALL(vlDiscover, cards, MOST_CARDS, &found);
  for (uint32_t i = 0; i < found; ++i) {
    printf("%-12s %s port %d\n", cards[i].SerialNumber, cards[i].IPAddress, cards[i].Port);
  }
  printf("found: %u\n", found);
  return EXIT_SUCCESS;
}
