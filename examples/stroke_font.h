/* A small single-stroke font of fixed pitch: all of printable ASCII. */
#ifndef STROKE_FONT_H
#define STROKE_FONT_H

#include <stdbool.h>

#include "shapes.h"

bool HasCharacter(char character);

/* Marks a character of the font with its lower left corner at `origin`. `height` is that of a capital letter. */
void MarkCharacter(int64_t list, char character, Point origin, double height);

/* Appends the character as a glyph for a card's font: relative moves from the character's lower left corner to
 * that of the next. */
void AppendGlyph(int64_t list, char character, double height);

/* The distance from one character to the next in a line of text. */
double CharacterPitch(double height);

#endif
