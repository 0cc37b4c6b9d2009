#include "stroke_font.h"

#include <stddef.h>

/* Characters are drawn on a grid, four units wide and six high, and a gap of two units follows. */
enum { kGridHeight = 6, kGridPitch = 6 };

/* Strokes are separated by spaces. A stroke is a run of grid points, each one digit for x and one for y: a
 * jump to the first point, marks to the others. */
static const char* const kStrokes[128] = {
    [' '] = "",
    ['-'] = "1333",
    ['.'] = "2030312120",
    ['/'] = "0046",
    ['0'] = "103041453616050110 0145",
    ['1'] = "152620 1030",
    ['2'] = "05163645440040",
    ['3'] = "0516364544334241301001 1333",
    ['4'] = "30360242",
    ['5'] = "460603334241301001",
    ['6'] = "4536160501103041423303",
    ['7'] = "064610",
    ['8'] = "13020110304142331304051636454433",
    ['9'] = "0110304145361605041343",
    ['A'] = "0004264440 0242",
    ['B'] = "00063645443342413000 0333",
    ['C'] = "4536160501103041",
    ['D'] = "00062644422000",
    ['E'] = "46060040 0333",
    ['F'] = "460600 0333",
    ['G'] = "45361605011030414323",
    ['H'] = "0006 0343 4640",
    ['I'] = "1636 2620 1030",
    ['J'] = "0110304146",
    ['K'] = "0006 460340",
    ['L'] = "060040",
    ['M'] = "0006234640",
    ['N'] = "00064046",
    ['O'] = "103041453616050110",
    ['P'] = "00063645443303",
    ['Q'] = "103041453616050110 2240",
    ['R'] = "00063645443303 2340",
    ['S'] = "453616050413334241301001",
    ['T'] = "0646 2620",
    ['U'] = "060110304146",
    ['V'] = "062046",
    ['W'] = "0610233046",
    ['X'] = "0046 0640",
    ['Y'] = "062346 2320",
    ['Z'] = "06460040",
};

bool HasCharacter(char character) {
  const unsigned char code = (unsigned char)character;
  return code < 128 && kStrokes[code] != NULL;
}

void MarkCharacter(int64_t list, char character, Point origin, double height) {
  const double unit = height / kGridHeight;
  bool strokeBegins = true;
  for (const char* next = kStrokes[(unsigned char)character]; *next != '\0';) {
    if (*next == ' ') {
      strokeBegins = true;
      next += 1;
      continue;
    }
    const Point point = {origin.x + unit * (next[0] - '0'), origin.y + unit * (next[1] - '0')};
    if (strokeBegins) {
      JumpTo(list, point);
    } else {
      MarkTo(list, point);
    }
    strokeBegins = false;
    next += 2;
  }
}

double CharacterPitch(double height) {
  return height * kGridPitch / kGridHeight;
}
