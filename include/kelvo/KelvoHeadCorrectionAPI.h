/* Corrections of scan heads, and the optics that a correction was made for. Conventions: kelvo.h.
 *
 * The geometric correction of a head is a file that the card keeps in a numbered slot. A correction has two indices:
 * `head`, the scan head, from 0, and `slot`, the place there, from 0. Which there are is the card's business: the
 * library passes them on. Files travel as in KelvoFileAPI.h, through the card's directory CORRFILES, where a correction
 * is "headNCorrection.kc7" and one on its way to the card "_tmpHeadCorrectionN.kc7"; N is head + 2 x slot.
 *
 * Functions that fetch or send optical parameters fail as those of configurations do (KelvoConfigurationAPI.h), and
 * with "Illegal hash!" for a hash text of more than 128 characters, or one without its terminating zero.
 */
#ifndef KELVO_HEAD_CORRECTION_API_H
#define KELVO_HEAD_CORRECTION_API_H

#include "kelvo/KelvoFileAPI.h"

KELVO_EXTERN_C_BEGIN

/* The optics that a correction was made for, in the units of the correction's maker. All are 0 at first but the
 * version. */
typedef struct vlOpticalParameters {
  int32_t ConfigVersion;   /* 7 */
  int32_t MinorVersion;    /* of the correction's data */
  int32_t UsedAxes;        /* that the correction covers */
  int32_t HeadFormat;      /* vlScanHeadFormat (KelvoScannerAPI.h) */
  int32_t XLayers;         /* layers of the correction along x */
  int32_t YLayers;         /* layers along y */
  int32_t ZLayers;         /* layers along z */
  int32_t MLayers;         /* layers along the magnification */
  double MaxAngleX;        /* how far the mirror for x turns */
  double MaxAngleY;        /* how far the mirror for y turns */
  double MaxMagnification; /* the largest magnification */
  double Y2Z0;             /* distance from the mirror for y to z = 0 */
  double X2Y;              /* distance between the mirrors */
  double O2X;              /* distance from the optics to the mirror for x */
  double FocalLength;      /* of the optics */
  double MaxLensTravel;    /* how far the lens moves */
  vlPoint3D FieldSize;     /* size of the field */
  vlPoint3D FieldOffset;   /* where its centre is */
  double Aperture;         /* of the head */
  double WorkingDistance;  /* from the head to the field */
  double Wavelength;       /* of the laser */
  double BitPerMicronZ0;   /* factor of the z axis */
  double BitPerMicronZ1;   /* second factor of the z axis */
  double BitPerMicronE0;   /* factor of the lens */
  double BitPerMicronE1;   /* second factor of the lens */
  char Hash[129];          /* the hash text of the correction, with a terminating zero */
  vlPointXYZM InputScale;  /* by what positions are multiplied ahead of the correction */
  vlPointXYZM InputOffset; /* what is added to them */
} vlOpticalParameters;
KELVO_STATIC_ASSERT(sizeof(vlOpticalParameters) == 400, "the layout is part of the interface");

/* Writes whether there is a correction to `*exists`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlHeadCorrectionExists(int32_t handle, int32_t head, int32_t slot, bool* exists);
/* Deletes a correction. Returns 0 or -1. Remote. */
KELVO_API int32_t vlHeadCorrectionDelete(int32_t handle, int32_t head, int32_t slot);
/* Sends the local file `path` of up to 134217728 bytes; it becomes the correction. Returns 0, or -1 with "Unexpected
 * filesize" (it is larger, or not there; nothing is sent) or as vlFilePut. Remote. */
KELVO_API int32_t vlHeadCorrectionSet(int32_t handle, int32_t head, int32_t slot, const char* path);
/* The same; `progress`, which may be null, is called with `user` as by vlFilePut and can end the transfer. The card
 * keeps the correction that it had then ("The transfer was cancelled."). Returns 0 or -1. Remote. */
KELVO_API int32_t vlHeadCorrectionSetWithProgress(int32_t handle, int32_t head, int32_t slot,
                                                  const char* path, vlFileProgressCallback progress,
                                                  void* user);
