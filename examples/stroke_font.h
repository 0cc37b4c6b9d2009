/* A small single-stroke font of fixed pitch: all of printable ASCII. */
#ifndef STROKE_FONT_H
#define STROKE_FONT_H

#include <stdbool.h>

#include "shapes.h"

bool HasCharacter(char character);

/* Marks a character of the font with its lower left corner at `origin`. `height` is that of a capital letter. */
void MarkCharacter(int64_t list, char character, Point origin, double height);

/* Makes a font for a card of the characters from `first` to `last`, and gives its handle. */
int64_t BuildFont(int32_t handle, int32_t fontId, double height, uint16_t first, uint16_t last);

/* The distance from one character to the next in a line of text. */
double CharacterPitch(double height);

#endif
