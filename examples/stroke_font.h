/* A small single-stroke font: digits, capital letters, dash, dot, slash and space. */
#ifndef STROKE_FONT_H
#define STROKE_FONT_H

#include <stdbool.h>

#include "shapes.h"

bool HasCharacter(char character);

/* Marks a character of the font with its lower left corner at `origin`. */
void MarkCharacter(int64_t list, char character, Point origin, double height);

/* The distance from one character to the next in a line of text. */
double CharacterPitch(double height);

#endif
