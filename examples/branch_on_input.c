/* Lets the pins of an input port decide what a list marks. In front of each of a row of parts the list waits until
 * pins tell what kind of part is there, marks the shape of that kind and waits until the part is taken away, all on
 * the card: this program only listens.
 *
 *     kelvo-virtual-card --svg parts.svg    in one terminal; it takes lines such as "input 1 4" and "input 1 0"
 *     branch_on_input                       in another
 *
 * Exit status: 0 done; 1 a call failed or the list was not run to its end; 2 wrong usage. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "call.h"
#include "card_address.h"
#include "kelvo/kelvo.h"
#include "process.h"
#include "run_list.h"

enum {
  kListId = 1,
  kNoListField = -1,
  kParts = 7,
  kWaitUs = 5000000,  /* how long the list waits for a part to come, and for it to go */
  kTimeoutMs = 100000 /* all the waits and marks of the row */
};

/* Pins 0 to 2 of port 1 are the part's kind; none is set while there is no part. */
enum { kPort = 1, kKindPins = 7 };

/* Progress values. A kind of part has its own number, from 1. */
enum { kAwaited = 100, kUnknownKind, kNobodyCame };

static const double kPitch = 14, kPartRadius = 6, kShapeRadius = 5;

/* A star's stroke goes on by `step` of the corners each time: by 1 it is a plain polygon. */
typedef struct Kind {
  const char* name; /* also the label of what the list does for it */
  int corners;
  int step;
} Kind;

static const Kind kKinds[] = {
    {"triangle", 3, 1}, {"diamond", 4, 1}, {"hexagon", 6, 1}, {"star", 5, 2}, {"seven-pointed star", 7, 3}};
enum { kKindCount = sizeof kKinds / sizeof *kKinds };

/* ---- Shapes: they begin and end in the middle of the part, wherever that is ---- */

static void AppendShape(int64_t list, int corners, int step) {
  const double turn = 2 * acos(-1) * step / corners;
  double x = 0, y = kShapeRadius;
  CALL(vlListAppendJumpRel2D, list, x, y);
  for (int i = 1; i <= corners; ++i) {
    const double nextX = kShapeRadius * sin(turn * i), nextY = kShapeRadius * cos(turn * i);
    CALL(vlListAppendMarkRel2D, list, nextX - x, nextY - y);
    x = nextX, y = nextY;
  }
  CALL(vlListAppendJumpRel2D, list, -x, -y);
}

static void AppendRing(int64_t list, bool dashed) {
  CALL(vlListAppendEnableDashedLine, list, dashed, 0);
  CALL(vlListAppendEllipseRel2D, list, 0, 0, kPartRadius, kPartRadius, 0);
  CALL(vlListAppendEnableDashedLine, list, false, 0);
  CALL(vlListAppendJumpRel2D, list, -kPartRadius, 0);
}

/* ---- The list ---- */

/* Waits until a part is there, or for `kWaitUs`, and goes on at the label of what came. */
static void AppendDecision(int64_t list) {
  CALL(vlListAppendProgress, list, kAwaited);
  /* Any of the pins set, then none of them: all at 0. */
  CALL(vlListAppendWaitForInput, list, kKindPins, kPort, true, false, kKindPins, kWaitUs);
  CALL(vlListAppendBranchToLabelCondPort, list, "nobody", kKindPins, kPort, true, true, 0);
  CALL(vlListAppendSwitchPort, list, kPort, true, kKindPins);
  for (int i = 0; i < kKindCount; ++i) {
    CALL(vlListAppendCaseToLabelPort, list, kKinds[i].name, (uint32_t)i + 1);
  }
  CALL(vlListAppendDefaultToLabel, list, "unknown");
}

static void AppendOutcomes(int64_t list) {
  for (int i = 0; i < kKindCount; ++i) {
    CALL(vlListAppendLabel, list, kKinds[i].name);
    CALL(vlListAppendProgress, list, i + 1);
    AppendRing(list, false);
    AppendShape(list, kKinds[i].corners, kKinds[i].step);
    CALL(vlListAppendBranchToLabel, list, "next");
  }
  CALL(vlListAppendLabel, list, "unknown");
  CALL(vlListAppendProgress, list, kUnknownKind);
  AppendRing(list, false); /* a part without a shape */
  CALL(vlListAppendBranchToLabel, list, "next");
  CALL(vlListAppendLabel, list, "nobody");
  CALL(vlListAppendProgress, list, kNobodyCame);
  AppendRing(list, true); /* the place of a part */
}

static void Upload(int32_t handle) {
  const int64_t list = CALL(vlListAllocate, handle);
  const double dashes[] = {kPartRadius * acos(-1) / 24, kPartRadius * acos(-1) / 24};
  AppendProcessParameters(list);
  CALL(vlListAppendDashedLinePattern, list, dashes, 2);
  CALL(vlListAppendJumpAbs2D, list, -kPitch * (kParts - 1) / 2, 0);
  CALL(vlListAppendLoopStart, list, kParts);
  AppendDecision(list);
  AppendOutcomes(list);
  CALL(vlListAppendLabel, list, "next");
  CALL(vlListAppendWaitForInput, list, kKindPins, kPort, true, true, 0, kWaitUs); /* it has gone */
  CALL(vlListAppendJumpRel2D, list, kPitch, 0);
  CALL(vlListAppendLoopEnd, list);
  CALL(vlListSet, handle, kListId, list, false, kNoListField);
  CALL(vlListReleaseHandle, list); /* the card has its own copy now */
}

/* ---- The run ---- */

/* Says which way the list went. Called on the connection's receive thread. */
static void ShowProgress(int32_t handle, int32_t value) {
  static int part = 0;
  (void)handle;
  if (value == kAwaited) {
    printf("part %d: waiting\n", ++part);
  } else {
    const bool isKind = value >= 1 && value <= kKindCount;
    printf("part %d: %s\n", part,
           isKind                 ? kKinds[value - 1].name
           : value == kNobodyCame ? "nobody came"
                                  : "of no known kind");
  }
  fflush(stdout); /* at once, also into a pipe */
}

int main(int argc, char** argv) {
  CardAddress card;
  uint32_t callbackId = 0;
  if (!ParseCardAddress(argc - 1, argv + 1, &card)) {
    fprintf(stderr, "usage: branch_on_input [HOST [PORT]]\n");
    return 2;
  }
  const int32_t handle = (int32_t)CALL(vlConnect, card.host, card.port);
  CALL(vlListRegisterProgressCallback, handle, ShowProgress, &callbackId);
  Upload(handle);
  const bool done = RunList(handle, kListId, kTimeoutMs);
  CALL(vlDisconnect, handle);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
