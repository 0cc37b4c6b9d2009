#include "data_matrix.h"

#include <stdint.h>
#include <string.h>

enum { kMostDataWords = 18, kMostCheckWords = 14 };

typedef struct Capacity {
  int size;
  int dataWords;
  int checkWords;
} Capacity;

static const Capacity kCapacities[] = {{10, 3, 5}, {12, 5, 7}, {14, 8, 10}, {16, 12, 12}, {18, 18, 14}};

/* ---- Text to data codewords ---- */

static bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

/* ASCII encodation: a pair of digits takes one codeword. Returns the number of codewords, or -1. */
static int EncodeText(const char* text, uint8_t words[kMostDataWords]) {
  int count = 0;
  while (*text != '\0') {
    const unsigned char code = (unsigned char)*text;
    if (count == kMostDataWords || code > 127) return -1;
    const bool isPair = IsDigit(text[0]) && IsDigit(text[1]);
    words[count++] = (uint8_t)(isPair ? 130 + 10 * (text[0] - '0') + (text[1] - '0') : code + 1);
    text += isPair ? 2 : 1;
  }
  return count;
}

/* Fills up behind the text. Only the first pad is plain: the others are scrambled by their position, counted
 * from 1, since a run of equal codewords would make a pattern that disturbs reading. */
static void AppendPads(uint8_t* words, int count, int capacity) {
  for (int i = count; i < capacity; ++i) {
    const int scrambled = 129 + (149 * (i + 1)) % 253 + 1;
    words[i] = (uint8_t)(i == count ? 129 : scrambled > 254 ? scrambled - 254 : scrambled);
  }
}

/* ---- Error correction: Reed-Solomon over GF(256) ---- */

static unsigned Multiply(unsigned a, unsigned b) {
  const unsigned fieldPolynomial = 301; /* x^8 + x^5 + x^3 + x^2 + 1 */
  unsigned product = 0;
  for (; b != 0; b >>= 1) {
    if (b & 1) product ^= a;
    a <<= 1;
    if (a & 256) a ^= fieldPolynomial;
  }
  return product;
}

/* The polynomial with the roots 2^1 to 2^degree; its highest coefficient, which is 1, comes first. */
static void MakeGenerator(int degree, unsigned generator[kMostCheckWords + 1]) {
  unsigned root = 1;
  generator[0] = 1;
  for (int i = 1; i <= degree; ++i) {
    root = Multiply(root, 2);
    generator[i] = 0;
    for (int j = i; j > 0; --j) generator[j] ^= Multiply(generator[j - 1], root);
  }
}

/* Appends the remainder of the division of the data by the generator. */
static void AppendCheckWords(uint8_t* words, int dataWords, int checkWords) {
  unsigned generator[kMostCheckWords + 1];
  unsigned remainder[kMostCheckWords + 1] = {0}; /* the last one stays 0: it is shifted in */
  MakeGenerator(checkWords, generator);
  for (int i = 0; i < dataWords; ++i) {
    const unsigned factor = words[i] ^ remainder[0];
    for (int j = 0; j < checkWords; ++j) remainder[j] = remainder[j + 1] ^ Multiply(factor, generator[j + 1]);
  }
  for (int j = 0; j < checkWords; ++j) words[dataWords + j] = (uint8_t)remainder[j];
}

/* ---- Codewords to modules ---- */

typedef struct Cell {
  int row;
  int column;
} Cell;

/* The eight modules of a codeword, most significant bit first, seen from its last one. */
static const Cell kBody[8] = {{-2, -2}, {-2, -1}, {-1, -2}, {-1, -1}, {-1, 0}, {0, -2}, {0, -1}, {0, 0}};

/* A codeword that is split over two or three corners of the region; negative cells count from its far edge.
 * Square symbols need these two. */
