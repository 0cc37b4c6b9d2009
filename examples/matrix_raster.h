/* Marks the dark modules of a 2-D code as raster lines. */
#ifndef MATRIX_RASTER_H
#define MATRIX_RASTER_H

#include "data_matrix.h"
#include "shapes.h"

/* Jumps to the start of the uppermost row of a symbol whose upper left corner is `corner`. */
void JumpToFirstRow(int64_t list, Point corner, double moduleSize);

/* Marks a row of modules. The list must have arrived at its start, and then arrives at the start of the next
 * row: a jump between rows would only cost its delay. */
void MarkMatrixRow(int64_t list, const DataMatrix* symbol, int row, double moduleSize);

#endif
