#include "nameplate.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

#include "call.h"
#include "data_matrix.h"
#include "kelvo/kelvo.h"
#include "matrix_raster.h"
#include "process.h"
#include "shapes.h"
#include "stroke_font.h"

enum { kLongestSerial = 18, kOutlinePasses = 2 };

/* Where things are, in millimetres. The code keeps a module's width of quiet zone on all sides. */
static const double kPlateWidth = 80, kPlateHeight = 40, kCornerRadius = 4;
static const Point kLeftHole = {-35, 0}, kRightHole = {35, 0};
static const double kHoleRadius = 2.25;
static const double kTextWidth = 40;
static const Point kCaptionOrigin = {-29.5, 2};
static const Point kSerialOrigin = {-29.5, -6};
static const double kCaptionHeight = 4, kSerialHeight = 3;
static const Point kCodeCentre = {20.5, 0};
static const double kModuleSize = 1;

/* The share of the job's time that a part ends at, in percent. Rounded from a run with an 8-digit number. */
enum { kOutlineDone = 25, kHolesDone = 29, kCaptionDone = 35, kSerialDone = 42, kAllDone = 100 };

/* Reports that `done` of `total` steps are done of a part that takes the job from `from` to `to` percent. */
static void AppendPartProgress(int64_t list, int from, int to, int done, int total) {
  CALL(vlListAppendProgress, list, from + (to - from) * done / total);
}

static void AppendOutline(int64_t list) {
  MarkRoundedRectangle(list, kPlateWidth, kPlateHeight, kCornerRadius, kOutlinePasses);
  CALL(vlListAppendProgress, list, kOutlineDone);
}

static void AppendHoles(int64_t list) {
  MarkCircle(list, kLeftHole, kHoleRadius);
  MarkCircle(list, kRightHole, kHoleRadius);
  CALL(vlListAppendProgress, list, kHolesDone);
}

/* Marks a line of text, smaller than `height` if it would get too wide otherwise. */
static void AppendText(int64_t list, const char* text, Point origin, double height, int from, int to) {
  const int length = (int)strlen(text);
  const double fittingHeight = height * fmin(1, kTextWidth / (length * CharacterPitch(height)));
  for (int i = 0; i < length; ++i) {
    MarkCharacter(list, text[i], origin, fittingHeight);
    origin.x += CharacterPitch(fittingHeight);
    AppendPartProgress(list, from, to, i + 1, length);
  }
}

static void AppendSerial(int64_t list, const char* serial) {
  char text[sizeof "S/N " + kLongestSerial];
  snprintf(text, sizeof text, "S/N %s", serial);
  AppendText(list, text, kSerialOrigin, kSerialHeight, kCaptionDone, kSerialDone);
}

static void AppendCode(int64_t list, const char* serial) {
  DataMatrix symbol;
  if (!EncodeDataMatrix(serial, &symbol)) return; /* cannot be: IsMarkableSerial has encoded it */
  const double halfSide = symbol.size * kModuleSize / 2;
  JumpToFirstRow(list, (Point){kCodeCentre.x - halfSide, kCodeCentre.y + halfSide}, kModuleSize);
  for (int row = 0; row < symbol.size; ++row) {
    MarkMatrixRow(list, &symbol, row, kModuleSize);
    AppendPartProgress(list, kSerialDone, kAllDone, row + 1, symbol.size);
  }
}

bool IsMarkableSerial(const char* serial) {
  const size_t length = strlen(serial);
  if (length == 0 || length > kLongestSerial) return false;
  for (size_t i = 0; i < length; ++i) {
    if (!HasCharacter(serial[i])) return false;
  }
  DataMatrix symbol;
  return EncodeDataMatrix(serial, &symbol);
}

void AppendNameplate(int64_t list, const char* serial) {
  AppendProcessParameters(list);
  CALL(vlListAppendProgress, list, 1);
  AppendOutline(list);
  AppendHoles(list);
  AppendText(list, "KELVO CARD", kCaptionOrigin, kCaptionHeight, kHolesDone, kCaptionDone);
  AppendSerial(list, serial);
  AppendCode(list, serial);
}
