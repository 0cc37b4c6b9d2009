/* What a program in C does with the same points: the limit that points.py measures against. */
#include "kelvo/kelvo.h"

__attribute__((visibility("default"))) int32_t MarkAll(int64_t list, const double* points, uint32_t count);

int32_t MarkAll(int64_t list, const double* points, uint32_t count) {
  uint32_t i = 0;
  for (; i < count; ++i) {
    if (vlListAppendMarkAbs2D(list, points[2 * i], points[2 * i + 1]) != 0) return -1;
  }
  return 0;
}
