/* Registers of the card's special-function input and output. Conventions: kelvo.h.
 *
 * These functions are the project's own extension. A card has them when its firmware was made to know their methods
 * (docs/protocol.md lists them); of one that was not, they fail with its text for an unknown method, as in "Unknown
 * method 'ReadGpioPort'.". vlInternalGetMethodSupport tells beforehand.
 */
#ifndef KELVO_SFIO_API_H
#define KELVO_SFIO_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* The registers. */
typedef enum vlSfRegister {
  vlSfRegister_Status = 0,  /* flags of the state; only to be read */
  vlSfRegister_Control = 1, /* flags that control it */
  vlSfRegister_Input = 2,   /* what comes in; only to be read */
  vlSfRegister_Output = 3,  /* what goes out */
} vlSfRegister;

/* Writes the content of a register (vlSfRegister; "SfRegister::_from_integral: invalid argument") to `*value`.
 * Returns 0 or -1. Remote. */
KELVO_API int32_t vlSfioReadRegister(int32_t handle, int32_t register_number, uint32_t* value);
/* Sets the content of a register. Returns 0, or -1, also when the card says that it is only to be read. Remote. */
KELVO_API int32_t vlSfioWriteRegister(int32_t handle, int32_t register_number, uint32_t value);

KELVO_EXTERN_C_END

#endif