static const Cell kCornerA[8] = {{-1, 0}, {-1, 1}, {-1, 2}, {0, -2}, {0, -1}, {1, -1}, {2, -1}, {3, -1}};
static const Cell kCornerB[8] = {{-3, 0}, {-2, 0}, {-1, 0}, {0, -4}, {0, -3}, {0, -2}, {0, -1}, {1, -1}};

/* The data region that is being filled: the symbol without its frame. */
typedef struct Region {
  DataMatrix* symbol;
  int size;
  const uint8_t* nextWord;
  bool used[kDataMatrixLargestSize][kDataMatrixLargestSize];
} Region;

static void SetModule(Region* region, int row, int column, bool dark) {
  region->symbol->dark[row + 1][column + 1] = dark;
  region->used[row][column] = true;
}

static void PlaceCorner(Region* region, const Cell cells[8]) {
  const unsigned word = *region->nextWord++;
  for (int i = 0; i < 8; ++i) {
    const int row = cells[i].row < 0 ? cells[i].row + region->size : cells[i].row;
    const int column = cells[i].column < 0 ? cells[i].column + region->size : cells[i].column;
    SetModule(region, row, column, word >> (7 - i) & 1);
  }
}

/* Places the next codeword with its last module at (row, column), unless that is outside or taken. Modules
 * beyond the upper or left edge wrap to the opposite one, shifted. */
static void PlaceBody(Region* region, int row, int column) {
  const int size = region->size;
  if (row < 0 || row >= size || column < 0 || column >= size || region->used[row][column]) return;
  const int shift = 4 - (size + 4) % 8;
  const unsigned word = *region->nextWord++;
  for (int i = 0; i < 8; ++i) {
    int bitRow = row + kBody[i].row;
    int bitColumn = column + kBody[i].column;
    if (bitRow < 0) {
      bitRow += size;
      bitColumn += shift;
    }
    if (bitColumn < 0) {
      bitColumn += size;
      bitRow += shift;
    }
    SetModule(region, bitRow, bitColumn, word >> (7 - i) & 1);
  }
}

/* Places the codewords along diagonals, up to the right and down to the left in turn. */
static void FillRegion(Region* region) {
  const int size = region->size;
  int row = 4;
  int column = 0;
  while (row < size || column < size) {
    if (row == size && column == 0) PlaceCorner(region, kCornerA);
    if (row == size - 2 && column == 0 && size % 4 != 0) PlaceCorner(region, kCornerB);
    for (; row >= 0 && column < size; row -= 2, column += 2) PlaceBody(region, row, column);
    row += 1;
    column += 3;
    for (; row < size && column >= 0; row += 2, column -= 2) PlaceBody(region, row, column);
    row += 3;
    column += 1;
  }
  if (!region->used[size - 1][size - 1]) { /* four modules are left over in some sizes */
    SetModule(region, size - 2, size - 2, true);
    SetModule(region, size - 1, size - 1, true);
  }
}

/* Left and bottom edge solid, top and right edge alternating. */
static void DrawFrame(DataMatrix* symbol) {
  const int last = symbol->size - 1;
  for (int i = 0; i <= last; ++i) {
    symbol->dark[0][i] = i % 2 == 0;
    symbol->dark[i][last] = i % 2 == 1;
  }
  for (int i = 0; i <= last; ++i) symbol->dark[i][0] = symbol->dark[last][i] = true;
}

bool EncodeDataMatrix(const char* text, DataMatrix* symbol) {
  uint8_t words[kMostDataWords + kMostCheckWords] = {0};
  const int count = EncodeText(text, words);
  if (count < 0) return false;

  const Capacity* capacity = kCapacities;
  while (capacity->dataWords < count) ++capacity;
  AppendPads(words, count, capacity->dataWords);
  AppendCheckWords(words, capacity->dataWords, capacity->checkWords);

  memset(symbol, 0, sizeof *symbol);
  symbol->size = capacity->size;
  DrawFrame(symbol);
  Region region = {.symbol = symbol, .size = capacity->size - 2, .nextWord = words};
  FillRegion(&region);
  return true;
}
