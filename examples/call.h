/* Calls to the library that must not fail: the first one that does ends the program. */
#ifndef CALL_H
#define CALL_H

#include <stdint.h>

/* Calls a function of the library and gives its result, as int64_t. If the call fails, says which one it was
 * and why on stderr and exits with 1. Every result is checked in this way: a mark that is missing from a list
 * because nobody looked is found on the part only. */
#define CALL(function, ...) CheckCall(#function, function(__VA_ARGS__))

/* Gives back `result` unless it is a failure of the function `name`; then prints the last error and exits
 * with 1. */
int64_t CheckCall(const char* name, int64_t result);

#endif
