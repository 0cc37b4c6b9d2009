/* Shows a progress on stdout: a bar on a terminal, else a plain line for every ten percent. */
#ifndef PROGRESS_BAR_H
#define PROGRESS_BAR_H

#include <stdbool.h>
#include <stdint.h>

typedef struct ProgressBar {
  bool onTerminal;
  bool lineIsOpen; /* the bar has been drawn and the cursor is still behind it */
  int32_t shown;   /* the percentage that was shown last */
} ProgressBar;

ProgressBar NewProgressBar(void);

void ShowProgress(ProgressBar* bar, int32_t percent);

/* Ends the bar's line. To be called before anything else is printed. */
void EndProgressBar(ProgressBar* bar);

#endif
