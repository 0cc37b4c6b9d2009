/* Prints what a card is, how it is, and its whole active configuration.
 *
 *     print_configuration [HOST [PORT]]
 */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "call.h"
#include "card_address.h"
#include "kelvo/kelvo.h"

typedef int32_t (*TextGetter)(int32_t handle, char* buffer, uint32_t size, uint32_t* length);

static void PrintIdentity(int32_t card) {
  static const struct {
    const char* name;
    TextGetter get;
  } texts[] = {
      {"Serial number", vlSystemGetCardSerialNumber}, {"Product version", vlSystemGetFirmwareProductVersion},
      {"Firmware", vlSystemGetFirmwareVersion},       {"FPGA", vlSystemGetFPGAVersion},
      {"Operating system", vlSystemGetOSVersion},
  };
  for (size_t i = 0; i < sizeof texts / sizeof *texts; ++i) {
    char text[256];
    uint32_t length = 0;
    CheckCall(texts[i].name, texts[i].get(card, text, sizeof text, &length));
    printf("%-17s %s\n", texts[i].name, text);
  }
}

static void PrintState(int32_t card) {
  static const struct {
    uint32_t flag;
    const char* name;
  } faults[] = {
      {vlOperatingState_ConfigurationFailed, "configuration failed"},
      {vlOperatingState_InitializationFailed, "initialization failed"},
      {vlOperatingState_ScannerError, "scanner error"},
  };
  uint32_t state = 0;
  uint64_t seconds = 0;
  CALL(vlSystemGetOperatingState, card, &state);
  printf("%-17s", "Operating state");
  if (state == vlOperatingState_Normal) printf(" normal");
  for (size_t i = 0; i < sizeof faults / sizeof *faults; ++i) {
    if ((state & faults[i].flag) != 0) printf(" %s", faults[i].name);
  }
  CALL(vlSystemGetUniversalTime, card, &seconds);
  const time_t universal = (time_t)seconds;
  char time[64] = "";
  const struct tm* parts = gmtime(&universal);
  if (parts != NULL) strftime(time, sizeof time, "%Y-%m-%d %H:%M:%S", parts);
  printf("\n%-17s %s\n", "Time in UTC", time);
}

/* Prints a configuration's text, a field a line; a configuration inside another stays on its line. */
static void PrintFields(const char* area, const char* text) {
  int depth = 1;
  printf("\n%s\n  ", area);
  for (; *text != '\0'; ++text) {
    if (*text == '{' || *text == '[' || *text == '(') ++depth;
    if (*text == '}' || *text == ']' || *text == ')') --depth;
    if (text[0] == ',' && text[1] == ' ' && depth == 1) {
      printf("\n  ");
      ++text;
    } else {
      putchar(*text);
    }
  }
  putchar('\n');
}

/* Every area that has a text has these two functions. */
#define PRINT_CONFIGURATION(card, title, Struct, get, toString) \
  do {                                                          \
    Struct config;                                              \
    char text[4096];                                            \
    uint32_t length = 0;                                        \
    CALL(get, card, &config);                                   \
    CALL(toString, &config, text, sizeof text, &length);        \
    PrintFields(title, text);                                   \
  } while (0)

/* Events have no text of their own. */
static void PrintEvents(int32_t card) {
  vlEventConfig config;
  CALL(vlEventGetConfig, card, &config);
  printf("\nEvents\n");
  for (uint32_t i = 0; i < config.EventSettings.Count; ++i) {
    const vlEventSetting* setting = &config.EventSettings.Items[i];
    const vlEventExclusions* exclusions = &setting->Value.Exclusions;
    printf("  %" PRId32 ": %s", setting->Number, setting->Value.EnableGlobally ? "reported" : "not reported");
    for (uint32_t k = 0; k < exclusions->Count; ++k) {
      printf("%s%" PRId32, k == 0 ? ", but for " : ", ", exclusions->Items[k]);
    }
    putchar('\n');
  }
  if (config.EventSettings.Count == 0) printf("  none is set\n");
}

int main(int count, char** arguments) {
  CardAddress address;
  if (!ParseCardAddress(count - 1, arguments + 1, &address)) {
    fprintf(stderr, "usage: %s [HOST [PORT]]\n", arguments[0]);
    return 2;
  }
  const int32_t card = (int32_t)CALL(vlConnect, address.host, address.port);
  PrintIdentity(card);
  PrintState(card);
  PRINT_CONFIGURATION(card, "System", vlSystemConfig, vlSystemGetConfig, vlSystemToStringConfig);
  PRINT_CONFIGURATION(card, "Laser", vlLaserConfig, vlLaserGetConfig, vlLaserToStringConfig);
  PRINT_CONFIGURATION(card, "Scanner", vlScannerConfig, vlScannerGetConfig, vlScannerToStringConfig);
  PRINT_CONFIGURATION(card, "Process variables", vlProcessVariables, vlProcessGetVariables,
                      vlProcessToStringVariables);
  PRINT_CONFIGURATION(card, "Marking on the fly", vlMotfConfig, vlMotfGetConfig, vlMotfToStringConfig);
  PRINT_CONFIGURATION(card, "Quadrature decoders", vlQuadratureDecoderConfig,
                      vlMotfQuadratureDecoderGetConfig, vlMotfQuadratureDecoderToStringConfig);
  PrintEvents(card);
  CALL(vlDisconnect, card);
  return EXIT_SUCCESS;
}
