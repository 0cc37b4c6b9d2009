/* The laser: how the card drives it, switching it outside of lists, power scale and power calibration.
 * Conventions: kelvo.h; configuration areas: KelvoConfigurationAPI.h.
 *
 * Times and frequencies of the configuration are in the card's own units, and laser engines have the card's own
 * numbers: the library passes them on, and the power target of a power scale unchecked.
 */
#ifndef KELVO_LASER_API_H
#define KELVO_LASER_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* When a signal is active. */
typedef enum vlPolarity {
  vlPolarity_ActiveHigh = 0, /* at its high level */
  vlPolarity_ActiveLow = 1,  /* at its low level */
} vlPolarity;

/* The signals to the laser: flags. */
typedef enum vlLaserSignal {
  vlLaserSignal_Fps = 1,  /* first-pulse suppression */
  vlLaserSignal_Gate = 2, /* gate */
  vlLaserSignal_LM = 4,   /* laser modulation */
} vlLaserSignal;

/* The status of the laser: flags. */
typedef enum vlLaserStatus {
  vlLaserStatus_None = 0,  /* neither of them */
  vlLaserStatus_Pilot = 1, /* the pilot laser is on */
  vlLaserStatus_Armed = 2, /* the laser is armed */
  vlLaserStatus_Alarm = 4, /* the laser tells an alarm */
} vlLaserStatus;

/* How the card drives the laser. A field that ends in 1 is that of the second power channel. Defaults are 0 and false
 * where nothing else is said. */
typedef struct vlLaserConfig {
  int32_t ConfigVersion;      /* 8 */
  int32_t FpsPolarity;        /* vlPolarity_ActiveHigh; of the first-pulse suppression */
  int32_t GatePolarity;       /* vlPolarity_ActiveHigh; of the gate */
  int32_t LMPolarity;         /* vlPolarity_ActiveHigh; of the laser modulation */
  double FpsStart;            /* when the first-pulse suppression begins */
  double FpsWidth;            /* how long it lasts */
  double GateSetup;           /* how long the gate is open ahead of the first pulse */
  double GateHold;            /* how long it stays open after the last one */
  double LaserTriggerDelay;   /* from the trigger to the pulse */
  double PowerScale;          /* by what the power is multiplied */
  double PowerScale1;         /* the same for the second channel */
  double PowerChangeSetup;    /* how long a new power needs until it holds */
  double PowerWriteDelay;     /* 1; from a new value to its strobe */
  double PowerWriteWidth;     /* 2; how long the strobe lasts */
  int32_t HotPowerTarget;     /* vlPowerTarget_Dac0; where the power goes */
  int32_t HotPowerTarget1;    /* vlPowerTarget_None; where that of the second channel goes */
  int32_t SimmerPowerTarget;  /* vlPowerTarget_Dac1; where the simmer power goes */
  uint16_t SimmerPower;       /* power while the laser is off */
  bool EnableTickle;          /* whether there are tickle pulses while the laser is off */
  double TickleFrequency;     /* of these pulses */
  double TickleWidth;         /* of these pulses */
  bool EnableLaserSync;       /* whether pulses keep to a clock of the laser */
  bool EnableGateModulatesLm; /* whether the gate modulates the laser modulation */
  bool EnablePowerCorrection; /* whether the power is corrected by the position (KelvoPowerCorrectionAPI.h) */
  bool EnablePowerCorrection1;    /* the same for the second channel */
  bool EnableVelocityCorrection;  /* whether the power is corrected by the velocity */
  bool EnableVelocityCorrection1; /* the same for the second channel */
  bool EnablePowerCalibration;    /* whether the power is calibrated (vlLaserSetPowerCalibration) */
  bool EnablePowerCalibration1;   /* the same for the second channel */
  bool EnableEquallySpacedPulses; /* whether pulses are equally spaced on the way instead of in time */
} vlLaserConfig;
KELVO_STATIC_ASSERT(sizeof(vlLaserConfig) == 144, "the layout is part of the interface");

