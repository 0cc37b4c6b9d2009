#include "shapes.h"

#include <math.h>

#include "call.h"
#include "kelvo/kelvo.h"

static const double kQuarterTurn = 1.5707963267948966;

/* How far the polyline of an arc may stay inside the true arc: well below the width of the laser's spot. */
static const double kChordError = 0.01;

void JumpTo(int64_t list, Point target) {
  CALL(vlListAppendJumpAbs2D, list, target.x, target.y);
}

void MarkTo(int64_t list, Point target) {
  CALL(vlListAppendMarkAbs2D, list, target.x, target.y);
}

static Point OnCircle(Point centre, double radius, double angle) {
  return (Point){centre.x + radius * cos(angle), centre.y + radius * sin(angle)};
}

/* Marks an arc as short straight marks. The list must have arrived at the arc's start. */
static void MarkArc(int64_t list, Point centre, double radius, double startAngle, double sweep) {
  const double largestStep = 2 * acos(1 - kChordError / radius);
  const int steps = (int)ceil(sweep / largestStep);
  for (int i = 1; i <= steps; ++i) MarkTo(list, OnCircle(centre, radius, startAngle + sweep * i / steps));
}

void MarkCircle(int64_t list, Point centre, double radius) {
  JumpTo(list, OnCircle(centre, radius, 0));
  MarkArc(list, centre, radius, 0, 4 * kQuarterTurn);
}

void MarkRoundedRectangle(int64_t list, double width, double height, double cornerRadius, int32_t passes) {
  const double x = width / 2 - cornerRadius;
  const double y = height / 2 - cornerRadius;
  const Point corners[] = {{x, y}, {-x, y}, {-x, -y}, {x, -y}};

  /* Begins where the last corner ends: a pass then closes the outline, and the next one goes straight on. */
  JumpTo(list, (Point){width / 2, -y});
  CALL(vlListAppendLoopStart, list, passes);
  for (int i = 0; i < 4; ++i) {
    MarkTo(list, OnCircle(corners[i], cornerRadius, i * kQuarterTurn));
    MarkArc(list, corners[i], cornerRadius, i * kQuarterTurn, kQuarterTurn);
  }
  CALL(vlListAppendLoopEnd, list);
}
