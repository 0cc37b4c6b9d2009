/* The job: a nameplate of 80 x 40 mm around the field's origin with two mounting holes, a caption, a serial
 * number and the same number as Data Matrix. */
#ifndef NAMEPLATE_H
#define NAMEPLATE_H

#include <stdbool.h>
#include <stdint.h>

/* Whether `serial` is a serial number that the nameplate has room for, in characters that the font has. */
bool IsMarkableSerial(const char* serial);

/* Appends the whole job to `list`. It reports its progress in percent, from 1 to 100. */
void AppendNameplate(int64_t list, const char* serial);

#endif
