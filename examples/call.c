#include "call.h"

#include <stdio.h>
#include <stdlib.h>

#include "kelvo/kelvo.h"

/* Takes the last error's text; the caller frees it. Null only when memory has run out. */
static char* TakeLastError(void) {
  const int32_t size = vlGetLastErrorLen();
  char* text = malloc((size_t)size);
  if (text != NULL) vlGetLastError(text, size);
  return text;
}

/* Prints every line of `text` indented by two. A card words its refusals in several lines. */
static void PrintLines(FILE* out, const char* text) {
  bool atLineStart = true;
  for (; *text != '\0'; ++text) {
    if (atLineStart && *text != '\n') fputs("  ", out);
    fputc(*text, out);
    atLineStart = *text == '\n';
  }
  if (!atLineStart) fputc('\n', out);
}

int64_t CheckCall(const char* name, int64_t result) {
  if (result >= 0) return result;
  char* text = TakeLastError();
  fflush(stdout); /* what was printed before the failure stands before it */
  fprintf(stderr, "%s failed:\n", name);
  PrintLines(stderr, text == NULL ? "(no memory for the error's text)" : text);
  free(text);
  exit(EXIT_FAILURE); /* open connections are ended in order */
}
