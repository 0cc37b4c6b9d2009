/* Basic moves and outlines. Lengths and positions are in field units, taken as millimetres; y points up. */
#ifndef SHAPES_H
#define SHAPES_H

#include <stdint.h>

typedef struct Point {
  double x;
  double y;
} Point;

/* Jumps to `target`: laser off. */
void JumpTo(int64_t list, Point target);

/* Marks a straight line to `target`: laser on. */
void MarkTo(int64_t list, Point target);

/* Marks a full circle, counter-clockwise. */
void MarkCircle(int64_t list, Point centre, double radius);

/* Marks a rectangle around the origin with rounded corners, `passes` times without a stop, counter-clockwise.
 */
void MarkRoundedRectangle(int64_t list, double width, double height, double cornerRadius, int32_t passes);

#endif
