/* Diagnostics of the card, and what it can do. Conventions: kelvo.h.
 *
 * These functions are the project's own extension. A card has them when its firmware was made to know their methods
 * (docs/protocol.md lists them); of one that was not, they fail with its text for an unknown method, as in "Unknown
 * method 'ReadGpioPort'.". vlInternalGetMethodSupport tells beforehand.
 */
#ifndef KELVO_INTERNAL_API_H
#define KELVO_INTERNAL_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* How many bytes names of quantities and subjects have room for, the terminating zero included. */
#define KELVO_DIAGNOSTIC_NAME_CAPACITY 64
/* How many bytes a unit has room for, the terminating zero included. */
#define KELVO_DIAGNOSTIC_UNIT_CAPACITY 16
/* How many bytes a finding has room for, the terminating zero included. */
#define KELVO_DIAGNOSTIC_TEXT_CAPACITY 256

/* Whether a card has a method. */
typedef enum vlMethodSupport {
  vlMethodSupport_No = 0,       /* it says that it has none of that name */
  vlMethodSupport_Yes = 1,      /* it says that it has it */
  vlMethodSupport_NotKnown = 2, /* it does not say */
} vlMethodSupport;

/* Something that the card has counted or measured. */
typedef struct vlMeasurement {
  char Quantity[KELVO_DIAGNOSTIC_NAME_CAPACITY]; /* "Runs", "Card temperature": the card's own words */
  double Value;                                  /* in the unit */
  char Unit[KELVO_DIAGNOSTIC_UNIT_CAPACITY];     /* empty for counts */
} vlMeasurement;

/* What a test of the card by itself has found. */
typedef struct vlSelfTestResult {
  char Subject[KELVO_DIAGNOSTIC_NAME_CAPACITY]; /* what was tested */
  bool Passed;                                  /* whether it works */
  char Finding[KELVO_DIAGNOSTIC_TEXT_CAPACITY]; /* what was found, for people */
} vlSelfTestResult;

KELVO_STATIC_ASSERT(sizeof(vlMeasurement) == 88 && sizeof(vlSelfTestResult) == 321,
                    "the layout is part of the interface");

/* Writes whether the card has the method of that name, as in "ReadGpioPort", to `*support` (vlMethodSupport). Of a
 * card that does not know this question it is No for every method of the extension and NotKnown for all others; so it
 * is when the card refuses to answer for another reason. Returns 0 or -1. Remote. */
KELVO_API int32_t vlInternalGetMethodSupport(int32_t handle, const char* method, int32_t* support);
/* Writes the card's counters and temperatures into the array `measurements`, which has room for `capacity` of them
 * (with room for none it may be null), and their number to `*count`. Returns 0, or -1: "Buffer is too small.", and
 * then only `*count` is written; "Error converting Measurement to C." for a text that is too long. Remote. */
KELVO_API int32_t vlInternalGetMeasurements(int32_t handle, vlMeasurement* measurements, uint32_t capacity,
                                            uint32_t* count);
/* Writes the latest lines of the card's log, each with a line feed, into `buffer` of `size` bytes, and their length
 * without the terminating zero to `*length`. Returns 0, or -1 with "Buffer is too small." unless `size` is at least
 * the length plus 2. Remote. */
KELVO_API int32_t vlInternalGetLog(int32_t handle, char* buffer, uint32_t size, uint32_t* length);
/* Makes the card test itself, and writes the results into the array `results`, which has room for `capacity` of them
 * (with room for none it may be null), and their number to `*count`. Nothing that fires or moves is tested. Returns
 * 0, also when a test failed, or -1: "Buffer is too small.", and then only `*count` is written; "Error converting
 * SelfTestResult to C." for a text that is too long. Remote. */
KELVO_API int32_t vlInternalRunSelfTest(int32_t handle, vlSelfTestResult* results, uint32_t capacity,
                                        uint32_t* count);

KELVO_EXTERN_C_END

#endif
