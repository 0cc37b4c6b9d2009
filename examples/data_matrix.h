/* Encodes short texts as Data Matrix symbols (ECC 200, square, one data region). */
#ifndef DATA_MATRIX_H
#define DATA_MATRIX_H

#include <stdbool.h>

enum { kDataMatrixLargestSize = 18 };

/* A symbol of size x size modules without its quiet zone; row 0 is the uppermost, column 0 the leftmost. */
typedef struct DataMatrix {
  int size;
  bool dark[kDataMatrixLargestSize][kDataMatrixLargestSize];
} DataMatrix;

/* Encodes an ASCII text in the smallest symbol that holds it. False if it is not ASCII, or too long: 18
 * characters always fit, pairs of digits count as one. */
bool EncodeDataMatrix(const char* text, DataMatrix* symbol);

#endif
