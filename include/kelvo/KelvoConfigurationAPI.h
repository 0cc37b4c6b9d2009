/* The configuration of the card as a whole: a bracket around a group of settings. Conventions: kelvo.h; the areas
 * have headers of their own.
 *
 * A configuration area has a plain struct and the same six functions: ...InitConfig fills the struct with the defaults,
 * ...GetConfig fetches the card's active configuration, ...SetConfig sends one, ...LoadConfig makes the card take its
 * stored configuration as the active one, ...StoreConfig makes it store the active one for good, ...ToStringConfig
 * writes it as text. InitConfig and ToStringConfig need no connection. What is common to them:
 *   - A get that fails leaves the struct as it was.
 *   - "The Version of the supplied config is newer than the newest supported version.": the card's firmware is newer
 *     than this library.
 *   - "NAME::_from_integral: invalid argument": a number that enumeration vlNAME does not have, in the struct
 *     (nothing is sent then) or in the card's answer; of flags, one with bits that no constant has.
 *   - Texts: every field as name=value, ", " between them, the version last. The value vlNAME_CONSTANT of an
 *     enumeration is "CONSTANT"; flags whose combination has no constant are "ONE|OTHER". The buffer must have room for
 *     the text and two bytes more, else "Buffer is too small."; `*length` receives the length without the zero.
 */
#ifndef KELVO_CONFIGURATION_API_H
#define KELVO_CONFIGURATION_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* Begins a group of settings: what is set from here on takes effect with vlConfigurationEndUpdate. Returns 0 or -1.
 * Remote. */
KELVO_API int32_t vlConfigurationBeginUpdate(int32_t handle);
/* Ends the group: its settings take effect. Returns 0 or -1. Remote. */
KELVO_API int32_t vlConfigurationEndUpdate(int32_t handle);
/* Ends the group and drops its settings. Returns 0 or -1. Remote. */
KELVO_API int32_t vlConfigurationAbortUpdate(int32_t handle);
/* Writes whether a group is open to `*active`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlConfigurationIsUpdateActive(int32_t handle, bool* active);

KELVO_EXTERN_C_END

#endif
