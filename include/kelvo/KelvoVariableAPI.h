/* Variables of lists: booleans, integers, mark counters, and the form in which the time is marked. Conventions:
 * kelvo.h.
 *
 * These functions are the project's own extension. A card has them when its firmware was made to know their methods
 * (docs/protocol.md lists them); of one that was not, they fail with its text for an unknown method, as in "Unknown
 * method 'ReadGpioPort'.". vlInternalGetMethodSupport tells beforehand.
 */
#ifndef KELVO_VARIABLE_API_H
#define KELVO_VARIABLE_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* Lists know a variable by the hash of its name. A boolean and an integer of one name are two things; a mark counter
 * is an integer of which the card knows how it counts. What was never set is false or 0. Names have 1 to 255 bytes. */

/* How many bytes a name has room for where variables are told, its terminating zero included. */
#define KELVO_VARIABLE_NAME_CAPACITY 256

/* What a variable is. */
typedef enum vlVariableKind {
  vlVariableKind_Boolean = 0,     /* a boolean: 0 or 1 */
  vlVariableKind_Integer = 1,     /* an integer */
  vlVariableKind_MarkCounter = 2, /* an integer that is a mark counter */
} vlVariableKind;

/* How INCR_COUNTER counts: Step is added; beyond Maximum the counter goes on at Minimum, and with a negative step the
 * other way round. */
typedef struct vlMarkCounter {
  int32_t Start;   /* what a new counter, and one that is reset, begins with */
  int32_t Step;    /* not 0 */
  int32_t Minimum; /* the beginning of the range, which Start is in */
  int32_t Maximum; /* the end of the range */
} vlMarkCounter;

/* A variable, as the card tells it. */
typedef struct vlCardVariable {
  uint32_t Id;                                     /* the hash of the name */
  int32_t Kind;                                    /* vlVariableKind */
  int32_t Value;                                   /* 0 or 1 for a boolean */
  char VariableName[KELVO_VARIABLE_NAME_CAPACITY]; /* empty for one that only lists have set */
} vlCardVariable;

KELVO_STATIC_ASSERT(sizeof(vlMarkCounter) == 16 && sizeof(vlCardVariable) == 268,
                    "the layout is part of the interface");

/* Sets a boolean. Returns 0 or -1. Remote. */
KELVO_API int32_t vlVariableSetBoolean(int32_t handle, const char* name, bool value);
/* Writes a boolean to `*value`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlVariableGetBoolean(int32_t handle, const char* name, bool* value);
/* Sets an integer, or the value of a mark counter. Returns 0 or -1. Remote. */
KELVO_API int32_t vlVariableSetInteger(int32_t handle, const char* name, int32_t value);
/* Writes an integer, or the value of a mark counter, to `*value`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlVariableGetInteger(int32_t handle, const char* name, int32_t* value);
/* Makes an integer a mark counter that counts so, or one count otherwise. Its value stays if it is in the range, else
 * it becomes Start. Returns 0 or -1. Remote. */
KELVO_API int32_t vlVariableSetMarkCounter(int32_t handle, const char* name, const vlMarkCounter* counter);
/* Writes how a mark counter counts to `*counter`. Returns 0, or -1, also when there is none of that name. Remote. */
KELVO_API int32_t vlVariableGetMarkCounter(int32_t handle, const char* name, vlMarkCounter* counter);
/* Sets a mark counter to its Start. Returns 0, or -1, also when there is none of that name. Remote. */
KELVO_API int32_t vlVariableResetMarkCounter(int32_t handle, const char* name);
/* Sets what vlListAppendMarkTime marks: a text in which %H, %M and %S stand for hours (00 to 23), minutes and
 * seconds, %d, %m, %Y and %y for day, month and year with four and with two digits, %j for the day of the year (001
 * to 366), %V and %G for the week (01 to 53) and the year of ISO 8601, %u for the day of the week (1 Monday to 7
 * Sunday) and %% for a percent sign. At first it is "%H:%M:%S". Returns 0, or -1, also for a form that the card
 * cannot read. Remote. */
KELVO_API int32_t vlVariableSetMarkTimeFormat(int32_t handle, const char* format);
/* Writes that text into `buffer` of `size` bytes, and its length without the terminating zero to `*length`. Returns
 * 0, or -1 with "Buffer is too small." unless `size` is at least the length plus 2. Remote. */
KELVO_API int32_t vlVariableGetMarkTimeFormat(int32_t handle, char* buffer, uint32_t size, uint32_t* length);
/* Writes all variables into the array `variables`, which has room for `capacity` of them (with room for none it may
 * be null), in the order of their kinds and then of their ids, and their number to `*count`. Returns 0, or -1:
 * "Buffer is too small.", and then only `*count` is written; "Error converting CardVariable to C." for a name that is
 * too long. Remote. */
KELVO_API int32_t vlVariableGetAll(int32_t handle, vlCardVariable* variables, uint32_t capacity,
                                   uint32_t* count);

KELVO_EXTERN_C_END

#endif
