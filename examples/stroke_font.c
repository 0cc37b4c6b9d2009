#include "stroke_font.h"

#include <stddef.h>

#include "call.h"
#include "kelvo/kelvo.h"

/* Characters are drawn on a grid, four units wide, and a gap of two units follows. The base line is at 2, so that
 * there is room below it. Small letters reach up to 6, capitals to 8. */
enum { kBaseLine = 2, kCapitalHeight = 6, kGridPitch = 6 };

/* Strokes are separated by spaces. A stroke is a run of grid points, each one digit for x and one for y: a
 * jump to the first point, marks to the others. */
static const char* const kStrokes[128] = {
    [' '] = "",
    ['!'] = "2825 2322",
    ['"'] = "1816 3836",
    ['#'] = "1218 3238 0444 0646",
    ['$'] = "473818070615354443321203 2921",
    ['%'] = "0248 0807171808 3332424333",
    ['&'] = "420607182837360403122244",
    ['\''] = "2826",
    ['('] = "38272332",
    [')'] = "18272312",
    ['*'] = "2723 0644 0446",
    ['+'] = "2723 0545",
    [','] = "232211",
    ['-'] = "1535",
    ['.'] = "2322",
    ['/'] = "0248",
    ['0'] = "123243473818070312 0347",
    ['1'] = "172822 1232",
    ['2'] = "07183847460242",
    ['3'] = "0718384746354443321203 1535",
    ['4'] = "32380444",
    ['5'] = "480805354443321203",
    ['6'] = "4738180703123243443505",
    ['7'] = "084812",
    ['8'] = "15040312324344351506071838474635",
    ['9'] = "0312324347381807061545",
    [':'] = "2625 2322",
    [';'] = "2625 232211",
    ['<'] = "470543",
    ['='] = "0646 0444",
    ['>'] = "074503",
    ['?'] = "07183847462524 2322",
    ['@'] = "4212030718384745342415263634",
    ['A'] = "0206284642 0444",
    ['B'] = "02083847463544433202 0535",
    ['C'] = "4738180703123243",
    ['D'] = "02082846442202",
    ['E'] = "48080242 0535",
    ['F'] = "480802 0535",
    ['G'] = "47381807031232434525",
    ['H'] = "0208 0545 4842",
    ['I'] = "1838 2822 1232",
    ['J'] = "0312324348",
    ['K'] = "0208 480542",
    ['L'] = "080242",
    ['M'] = "0208254842",
    ['N'] = "02084248",
    ['O'] = "123243473818070312",
    ['P'] = "02083847463505",
    ['Q'] = "123243473818070312 2442",
    ['R'] = "02083847463505 2542",
    ['S'] = "473818070615354443321203",
    ['T'] = "0848 2822",
    ['U'] = "080312324348",
    ['V'] = "082248",
    ['W'] = "0812253248",
    ['X'] = "0248 0842",
    ['Y'] = "082548 2522",
    ['Z'] = "08480242",
    ['['] = "38181232",
    ['\\'] = "0842",
    [']'] = "18383212",
    ['^'] = "062846",
    ['_'] = "0141",
    ['`'] = "1827",
    ['a'] = "4536160503123243 4642",
    ['b'] = "0802 0516364543321203",
    ['c'] = "4536160503123243",
    ['d'] = "4842 4536160503123243",
    ['e'] = "04444536160503123243",
    ['f'] = "48382722 1636",
    ['g'] = "4536160503123243 4641301001",
    ['h'] = "0802 0516364542",
    ['i'] = "162622 1232 2728",
    ['j'] = "263631201001 3738",
    ['k'] = "0802 460442",
    ['l'] = "182822 1232",
    ['m'] = "0602 05162522 25364542",
    ['n'] = "0602 0516364542",
    ['o'] = "123243453616050312",
    ['p'] = "0600 0516364543321203",
    ['q'] = "4536160503123243 4640",
    ['r'] = "0602 05163645",
    ['s'] = "45361605143443321203",
    ['t'] = "28233242 1636",
    ['u'] = "0603123243 4642",
    ['v'] = "062246",
    ['w'] = "0612243246",
    ['x'] = "0642 0246",
    ['y'] = "0603123243 4641301001",
    ['z'] = "06460242",
    ['{'] = "38272615242332",
    ['|'] = "2820",
    ['}'] = "18272635242312",
    ['~'] = "05163445",
};

/* The moves of a character, one after the other: each to a point of the grid, as a mark or a jump. */
typedef struct Moves {
  const char* next;
  bool begun;
  bool isMark;
  int x;
  int y;
} Moves;

static Moves MovesOf(char character) {
  return (Moves){.next = kStrokes[(unsigned char)character], .x = 0, .y = kBaseLine};
}

/* Takes the next move; false when there is none, and all stays as it was after the last. */
static bool TakeMove(Moves* moves) {
  if (*moves->next == '\0') return false;
  moves->isMark = moves->begun && *moves->next != ' ';
  if (*moves->next == ' ') moves->next += 1;
  moves->begun = true;
  moves->x = moves->next[0] - '0';
  moves->y = moves->next[1] - '0';
  moves->next += 2;
  return true;
}

bool HasCharacter(char character) {
  const unsigned char code = (unsigned char)character;
  return code < 128 && kStrokes[code] != NULL;
}

void MarkCharacter(int64_t list, char character, Point origin, double height) {
  const double unit = height / kCapitalHeight;
  for (Moves moves = MovesOf(character); TakeMove(&moves);) {
    const Point point = {origin.x + unit * moves.x, origin.y + unit * (moves.y - kBaseLine)};
    if (moves.isMark) {
      MarkTo(list, point);
    } else {
      JumpTo(list, point);
    }
  }
}

/* Appends the character as a glyph for a card's font: relative moves from the character's lower left corner to
 * that of the next. */
static void AppendGlyph(int64_t list, char character, double height) {
  const double unit = height / kCapitalHeight;
  Moves moves = MovesOf(character);
  for (Moves from = moves; TakeMove(&moves); from = moves) {
    const double dx = unit * (moves.x - from.x);
    const double dy = unit * (moves.y - from.y);
    if (moves.isMark) {
      CALL(vlListAppendMarkRel2D, list, dx, dy);
    } else {
      CALL(vlListAppendJumpRel2D, list, dx, dy);
    }
  }
  CALL(vlListAppendJumpRel2D, list, unit * (kGridPitch - moves.x), unit * (kBaseLine - moves.y));
}

int64_t BuildFont(int32_t handle, int32_t fontId, double height, uint16_t first, uint16_t last) {
  const int64_t font = CALL(vlFontAllocate, handle, fontId);
  const int64_t glyph = CALL(vlListAllocate, handle);
  for (uint16_t code = first; code <= last; ++code) {
    CALL(vlListClear, glyph);
    AppendGlyph(glyph, (char)code, height);
    CALL(vlFontAddChar, font, code, glyph); /* a copy, so one list does for all */
  }
  CALL(vlListReleaseHandle, glyph);
  return font;
}

double CharacterPitch(double height) {
  return height * kGridPitch / kCapitalHeight;
}
