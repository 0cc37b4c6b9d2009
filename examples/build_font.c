/* Builds a font of all of printable ASCII, sends it to a card, stores and activates it there, and marks a text in it.
 *
 * Exit status: 0 done; 1 a call failed or the text was not marked to its end; 2 wrong usage. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "call.h"
#include "card_address.h"
#include "kelvo/kelvo.h"
#include "stroke_font.h"

enum {
  kFirstCharacter = 0x20,
  kLastCharacter = 0x7E,
  kListId = 1,
  kNoListField = -1,
  kMarkTimeoutMs = 60000 /* the longest text that fits a field takes less */
};

/* ---- Command line ---- */

typedef struct Options {
  int32_t fontId;
  double height;
  const char* text; /* null: no text is marked */
  CardAddress card;
} Options;

static _Noreturn void ExitWithUsage(void) {
  fprintf(stderr,
          "usage: build_font [--font ID] [--height MM] [--text TEXT] [HOST [PORT]]\n"
          "  --font ID     the font's number on the card (default 1)\n"
          "  --height MM   the height of its capital letters (default 3)\n"
          "  --text TEXT   mark TEXT, in printable ASCII, in the middle of the field\n"
          "  HOST, PORT    the card (default 127.0.0.1 and %d)\n",
          KELVO_DEFAULT_PORT);
  exit(2);
}

static double ParseNumber(const char* text, double least, double most) {
  char* end = NULL;
  const double number = strtod(text, &end);
  if (end == text || *end != '\0' || !(number >= least && number <= most)) ExitWithUsage();
  return number;
}

static const char* CheckText(const char* text) {
  for (const char* next = text; *next != '\0'; ++next) {
    if (!HasCharacter(*next)) ExitWithUsage();
  }
  return text;
}

static Options ParseOptions(int count, char** arguments) {
  Options options = {.fontId = 1, .height = 3, .text = NULL};
  int i = 1;
  for (; i < count && arguments[i][0] == '-'; i += 2) {
    if (i + 1 == count) ExitWithUsage();
    if (strcmp(arguments[i], "--font") == 0) {
      options.fontId = (int32_t)ParseNumber(arguments[i + 1], 0, 1e6);
    } else if (strcmp(arguments[i], "--height") == 0) {
      options.height = ParseNumber(arguments[i + 1], 0.01, 1000);
    } else if (strcmp(arguments[i], "--text") == 0) {
      options.text = CheckText(arguments[i + 1]);
    } else {
      ExitWithUsage();
    }
  }
  if (!ParseCardAddress(count - i, arguments + i, &options.card)) ExitWithUsage();
  return options;
}

/* ---- The font ---- */

/* Builds the font and gives its handle. A glyph is a copy of the list's commands, so one list does for all. */
static int64_t BuildFont(int32_t handle, int32_t fontId, double height) {
  const int64_t font = CALL(vlFontAllocate, handle, fontId);
  const int64_t glyph = CALL(vlListAllocate, handle);
  for (int code = kFirstCharacter; code <= kLastCharacter; ++code) {
    CALL(vlListClear, glyph);
    AppendGlyph(glyph, (char)code, height);
    CALL(vlFontAddChar, font, (uint16_t)code, glyph);
  }
  CALL(vlListReleaseHandle, glyph);
  return font;
}

/* Sends the font to the card, which keeps a stored copy of it, too, and marks text in it from then on. */
static void InstallFont(int32_t handle, const Options* options) {
  const int64_t font = BuildFont(handle, options->fontId, options->height);
  uint32_t count = 0;
  CALL(vlFontCharsLen, font, &count);
  CALL(vlFontSet, handle, font);
  CALL(vlFontStore, handle, options->fontId);
  CALL(vlFontSetActive, handle, options->fontId);
  printf("font %" PRId32 ": %" PRIu32 " characters, sent, stored and active\n", options->fontId, count);
  CALL(vlFontReleaseHandle, font); /* the card has its own copy now */
}

/* ---- The text ---- */

/* Speeds in mm/us (0.001 is 1 m/s), delays in us. They depend on scan head, laser and material. */
static void AppendProcessParameters(int64_t list) {
  CALL(vlListAppendJumpSpeed, list, 0.004);
  CALL(vlListAppendMarkSpeed, list, 0.001);
  CALL(vlListAppendJumpDelay, list, 250);
  CALL(vlListAppendMarkDelay, list, 150);
  CALL(vlListAppendPolyDelay, list, 50);
  CALL(vlListAppendLaserOnDelay, list, 40);
  CALL(vlListAppendLaserOffDelay, list, 90);
}

/* The list holds no strokes, only the text: the card takes each character's glyph from the font. */
static void UploadText(int32_t handle, const Options* options) {
  const int64_t list = CALL(vlListAllocate, handle);
  const double width = (double)strlen(options->text) * CharacterPitch(options->height);
  AppendProcessParameters(list);
  CALL(vlListAppendJumpAbs2D, list, -width / 2, -options->height / 2);
  CALL(vlListAppendSelectFont, list, options->fontId);
  CALL(vlListAppendMarkText, list, options->text);
  CALL(vlListSet, handle, kListId, list, false, kNoListField);
  CALL(vlListReleaseHandle, list);
}

/* Shows what goes wrong on the card while the list runs. Called on the connection's receive thread. */
static void ShowError(int32_t handle, int32_t code, const char* message, uint32_t length) {
  (void)handle;
  (void)code;
  fprintf(stderr, "The card reports:\n%.*s\n", (int)length, message);
}

/* Runs the list. The card goes idle after it however it ends; when all of it was marked, "done" came before. */
static bool MarkText(int32_t handle) {
  uint32_t callbackId = 0;
  int32_t list = 0;
  CALL(vlListRegisterErrorEventCallback, handle, ShowError, &callbackId);
  CALL(vlListClearPendingEvents, handle); /* events of an earlier run are not ours */
  CALL(vlListExecute, handle, kListId);
  if (CALL(vlListWaitForListIdle, handle, &list, kMarkTimeoutMs) != 0) CALL(vlListAbortExecution, handle);
  return CALL(vlListWaitForListDone, handle, &list, 0) == 0;
}

int main(int argc, char** argv) {
  const Options options = ParseOptions(argc, argv);
  const int32_t handle = (int32_t)CALL(vlConnect, options.card.host, options.card.port);
  InstallFont(handle, &options);
  if (options.text != NULL) {
    UploadText(handle, &options);
    if (!MarkText(handle)) {
      fprintf(stderr, "The text was not marked to its end.\n");
      return EXIT_FAILURE; /* open connections are ended in order */
    }
    printf("marked: %s\n", options.text);
  }
  CALL(vlDisconnect, handle);
  return EXIT_SUCCESS;
}
