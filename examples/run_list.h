/* Runs a list that is on the card and waits for its end. */
#ifndef RUN_LIST_H
#define RUN_LIST_H

#include <stdbool.h>
#include <stdint.h>

/* Runs the card's list `listId`, and aborts it when it takes longer than `timeoutMs`. Prints what goes wrong on
 * the card. Returns whether the list was run to its end. */
bool RunList(int32_t handle, int32_t listId, int32_t timeoutMs);

#endif
