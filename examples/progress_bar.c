#define _POSIX_C_SOURCE 200809L /* isatty, fileno */

#include "progress_bar.h"

#include <stdio.h>
#include <unistd.h>

enum { kBarWidth = 50 };

ProgressBar NewProgressBar(void) {
  return (ProgressBar){.onTerminal = isatty(fileno(stdout)) == 1};
}

static int32_t Clamp(int32_t percent) {
  return percent < 0 ? 0 : percent > 100 ? 100 : percent;
}

static void DrawBar(int32_t percent) {
  const int filled = percent * kBarWidth / 100;
  printf("\r[");
  for (int i = 0; i < kBarWidth; ++i) putchar(i < filled ? '#' : '.');
  printf("] %3d %%", percent);
}

void ShowProgress(ProgressBar* bar, int32_t percent) {
  percent = Clamp(percent);
  if (bar->onTerminal) {
    DrawBar(percent);
    bar->lineIsOpen = true;
  } else if (percent / 10 > bar->shown / 10) {
    printf("progress %d %%\n", percent / 10 * 10);
  }
  bar->shown = percent;
  fflush(stdout); /* at once, also into a pipe */
}

void EndProgressBar(ProgressBar* bar) {
  if (bar->lineIsOpen) putchar('\n');
  bar->lineIsOpen = false;
}
