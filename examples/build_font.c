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
#include "process.h"
#include "run_list.h"
#include "stroke_font.h"

enum {
  kFirstCharacter = 0x20,
  kLastCharacter = 0x7E,
  kListId = 1,
  kNoListField = -1,
  kMostLines = 20,
  kMarkTimeoutMs = 60000 /* all the text that fits a field takes less */
};

/* ---- Command line ---- */

typedef struct Options {
  int32_t fontId;
  double height;
  const char* lines[kMostLines];
  int lineCount; /* 0: no text is marked */
  CardAddress card;
} Options;

static _Noreturn void ExitWithUsage(void) {
  fprintf(stderr,
          "usage: build_font [--font ID] [--height MM] [--text TEXT] [HOST [PORT]]\n"
          "  --font ID     the font's number on the card (default 1)\n"
          "  --height MM   the height of its capital letters (default 3)\n"
          "  --text TEXT   mark TEXT, in printable ASCII, in the middle of the field; again for each further "
          "line\n"
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
  Options options = {.fontId = 1, .height = 3, .lineCount = 0};
  int i = 1;
  for (; i < count && arguments[i][0] == '-'; i += 2) {
    if (i + 1 == count) ExitWithUsage();
    if (strcmp(arguments[i], "--font") == 0) {
      options.fontId = (int32_t)ParseNumber(arguments[i + 1], 0, 1e6);
    } else if (strcmp(arguments[i], "--height") == 0) {
      options.height = ParseNumber(arguments[i + 1], 0.01, 1000);
    } else if (strcmp(arguments[i], "--text") == 0 && options.lineCount < kMostLines) {
      options.lines[options.lineCount++] = CheckText(arguments[i + 1]);
    } else {
      ExitWithUsage();
    }
  }
  if (!ParseCardAddress(count - i, arguments + i, &options.card)) ExitWithUsage();
  return options;
}

/* ---- The font ---- */

/* Sends the font to the card, which keeps a stored copy of it, too, and marks text in it from then on. */
static void InstallFont(int32_t handle, const Options* options) {
  const int64_t font = BuildFont(handle, options->fontId, options->height, kFirstCharacter, kLastCharacter);
  uint32_t count = 0;
  CALL(vlFontCharsLen, font, &count);
  CALL(vlFontSet, handle, font);
  CALL(vlFontStore, handle, options->fontId);
  CALL(vlFontSetActive, handle, options->fontId);
  printf("font %" PRId32 ": %" PRIu32 " characters, sent, stored and active\n", options->fontId, count);
  CALL(vlFontReleaseHandle, font); /* the card has its own copy now */
}

/* ---- The text ---- */

/* The list holds no strokes, only the text: the card takes each character's glyph from the font. A glyph leads to
 * where the next character begins; a new line takes a jump. */
static void UploadText(int32_t handle, const Options* options) {
  const int64_t list = CALL(vlListAllocate, handle);
  const double lineFeed = 2 * options->height;
  double y = lineFeed * (options->lineCount - 1) / 2 - options->height / 2;
  AppendProcessParameters(list);
  CALL(vlListAppendSelectFont, list, options->fontId);
  for (int i = 0; i < options->lineCount; ++i, y -= lineFeed) {
    const double width = (double)strlen(options->lines[i]) * CharacterPitch(options->height);
    CALL(vlListAppendJumpAbs2D, list, -width / 2, y);
    CALL(vlListAppendMarkText, list, options->lines[i]);
  }
  CALL(vlListSet, handle, kListId, list, false, kNoListField);
  CALL(vlListReleaseHandle, list);
}

int main(int argc, char** argv) {
  const Options options = ParseOptions(argc, argv);
  const int32_t handle = (int32_t)CALL(vlConnect, options.card.host, options.card.port);
  InstallFont(handle, &options);
  if (options.lineCount > 0) {
    UploadText(handle, &options);
    if (!RunList(handle, kListId, kMarkTimeoutMs)) {
      fprintf(stderr, "The text was not marked to its end.\n");
      return EXIT_FAILURE; /* open connections are ended in order */
    }
    for (int i = 0; i < options.lineCount; ++i) printf("marked: %s\n", options.lines[i]);
  }
  CALL(vlDisconnect, handle);
  return EXIT_SUCCESS;
}
