/* Runs a list that is kept as text, which may be written by hand or by another program (docs/list-text.md), and
 * shows that the card's list is the same as the file's:
 *
 *     list_from_text examples/data/rosette.txt
 *     list_from_text - 192.168.1.20 < rosette.txt
 *
 * Exit status: 0 done; 1 a call failed, the list was not run to its end, or the card's list is another one;
 * 2 wrong usage, or a file that cannot be read. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "call.h"
#include "card_address.h"
#include "kelvo/kelvo.h"
#include "run_list.h"

enum { kListId = 1, kNoListField = -1, kTimeoutMs = 60000 };

static _Noreturn void ExitWithUsage(void) {
  fprintf(
      stderr,
      "usage: list_from_text FILE [HOST [PORT]]\n"
      "  FILE          the list in text form, - for standard input; lines that begin with # are left out\n"
      "  HOST, PORT    the card (default 127.0.0.1 and %d)\n",
      KELVO_DEFAULT_PORT);
  exit(2);
}

static _Noreturn void ExitBecauseOf(const char* path) {
  perror(path);
  exit(2);
}

/* Reads the whole file. The text form itself has no comments: they are replaced by blanks here. */
static char* ReadText(const char* path) {
  FILE* file = strcmp(path, "-") == 0 ? stdin : fopen(path, "r");
  if (file == NULL) ExitBecauseOf(path);
  size_t size = 0;
  size_t room = 4096;
  char* text = malloc(room);
  bool atLineStart = true;
  bool inComment = false;
  for (int next; text != NULL && (next = fgetc(file)) != EOF;) {
    inComment = next != '\n' && (inComment || (atLineStart && next == '#'));
    atLineStart = next == '\n';
    text[size++] = (char)(inComment ? ' ' : next);
    if (size == room) text = realloc(text, room *= 2);
  }
  if (text == NULL || ferror(file)) ExitBecauseOf(path);
  text[size] = '\0';
  if (file != stdin) fclose(file);
  return text;
}

/* The text of a list; the caller frees it. */
static char* TextOf(int64_t list) {
  const uint32_t size = (uint32_t)CALL(vlListStringLen, list) + 2;
  uint32_t length = 0;
  char* text = malloc(size);
  if (text == NULL) ExitBecauseOf("text of a list");
  CALL(vlListToString, list, text, size, &length);
  return text;
}

/* Prints the text of a list, a command a line. */
static void PrintCommands(const char* text) {
  for (; *text != '\0'; ++text) {
    putchar(*text);
    if (text[0] == '}' && text[1] == ',') fputs(",\n ", stdout), ++text;
  }
  putchar('\n');
}

/* Makes the text a list on the card. Returns it as it was understood: laid out like every list's text. */
static char* Upload(int32_t handle, const char* text) {
  const int64_t list = CALL(vlListAllocateFromString, handle, text);
  CALL(vlListSet, handle, kListId, list, false, kNoListField);
  printf("list %d: %" PRId64 " commands\n", kListId, CALL(vlListCommandCount, list));
  char* understood = TextOf(list);
  CALL(vlListReleaseHandle, list); /* the card has its own copy now */
  return understood;
}

/* Fetches the card's list, prints it and tells whether it is the one that was sent. */
static bool IsOnCard(int32_t handle, const char* sent) {
  const int64_t list = CALL(vlListAllocate, handle);
  CALL(vlListGet, handle, kListId, list);
  char* received = TextOf(list);
  CALL(vlListReleaseHandle, list);
  const bool same = strcmp(sent, received) == 0;
  PrintCommands(received);
  printf("The list on the card is %s.\n", same ? "the same" : "another one");
  free(received);
  return same;
}

int main(int argc, char** argv) {
  CardAddress card;
  if (argc < 2 || !ParseCardAddress(argc - 2, argv + 2, &card)) ExitWithUsage();
  char* text = ReadText(argv[1]);
  const int32_t handle = (int32_t)CALL(vlConnect, card.host, card.port);
  char* sent = Upload(handle, text);
  free(text);
  const bool done = RunList(handle, kListId, kTimeoutMs) && IsOnCard(handle, sent);
  free(sent);
  CALL(vlDisconnect, handle);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
