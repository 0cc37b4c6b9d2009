#include "matrix_raster.h"

#include "call.h"
#include "kelvo/kelvo.h"

/* Even: lines are marked in pairs, one to the right and one back. */
enum { kLinesPerModule = 10, kMostRuns = (kDataMatrixLargestSize + 1) / 2 };

/* A run of dark modules in a row, and the light ones that follow it. */
typedef struct Run {
  int dark;
  int light;
} Run;

/* Finds the runs of a row. A row begins with a dark module, the symbol's solid edge. Returns their number. */
static int FindRuns(const DataMatrix* symbol, int row, Run runs[kMostRuns]) {
  int count = 0;
  for (int column = 0; column < symbol->size;) {
    Run run = {0, 0};
    for (; column < symbol->size && symbol->dark[row][column]; ++column) ++run.dark;
    for (; column < symbol->size && !symbol->dark[row][column]; ++column) ++run.light;
    runs[count++] = run;
  }
  return count;
}

/* The spot is as wide as the lines are apart. A mark stays half a spot inside its run at both ends, so that
 * the modules come out at their true width. */
static void MarkRun(int64_t list, const Run* run, double moduleSize, double direction) {
  const double spot = moduleSize / kLinesPerModule;
  CALL(vlListAppendMarkRel2D, list, direction * (run->dark * moduleSize - spot), 0);
}

static void JumpGap(int64_t list, const Run* run, double moduleSize, double direction) {
  const double spot = moduleSize / kLinesPerModule;
  CALL(vlListAppendJumpRel2D, list, direction * (run->light * moduleSize + spot), 0);
}

static void MarkLineToTheRight(int64_t list, const Run* runs, int count, double moduleSize) {
  for (int i = 0; i < count; ++i) {
    if (i > 0) JumpGap(list, &runs[i - 1], moduleSize, 1);
    MarkRun(list, &runs[i], moduleSize, 1);
  }
}

static void MarkLineToTheLeft(int64_t list, const Run* runs, int count, double moduleSize) {
  for (int i = count - 1; i >= 0; --i) {
    MarkRun(list, &runs[i], moduleSize, -1);
    if (i > 0) JumpGap(list, &runs[i - 1], moduleSize, -1);
  }
}

void JumpToFirstRow(int64_t list, Point corner, double moduleSize) {
  const double spot = moduleSize / kLinesPerModule;
  JumpTo(list, (Point){corner.x + spot / 2, corner.y - spot / 2});
}

/* All lines of a row are alike: the list holds one pair of them, in relative moves, and a loop repeats it. */
void MarkMatrixRow(int64_t list, const DataMatrix* symbol, int row, double moduleSize) {
  const double spot = moduleSize / kLinesPerModule;
  Run runs[kMostRuns];
  const int count = FindRuns(symbol, row, runs);

  CALL(vlListAppendLoopStart, list, kLinesPerModule / 2);
  MarkLineToTheRight(list, runs, count, moduleSize);
  CALL(vlListAppendJumpRel2D, list, 0, -spot);
  MarkLineToTheLeft(list, runs, count, moduleSize);
  CALL(vlListAppendJumpRel2D, list, 0, -spot);
  CALL(vlListAppendLoopEnd, list);
}
