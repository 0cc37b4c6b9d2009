/* Uploads a correction for a scan head, selects it and prints its optical parameters as JSON.
 *
 *     select_correction FILE HEAD SLOT [HOST [PORT]]
 */
#include <stdio.h>
#include <stdlib.h>

#include "call.h"
#include "card_address.h"
#include "kelvo/kelvo.h"

static bool ParseIndex(const char* text, int32_t* index) {
  char* end = NULL;
  const long number = strtol(text, &end, 10);
  *index = (int32_t)number;
  return end != text && *end == '\0' && number >= 0 && number < 100;
}

int main(int count, char** arguments) {
  CardAddress address;
  int32_t head = 0, slot = 0, selected = -1;
  if (count < 4 || !ParseIndex(arguments[2], &head) || !ParseIndex(arguments[3], &slot) ||
      !ParseCardAddress(count - 4, arguments + 4, &address)) {
    fprintf(stderr, "usage: %s FILE HEAD SLOT [HOST [PORT]]\n", arguments[0]);
    return 2;
  }
  const int32_t card = (int32_t)CALL(vlConnect, address.host, address.port);
  CALL(vlHeadCorrectionSet, card, head, slot, arguments[1]);
  CALL(vlHeadCorrectionSelectCorrection, card, head, slot);
  CALL(vlHeadCorrectionGetSelectedCorrection, card, head, &selected);
  CALL(vlHeadCorrectionStore, card); /* so that it is still selected when the card starts again */
  fprintf(stderr, "Head %d uses the correction in slot %d.\n", (int)head, (int)selected);

  vlOpticalParameters parameters;
  char json[8192];
  uint32_t length = 0;
  CALL(vlHeadCorrectionGetOpticalParameters, card, head, slot, &parameters);
  CALL(vlOpticalParametersToJson, &parameters, json, sizeof json, &length);
  printf("%s\n", json);
  CALL(vlDisconnect, card);
  return EXIT_SUCCESS;
}
