/* Builds a dial of lists that call each other. The main list calls the same two lists for each hour: one turns the
 * field and tells in a flag what kind of hour it is, the other marks what belongs to the hour, by that flag, and
 * takes its number from a counter. Another counter outlives the run: each dial bears the next number.
 *
 *     list_of_lists                     on a virtual card: kelvo-virtual-card --svg dial.svg
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
#include "shapes.h"
#include "stroke_font.h"

/* A list's number on the card. A list may call lists that come to the card after it. */
typedef enum ListId { kDial = 1, kTurn, kHour, kQuarterMark, kHourMark, kPetal, kListsEnd } ListId;

enum { kNoListField = -1, kTimeoutMs = 60000, kFontId = 2, kHours = 12 };

/* What the card remembers, under names that the lists agree on. */
static const char kHourCounter[] = "hour", kDialCounter[] = "dials", kIsQuarter[] = "is quarter";

static const double kRadius = 30, kNumberHeight = 3;

/* ---- The lists ---- */

/* Jumps to where a number of `digits` has its middle at (0, y). A character's last third is the gap to the next. */
static void JumpToNumber(int64_t list, double y, int digits) {
  const double pitch = CharacterPitch(kNumberHeight);
  JumpTo(list, (Point){-(digits - 1.0 / 3) * pitch / 2, y - kNumberHeight / 2});
}

static void AppendTurnTo(int64_t list, int hour) {
  const double angle = -2 * acos(-1) * hour / kHours;
  const vlTransform3D turn = {.A = {{cos(angle), -sin(angle), 0}, {sin(angle), cos(angle), 0}, {0, 0, 1}}};
  CALL(vlListAppendTransformation, list, &turn);
}

static void AppendDial(int64_t list) {
  AppendProcessParameters(list);
  CALL(vlListAppendSelectFont, list, kFontId);
  CALL(vlListAppendIntegerSet, list, kHourCounter, 0);
  CALL(vlListAppendLoopStart, list, kHours);
  CALL(vlListAppendIncrementCounter, list, kHourCounter);
  CALL(vlListAppendCallList, list, kTurn);
  CALL(vlListAppendCallList, list, kHour);
  CALL(vlListAppendLoopEnd, list);
  AppendTurnTo(list, 0);
  MarkCircle(list, (Point){0, 0}, kRadius);
  MarkCircle(list, (Point){0, 0}, kRadius / 5);
  CALL(vlListAppendIncrementCounter, list, kDialCounter);
  JumpToNumber(list, 0, 3);
  CALL(vlListAppendMarkCounter, list, kDialCounter, 3);
}

/* Goes on by the counter at one of twelve places, each of which turns what follows and ends the list. */
static void AppendTurn(int64_t list) {
  char label[16];
  CALL(vlListAppendSwitchValue, list, kHourCounter);
  for (int hour = 1; hour <= kHours; ++hour) {
    snprintf(label, sizeof label, "%d", hour);
    CALL(vlListAppendCaseToLabelValue, list, label, hour);
  }
  for (int hour = 1; hour <= kHours; ++hour) {
    snprintf(label, sizeof label, "%d", hour);
    CALL(vlListAppendLabel, list, label);
    AppendTurnTo(list, hour);
    CALL(vlListAppendBooleanSet, list, kIsQuarter, hour % 3 == 0);
    CALL(vlListAppendExitList, list);
  }
}

/* Everything is drawn at twelve o'clock: the turn brings it to its place. */
static void AppendHour(int64_t list) {
  CALL(vlListAppendCallListCondFlag, list, kQuarterMark, kIsQuarter, true);
  CALL(vlListAppendCallListCondFlag, list, kHourMark, kIsQuarter, false);
  CALL(vlListAppendCallList, list, kPetal);
  JumpToNumber(list, kRadius * 0.75, 2);
  CALL(vlListAppendMarkCounter, list, kHourCounter, 2);
  for (int minute = 1; minute < 5; ++minute) {
    const double angle = 2 * acos(-1) * minute / (5 * kHours);
    JumpTo(list, (Point){kRadius * 0.97 * sin(angle), kRadius * 0.97 * cos(angle)});
    MarkTo(list, (Point){kRadius * sin(angle), kRadius * cos(angle)});
  }
}

static void AppendQuarterMark(int64_t list) {
  JumpTo(list, (Point){0, kRadius * 0.85});
  MarkTo(list, (Point){-kRadius * 0.05, kRadius});
  MarkTo(list, (Point){kRadius * 0.05, kRadius});
  MarkTo(list, (Point){0, kRadius * 0.85});
}

static void AppendHourMark(int64_t list) {
  JumpTo(list, (Point){0, kRadius * 0.9});
  MarkTo(list, (Point){0, kRadius});
}

static void AppendPetal(int64_t list) {
  const double foot = kRadius / 5, tip = kRadius * 0.62, width = kRadius * 0.3;
  JumpTo(list, (Point){0, foot});
  CALL(vlListAppendCubicBezierAbs2D, list, -width, foot * 2, -width * 0.6, tip * 0.9, 0, tip);
  CALL(vlListAppendCubicBezierAbs2D, list, width * 0.6, tip * 0.9, width, foot * 2, 0, foot);
}

/* ---- On the card ---- */

static void UploadLists(int32_t handle) {
  static void (*const append[kListsEnd])(int64_t list) = {
      [kDial] = AppendDial,         [kTurn] = AppendTurn,
      [kHour] = AppendHour,         [kQuarterMark] = AppendQuarterMark,
      [kHourMark] = AppendHourMark, [kPetal] = AppendPetal};
  const int64_t list = CALL(vlListAllocate, handle);
  for (ListId id = kDial; id < kListsEnd; ++id) {
    CALL(vlListClear, list);
    append[id](list);
    CALL(vlListSet, handle, (int32_t)id, list, false, kNoListField);
    printf("list %d: %d commands\n", (int)id, (int)CALL(vlListCommandCount, list));
  }
  CALL(vlListReleaseHandle, list); /* the card has its own copies now */
}

static void UploadDigits(int32_t handle) {
  const int64_t font = BuildFont(handle, kFontId, kNumberHeight, '0', '9');
  CALL(vlFontSet, handle, font);
  CALL(vlFontReleaseHandle, font);
}

int main(int argc, char** argv) {
  CardAddress card;
  if (!ParseCardAddress(argc - 1, argv + 1, &card)) {
    fprintf(stderr, "usage: list_of_lists [HOST [PORT]]\n");
    return 2;
  }
  const int32_t handle = (int32_t)CALL(vlConnect, card.host, card.port);
  UploadDigits(handle);
  UploadLists(handle);
  const bool done = RunList(handle, kDial, kTimeoutMs);
  if (done) printf("marked a dial\n");
  CALL(vlDisconnect, handle);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