/* Fetches a correction into the local file `path`. Returns 0, or -1 with "The requested head correction does not exist
 * on the card." or as vlFileGet. Remote. */
KELVO_API int32_t vlHeadCorrectionGet(int32_t handle, int32_t head, int32_t slot, const char* path);
/* The same; `progress`, which may be null, is called with `user` as by vlFileGet and can end the transfer. What was at
 * `path` stays then ("The transfer was cancelled."). Returns 0 or -1. Remote. */
KELVO_API int32_t vlHeadCorrectionGetWithProgress(int32_t handle, int32_t head, int32_t slot,
                                                  const char* path, vlFileProgressCallback progress,
                                                  void* user);
/* Makes the card load its stored set of corrections. Returns 0 or -1. Remote. */
KELVO_API int32_t vlHeadCorrectionLoad(int32_t handle);
/* Makes the card store its set of corrections. Returns 0 or -1. Remote. */
KELVO_API int32_t vlHeadCorrectionStore(int32_t handle);
/* Makes a correction the one that its head uses. Returns 0 or -1. Remote. */
KELVO_API int32_t vlHeadCorrectionSelectCorrection(int32_t handle, int32_t head, int32_t slot);
/* Writes the slot of the correction that a head uses to `*slot`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlHeadCorrectionGetSelectedCorrection(int32_t handle, int32_t head, int32_t* slot);
/* Writes the hash text of a correction into `buffer` of `size` bytes and its length to `*length`. Returns 0, or -1
 * ("Buffer is too small.": it must have room for two bytes more than the text). Remote. */
KELVO_API int32_t vlHeadCorrectionGetHash(int32_t handle, int32_t head, int32_t slot, char* buffer,
                                          uint32_t size, uint32_t* length);
/* Fetches the optical parameters of a correction. Returns 0 or -1. Remote. */
KELVO_API int32_t vlHeadCorrectionGetOpticalParameters(int32_t handle, int32_t head, int32_t slot,
                                                       vlOpticalParameters* parameters);
/* Fills `*parameters` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlHeadCorrectionInitOpticalParameters(vlOpticalParameters* parameters);

/* Writes a number made of the fields ahead of Hash, but for the version, to `*hash_code`: parameters with the same
 * values there have the same one. Returns 0, or -1 ("ScanHeadFormat::_from_integral: invalid argument"; "Illegal
 * hash!"). Local. */
KELVO_API int32_t vlOpticalParametersGetHashCode(const vlOpticalParameters* parameters, uint32_t* hash_code);
/* Writes whether both have as many layers for each of X, Y, Z and M to `*equal`. Returns 0, or -1 as
 * vlOpticalParametersGetHashCode. Local. */
KELVO_API int32_t vlOpticalParametersEqualLayers(const vlOpticalParameters* parameters,
                                                 const vlOpticalParameters* other, bool* equal);

/* ---- Optical parameters as JSON ----
 *
 * One object with the fields under their names, in their order; those of X, Y, Z, M are objects, too. The version is
 * written as 7. What is no finite number is written as null, which is not read back. Other errors than those given
 * are in the words of the JSON library, as "[json.exception.type_error.302] type must be number, but is null". */

/* Writes the parameters as JSON text into `buffer` of `size` bytes and its length to `*length`. Returns 0, or -1
 * ("Buffer is too small.": it must have room for two bytes more than the text; "ScanHeadFormat::_from_integral: invalid
 * argument"; a hash that is no UTF-8). Local. */
KELVO_API int32_t vlOpticalParametersToJson(const vlOpticalParameters* parameters, char* buffer,
                                            uint32_t size, uint32_t* length);
/* Reads the parameters from a JSON text. Every key must be there, others are ignored; of one that comes twice the last
 * counts. Integers may be written as 2.0, too. Returns 0, or -1 ("NAME is no integer."; "NAME is out of range.";
 * "ScanHeadFormat::_from_integral: invalid argument"; "Illegal hash!"; "The JSON text is nested too deeply.": more than
 * 64 levels; "The JSON text is too long.": more than 16 MiB). Local. */
KELVO_API int32_t vlOpticalParametersFromJson(const char* json, vlOpticalParameters* parameters);

KELVO_EXTERN_C_END

#endif