/* Fills `*config` with the defaults. Returns 0 or -1. Local. */
KELVO_API int32_t vlLaserInitConfig(vlLaserConfig* config);
/* Fetches the card's active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserGetConfig(int32_t handle, vlLaserConfig* config);
/* Sends the configuration; it becomes the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserSetConfig(int32_t handle, const vlLaserConfig* config);
/* Makes the card take its stored configuration as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserLoadConfig(int32_t handle);
/* Makes the card store the active configuration. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserStoreConfig(int32_t handle);
/* Writes the configuration as text into `buffer` of `size` bytes. Returns 0 or -1. Local. */
KELVO_API int32_t vlLaserToStringConfig(const vlLaserConfig* config, char* buffer, uint32_t size,
                                        uint32_t* length);

/* Switches the laser on, outside of any list. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserLaserOn(int32_t handle);
/* Switches the laser off. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserLaserOff(int32_t handle);
/* Writes whether the pilot laser is on to `*enabled`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserIsPilotEnabled(int32_t handle, bool* enabled);
/* Switches the pilot laser on (`enable` not 0) or off. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserEnablePilot(int32_t handle, uint32_t enable);
/* Writes whether the laser is armed to `*armed`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserIsLaserArmed(int32_t handle, bool* armed);
/* Arms the laser (`arm` not 0) or disarms it. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserArmLaser(int32_t handle, uint32_t arm);
/* Writes the status of the laser to `*status` (vlLaserStatus). Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserReadLaserStatus(int32_t handle, uint32_t* status);
/* Writes the power scale of `target` (vlPowerTarget) to `*scale`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserGetPowerScale(int32_t handle, uint32_t target, double* scale);
/* Sets the power scale of `target` (vlPowerTarget). Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserSetPowerScale(int32_t handle, uint32_t target, double scale);

/* ---- Power calibration: a table of numbers for each laser engine ---- */

/* Makes the card create the table of an engine anew. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserCreatePowerCalibration(int32_t handle, uint32_t engine);
/* Makes the card take the stored table of an engine as the active one. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserLoadPowerCalibration(int32_t handle, uint32_t engine);
/* Makes the card store the table of an engine. Returns 0 or -1. Remote. */
KELVO_API int32_t vlLaserStorePowerCalibration(int32_t handle, uint32_t engine);
/* Fetches the table of an engine into `buffer` of `capacity` elements and writes their number to `*count`. Returns 0,
 * or -1 with "Buffer is too small" (without a full stop) when there are more; `*count` is then written all the same,
 * nothing else. So a `capacity` of 0, for which `buffer` may be null, asks for the number. Remote. */
KELVO_API int32_t vlLaserGetPowerCalibration(int32_t handle, uint32_t engine, uint32_t* buffer,
                                             uint32_t capacity, uint32_t* count);
/* Sends the table of an engine. Returns 0, or -1 ("The count must not be negative."). Remote. */
KELVO_API int32_t vlLaserSetPowerCalibration(int32_t handle, uint32_t engine, const uint32_t* values,
                                             int32_t count);
/* Fetches the table of an engine into the file `path`: a number a line. A file that is there is replaced when all of
 * the new one has been written, as by vlFileGet, and stays when anything fails. Returns 0, or -1 with "Cannot open
 * 'PATH': REASON." (the card is not asked) or "Cannot write 'PATH'.". Remote. */
KELVO_API int32_t vlLaserPowerCalibrationGet(int32_t handle, uint32_t engine, const char* path);
/* Sends the table in the file `path`: decimal numbers up to 4294967295, separated by line ends or ";", with blanks
 * around them; empty places are skipped. Returns 0, or -1 with "Cannot open 'PATH': REASON.", "Cannot read 'PATH'.",
 * "Illegal format!", or "'PATH' is too long for a power calibration." (more than 1048576 numbers, or than 16 MiB of
 * text), and nothing is sent then. Remote. */
KELVO_API int32_t vlLaserPowerCalibrationSet(int32_t handle, uint32_t engine, const char* path);

KELVO_EXTERN_C_END

#endif
