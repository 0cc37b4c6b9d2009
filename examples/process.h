/* How the laser marks: what depends on scan head, laser and material, and is tried out on a machine. */
#ifndef PROCESS_H
#define PROCESS_H

#include <stdint.h>

/* Appends the speeds and delays of all that follows in the run. */
void AppendProcessParameters(int64_t list);

#endif
