/* The correction of laser power over the field. Conventions: kelvo.h.
 *
 * The correction is a table that the card creates from optical parameters, has in use, and keeps as a file in its
 * directory CORRFILES: "powerCorrection.kc7" is the stored one, "_tmpPowerCorrection.kc7" the working copy that is
 * exchanged with the host. The format of the file is the card's business. Files travel as in KelvoFileAPI.h. Whether
 * the power is corrected is set per channel in vlLaserConfig.
 */
#ifndef KELVO_POWER_CORRECTION_API_H
#define KELVO_POWER_CORRECTION_API_H

#include "kelvo/KelvoHeadCorrectionAPI.h"

KELVO_EXTERN_C_BEGIN

/* Makes the card create the correction anew, for optics as described. Returns 0, or -1 ("ScanHeadFormat::
 * _from_integral: invalid argument"; "Illegal hash!"; nothing is sent then). Remote. */
KELVO_API int32_t vlPowerCorrectionCreate(int32_t handle, const vlOpticalParameters* parameters);
/* Sends the local file `path` of up to 34900811784 bytes; it becomes the correction. Returns 0, or -1 with "Unexpected
 * filesize" (it is larger, or not there; nothing is sent) or as vlFilePut. Remote. */
KELVO_API int32_t vlPowerCorrectionSet(int32_t handle, const char* path);
/* The same with a callback, as vlHeadCorrectionSetWithProgress has it. Returns 0 or -1. Remote. */
KELVO_API int32_t vlPowerCorrectionSetWithProgress(int32_t handle, const char* path,
                                                   vlFileProgressCallback progress, void* user);
/* Fetches the correction into the local file `path`: the working copy, or where there is none the stored one. Returns
 * 0, or -1 with "No power correction exists on the card." or as vlFileGet. Remote. */
KELVO_API int32_t vlPowerCorrectionGet(int32_t handle, const char* path);
/* The same with a callback, as vlHeadCorrectionGetWithProgress has it. Returns 0 or -1. Remote. */
KELVO_API int32_t vlPowerCorrectionGetWithProgress(int32_t handle, const char* path,
                                                   vlFileProgressCallback progress, void* user);
/* Makes the card take its stored correction. Returns 0 or -1. Remote. */
KELVO_API int32_t vlPowerCorrectionLoad(int32_t handle);
/* Makes the card store the correction. Returns 0 or -1. Remote. */
KELVO_API int32_t vlPowerCorrectionStore(int32_t handle);
/* Changes the correction at a point of the field to `value`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlPowerCorrectionChangeValue(int32_t handle, double x, double y, double z, double value);
/* Fetches the optical parameters of the correction. Returns 0, or -1 as vlHeadCorrectionGetOpticalParameters. Remote. */
KELVO_API int32_t vlPowerCorrectionGetOpticalParameters(int32_t handle, vlOpticalParameters* parameters);

KELVO_EXTERN_C_END

#endif
