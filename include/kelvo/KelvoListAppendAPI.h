/* The commands of a list: a function for each, which appends it. Conventions: kelvo.h; lists: KelvoListAPI.h.
 *
 * Every function here is local and takes the list handle first. It appends one command (where it says so,
 * several), or nothing when it fails, and returns 0, or -1 with
 *   - a bad handle (kelvo.h, 3 and 4)
 *   - "A null pointer was passed for 'NAME'.": a text, or an array whose count is above 0, is null
 *   - "Command exceeds the maximum allowed command size of 921600 . Please split into several commands."
 * Only what else there is to know is said with each function. Numbers travel to the card as they are: whether
 * a value makes sense is found out when the list runs, and a list that fails ends with an error event.
 *
 * Words and units:
 *   - Positions and lengths are in field units, speeds in field units per microsecond, times in microseconds,
 *     frequencies per microsecond (0.1 is 100 kHz), angles in radians, positive counter-clockwise seen from +z.
 *   - "Abs" takes positions in the field, "Rel" takes every position relative to where the galvos are when the
 *     command begins. "2D" keeps z.
 *   - Marks are moved at the mark speed with the laser on, jumps at the jump speed with the laser off.
 *   - `channel` is the number of a power channel, 0 or 1.
 *   - Names of variables, counters and signals may be any text. The card knows them by a 32-bit hash.
 *   - Ports, pin actions, heads and other plain integers without listed values are the card's own numbers: they
 *     are passed on unchecked.
 *   - A time-out is in microseconds; when it is over the list goes on. A negative one waits for ever.
 *
 * Conditions on an input port (mask, port, expected, all, value): the pins of `port` that are set in `mask` are
 * compared with the same bits of `value`. With `all` every one of them must match, without it one is enough.
 * `expected` true asks for a match, false for none.
 */
#ifndef KELVO_LIST_APPEND_API_H
#define KELVO_LIST_APPEND_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* ---- Motion ---- */

/* Jumps to (x, y). */
KELVO_API int32_t vlListAppendJumpAbs2D(int64_t list, double x, double y);
/* Jumps by (dx, dy). */
KELVO_API int32_t vlListAppendJumpRel2D(int64_t list, double dx, double dy);
/* Jumps to (x, y, z). */
KELVO_API int32_t vlListAppendJumpAbs3D(int64_t list, double x, double y, double z);
/* Jumps by (dx, dy, dz). */
KELVO_API int32_t vlListAppendJumpRel3D(int64_t list, double dx, double dy, double dz);
/* Marks a straight line to (x, y). */
KELVO_API int32_t vlListAppendMarkAbs2D(int64_t list, double x, double y);
/* Marks a straight line by (dx, dy). */
KELVO_API int32_t vlListAppendMarkRel2D(int64_t list, double dx, double dy);
/* Marks a straight line to (x, y, z). */
KELVO_API int32_t vlListAppendMarkAbs3D(int64_t list, double x, double y, double z);
/* Marks a straight line by (dx, dy, dz). */
KELVO_API int32_t vlListAppendMarkRel3D(int64_t list, double dx, double dy, double dz);
/* Moves the beam optics to a magnification; `wait` holds the list until they are there. */
KELVO_API int32_t vlListAppendMagnificationAbs(int64_t list, double magnification, bool wait);
/* The same by a difference to the present magnification. */
KELVO_API int32_t vlListAppendMagnificationRel(int64_t list, double difference, bool wait);

/* ---- Curves, marked from where the galvos are ---- */

/* Marks an arc around the centre (cx, cy) through the angle `sweep`. */
KELVO_API int32_t vlListAppendArcAbs2D(int64_t list, double cx, double cy, double sweep);
/* The same around the axis through (cx, cy, cz) that is parallel to z, while z goes linearly to cz. */
KELVO_API int32_t vlListAppendArcAbs3D(int64_t list, double cx, double cy, double cz, double sweep);
/* vlListAppendArcAbs2D with a relative centre. */
KELVO_API int32_t vlListAppendArcRel2D(int64_t list, double cx, double cy, double sweep);
/* vlListAppendArcAbs3D with a relative centre. */
KELVO_API int32_t vlListAppendArcRel3D(int64_t list, double cx, double cy, double cz, double sweep);
/* Marks a whole ellipse, once round counter-clockwise: half axes `a` and `b`, `a` turned by `rotation` from the
 * x axis. Begins at the end of `a`, and jumps there first unless the galvos are there. */
KELVO_API int32_t vlListAppendEllipseAbs2D(int64_t list, double cx, double cy, double a, double b,
                                           double rotation);
/* The same in the plane z = cz. */
KELVO_API int32_t vlListAppendEllipseAbs3D(int64_t list, double cx, double cy, double cz, double a, double b,
                                           double rotation);
/* vlListAppendEllipseAbs2D with a relative centre. */
KELVO_API int32_t vlListAppendEllipseRel2D(int64_t list, double cx, double cy, double a, double b,
                                           double rotation);
/* vlListAppendEllipseAbs3D with a relative centre. */
KELVO_API int32_t vlListAppendEllipseRel3D(int64_t list, double cx, double cy, double cz, double a, double b,
                                           double rotation);
/* Marks a piece of the ellipse around (cx, cy) that goes through the present position: `ratio` (above 0) is
 * b / a of its half axes, `a` is turned by `rotation` from the x axis, `sweep` is in the ellipse's parameter t of
 * a cos t + b sin t. With a ratio of 1 it is an arc. */
KELVO_API int32_t vlListAppendEllipticCurveAbs2D(int64_t list, double cx, double cy, double ratio,
                                                 double rotation, double sweep);
/* The same while z goes linearly to cz. */
KELVO_API int32_t vlListAppendEllipticCurveAbs3D(int64_t list, double cx, double cy, double cz, double ratio,
                                                 double rotation, double sweep);
/* vlListAppendEllipticCurveAbs2D with a relative centre. */
KELVO_API int32_t vlListAppendEllipticCurveRel2D(int64_t list, double cx, double cy, double ratio,
                                                 double rotation, double sweep);
/* vlListAppendEllipticCurveAbs3D with a relative centre. */
KELVO_API int32_t vlListAppendEllipticCurveRel3D(int64_t list, double cx, double cy, double cz, double ratio,
                                                 double rotation, double sweep);
/* Marks c + a cos t + b sin t in space, t from 0 to `sweep`. Begins at c + a, and jumps there first unless the
 * galvos are there. */
KELVO_API int32_t vlListAppendGeneralEllipse(int64_t list, double cx, double cy, double cz, double ax,
                                             double ay, double az, double bx, double by, double bz,
                                             double sweep);
/* Marks the quadratic Bezier curve with the control point (cx, cy) to (x, y). */
KELVO_API int32_t vlListAppendQuadraticBezierAbs2D(int64_t list, double cx, double cy, double x, double y);
/* The same in space. */
KELVO_API int32_t vlListAppendQuadraticBezierAbs3D(int64_t list, double cx, double cy, double cz, double x,
                                                   double y, double z);
/* vlListAppendQuadraticBezierAbs2D with relative points. */
KELVO_API int32_t vlListAppendQuadraticBezierRel2D(int64_t list, double cx, double cy, double dx, double dy);
/* vlListAppendQuadraticBezierAbs3D with relative points. */
KELVO_API int32_t vlListAppendQuadraticBezierRel3D(int64_t list, double cx, double cy, double cz, double dx,
                                                   double dy, double dz);
/* Marks the cubic Bezier curve with two control points to (x, y). */
KELVO_API int32_t vlListAppendCubicBezierAbs2D(int64_t list, double c1x, double c1y, double c2x, double c2y,
                                               double x, double y);
/* The same in space. */
KELVO_API int32_t vlListAppendCubicBezierAbs3D(int64_t list, double c1x, double c1y, double c1z, double c2x,
                                               double c2y, double c2z, double x, double y, double z);
/* vlListAppendCubicBezierAbs2D with relative points. */
KELVO_API int32_t vlListAppendCubicBezierRel2D(int64_t list, double c1x, double c1y, double c2x, double c2y,
                                               double dx, double dy);
/* vlListAppendCubicBezierAbs3D with relative points. */
KELVO_API int32_t vlListAppendCubicBezierRel3D(int64_t list, double c1x, double c1y, double c1z, double c2x,
                                               double c2y, double c2z, double dx, double dy, double dz);

/* ---- Lines of pixels and dots ---- */

/* Marks a line of `count` pixels of equal length from (x0, y0) to (x1, y1), each at its power; 0 leaves the laser off.
 * Jumps to its beginning unless the galvos are there. */
KELVO_API int32_t vlListAppendBitmapLineAbs2D(int64_t list, double x0, double y0, double x1, double y1,
                                              const uint16_t* powers, uint32_t count, int32_t channel);
/* The same in space. */
KELVO_API int32_t vlListAppendBitmapLineAbs3D(int64_t list, double x0, double y0, double z0, double x1,
                                              double y1, double z1, const uint16_t* powers, uint32_t count,
                                              int32_t channel);
/* vlListAppendBitmapLineAbs2D with relative points. */
KELVO_API int32_t vlListAppendBitmapLineRel2D(int64_t list, double x0, double y0, double x1, double y1,
                                              const uint16_t* powers, uint32_t count, int32_t channel);
/* vlListAppendBitmapLineAbs3D with relative points. */
KELVO_API int32_t vlListAppendBitmapLineRel3D(int64_t list, double x0, double y0, double z0, double x1,
                                              double y1, double z1, const uint16_t* powers, uint32_t count,
                                              int32_t channel);
/* Shoots dots that are equally spaced from (x0, y0) to (x1, y1), both included: `times` are the exposure times of
 * the dots, `powers` their powers. There are as many dots as the larger count; the last element of the
 * shorter array holds for the rest. Fails with "There must be at least one powerValue and one exposureTimeValue" when
 * either is empty. */
KELVO_API int32_t vlListAppendPointAndShootLineAbs2D(int64_t list, double x0, double y0, double x1, double y1,
                                                     const double* times, uint32_t time_count,
                                                     const uint16_t* powers, uint32_t power_count,
                                                     int32_t channel);
/* The same in space. */
KELVO_API int32_t vlListAppendPointAndShootLineAbs3D(int64_t list, double x0, double y0, double z0, double x1,
                                                     double y1, double z1, const double* times,
                                                     uint32_t time_count, const uint16_t* powers,
                                                     uint32_t power_count, int32_t channel);
/* Deliberate oddity: appends the very same command as vlListAppendPointAndShootLineAbs2D, with the code of the
 * absolute form. */
KELVO_API int32_t vlListAppendPointAndShootLineRel2D(int64_t list, double x0, double y0, double x1, double y1,
                                                     const double* times, uint32_t time_count,
                                                     const uint16_t* powers, uint32_t power_count,
                                                     int32_t channel);
/* Deliberate oddity: appends the very same command as vlListAppendPointAndShootLineAbs3D, with the code of the
 * absolute form. */
KELVO_API int32_t vlListAppendPointAndShootLineRel3D(int64_t list, double x0, double y0, double z0, double x1,
                                                     double y1, double z1, const double* times,
                                                     uint32_t time_count, const uint16_t* powers,
                                                     uint32_t power_count, int32_t channel);
/* Jumps to every one of the points and shoots `pulses` laser pulses there. Fails with "There must be at least one
 * point" when `count` is 0. */
KELVO_API int32_t vlListAppendJumpAndShoot2D(int64_t list, const vlPoint2D* points, uint32_t count,
                                             int32_t pulses);
/* The same in space. */
KELVO_API int32_t vlListAppendJumpAndShoot3D(int64_t list, const vlPoint3D* points, uint32_t count,
                                             int32_t pulses);
/* Drives the galvos directly, one position for each of their clock ticks, in the card's own increments. Fails with
 * "There must be at least one MicroVector" when `count` is 0. */
KELVO_API int32_t vlListAppendMicroVectors2D(int64_t list, const vlPoint2DInt* vectors, uint32_t count);
/* The same in space. */
KELVO_API int32_t vlListAppendMicroVectors3D(int64_t list, const vlPoint3DInt* vectors, uint32_t count);
/* Drives the galvos directly, one position in the field for each of their clock ticks. An empty array is a command
 * without effect. */
KELVO_API int32_t vlListAppendPositions2D(int64_t list, const vlPoint2D* positions, uint32_t count);
/* The same in space. */
KELVO_API int32_t vlListAppendPositions3D(int64_t list, const vlPoint3D* positions, uint32_t count);

/* ---- Where things are: scaling first, then heading scale, then transformation ---- */

/* Multiplies x and y of all positions that follow. */
KELVO_API int32_t vlListAppendScalingFactor(int64_t list, double x, double y);
/* Multiplies x, y and z of all positions that follow. */
KELVO_API int32_t vlListAppendHeadingScale(int64_t list, double x, double y, double z);
/* Maps all positions that follow. */
KELVO_API int32_t vlListAppendTransformation(int64_t list, const vlTransform3D* transform);
/* Sets the bias of a set of axes (vlAxes, other bits are passed on, too) of a scan head: a number for each axis. */
KELVO_API int32_t vlListAppendHeadBias(int64_t list, int32_t head, int32_t axes, const double* biases,
                                       uint32_t count);
/* Selects the field correction of a scan head. */
KELVO_API int32_t vlListAppendSelectHeadCorrection(int64_t list, int32_t head, int32_t correction);

/* ---- Speeds and delays of what follows ---- */

/* Sets the jump speed. */
KELVO_API int32_t vlListAppendJumpSpeed(int64_t list, double speed);
/* Sets the mark speed. */
KELVO_API int32_t vlListAppendMarkSpeed(int64_t list, double speed);
/* Sets the speed of changes of the magnification. */
KELVO_API int32_t vlListAppendMagnificationSpeed(int64_t list, double speed);
/* Multiplies the jump speed, the mark speed and the speed of changes of the magnification. */
KELVO_API int32_t vlListAppendSpeedScale(int64_t list, double factor);
/* Sets the wait after a jump, in which the galvos settle. */
KELVO_API int32_t vlListAppendJumpDelay(int64_t list, double delay_us);
/* Sets the wait after a jump of no length, for variable jump delays. */
KELVO_API int32_t vlListAppendMinJumpDelay(int64_t list, double delay_us);
/* Sets the length from which on jumps wait the whole jump delay, for variable jump delays. */
KELVO_API int32_t vlListAppendJumpLengthLimit(int64_t list, double length);
/* Makes the jump delay grow with the length of the jump, from the minimum to the whole at the length limit. */
KELVO_API int32_t vlListAppendEnableVariableJumpDelay(int64_t list, bool on);
/* Sets the wait after the last mark of a run of marks. */
KELVO_API int32_t vlListAppendMarkDelay(int64_t list, double delay_us);
/* Sets the wait between two marks that follow each other. */
KELVO_API int32_t vlListAppendPolyDelay(int64_t list, double delay_us);
/* Makes the poly delay depend on the angle between the two marks. */
KELVO_API int32_t vlListAppendEnableVariablePolyDelay(int64_t list, bool on);
/* Sets the time from the start of a mark's motion until the laser is on; negative switches it on before. */
KELVO_API int32_t vlListAppendLaserOnDelay(int64_t list, double delay_us);
/* Sets the time from the end of a mark's motion until the laser is off. */
KELVO_API int32_t vlListAppendLaserOffDelay(int64_t list, double delay_us);
/* Sets how far ahead of the galvos the card may evaluate conditions. */
KELVO_API int32_t vlListAppendEvaluationLeadTime(int64_t list, double time_us);
/* Waits, without motion. */
KELVO_API int32_t vlListAppendSleep(int64_t list, double duration_us);

/* ---- Sky-writing: runs of marks with a run-up and a run-out, the laser off ---- */

/* Sets the mode (vlSkyWritingMode). A number that is none fails with "SkyWritingMode::_from_integral: invalid
 * argument". */
KELVO_API int32_t vlListAppendSkyWritingMode(int64_t list, int32_t mode);
/* Sets the minimum cosine of the change of heading that is marked through, for vlSkyWritingMode_MinimumCoH. */
KELVO_API int32_t vlListAppendSkyWritingMinCoH(int64_t list, double limit);
/* Sets the cosine of the change of heading below which run-out and run-up are merged into one; NaN: never. */
KELVO_API int32_t vlListAppendSkyWritingMergedExtensionsMaxCoH(int64_t list, double limit);
/* Sets the time of acceleration before the run-up. */
KELVO_API int32_t vlListAppendSkyWritingAccelerationDelay(int64_t list, double delay_us);
/* Sets the time of deceleration after the run-out. */
KELVO_API int32_t vlListAppendSkyWritingDecelerationDelay(int64_t list, double delay_us);
/* Sets the time of run-up and run-out. */
KELVO_API int32_t vlListAppendSkyWritingExtensionTime(int64_t list, double time_us);
/* Sets the laser-on delay that holds while sky-writing is on. */
KELVO_API int32_t vlListAppendSkyWritingLaserOnDelay(int64_t list, double delay_us);
/* Sets the laser-off delay that holds while sky-writing is on. */
KELVO_API int32_t vlListAppendSkyWritingLaserOffDelay(int64_t list, double delay_us);

/* ---- Wobble: while marking, x and y swing by amplitude * sin(2 pi frequency t + phase) ---- */

/* Switches the wobble on or off. */
KELVO_API int32_t vlListAppendEnableWobble(int64_t list, bool on);
/* Sets the amplitudes. */
KELVO_API int32_t vlListAppendWobbleAmplitude(int64_t list, double x, double y);
/* Sets the frequencies. */
KELVO_API int32_t vlListAppendWobbleFrequency(int64_t list, double x, double y);
/* Sets the phases. */
KELVO_API int32_t vlListAppendWobblePhase(int64_t list, double x, double y);
/* Sets a wobble in circles: appends three commands, amplitude, frequency and phase. It does not switch it on. */
KELVO_API int32_t vlListAppendWobbleCircle(int64_t list, double amplitude, double frequency);
/* Sets a wobble in figures of eight, twice the frequency in y: appends three commands as above. */
KELVO_API int32_t vlListAppendWobbleEight(int64_t list, double amplitude_x, double amplitude_y,
                                          double frequency);

/* ---- Dashed lines ---- */

/* Marks what follows in dashes or not. Every run of marks begins `offset` into the pattern. */
KELVO_API int32_t vlListAppendEnableDashedLine(int64_t list, bool on, double offset);
/* Sets the pattern: lengths that are marked and left out in turn, the first marked. */
KELVO_API int32_t vlListAppendDashedLinePattern(int64_t list, const double* lengths, uint32_t count);

/* ---- Laser ---- */

/* Switches the laser on and leaves it on until vlListAppendLaserOff's command. */
KELVO_API int32_t vlListAppendLaserOn(int64_t list);
/* Switches the laser on for a number of pulses; `wait` holds the list until they are over. */
KELVO_API int32_t vlListAppendLaserOn2(int64_t list, int32_t pulses, bool wait);
/* Switches the laser off. */
KELVO_API int32_t vlListAppendLaserOff(int64_t list);
/* Sets the power of a channel. */
KELVO_API int32_t vlListAppendPower(int64_t list, uint16_t power, int32_t channel);
/* Changes the power of a channel along the length `ramp` of the marks that follow. */
KELVO_API int32_t vlListAppendPower2(int64_t list, uint16_t power, double ramp, int32_t channel);
/* Multiplies the power of a channel. */
KELVO_API int32_t vlListAppendPowerScale(int64_t list, double factor, int32_t channel);
/* Sets the simmer power. */
KELVO_API int32_t vlListAppendSimmerPower(int64_t list, uint16_t power);
/* Sets the frequency of the laser modulation. */
KELVO_API int32_t vlListAppendLmFrequency(int64_t list, double frequency);
/* Sets the pulse width of the laser modulation. */
KELVO_API int32_t vlListAppendLmWidth(int64_t list, double width_us);
/* Switches the pilot laser on or off. */
KELVO_API int32_t vlListAppendEnablePilot(int64_t list, bool on);
/* Arms or disarms the laser. */
KELVO_API int32_t vlListAppendArmLaser(int64_t list, bool on);
/* Switches the correction of the power by the velocity on or off. */
KELVO_API int32_t vlListAppendEnableVelocityCorrection(int64_t list, bool on, int32_t channel);
/* Switches the correction of the power by the position on or off. */
KELVO_API int32_t vlListAppendEnablePowerCorrection(int64_t list, bool on, int32_t channel);
/* Switches the calibration of the power on or off. */
KELVO_API int32_t vlListAppendEnablePowerCalibration(int64_t list, bool on, int32_t channel);

/* ---- Progress, variables, signals ---- */

/* Makes the card send the progress notification `value` when the list arrives here. */
KELVO_API int32_t vlListAppendProgress(int64_t list, int32_t value);
/* Adds 1 to a counter. */
KELVO_API int32_t vlListAppendIncrementCounter(int64_t list, const char* name);
/* Sets a boolean variable. */
KELVO_API int32_t vlListAppendBooleanSet(int64_t list, const char* name, bool value);
/* Sets an integer variable. */
KELVO_API int32_t vlListAppendIntegerSet(int64_t list, const char* name, int32_t value);
/* Sets a signal: whoever waits for it goes on. */
KELVO_API int32_t vlListAppendSignalSet(int64_t list, const char* name);
/* Resets a signal. */
KELVO_API int32_t vlListAppendSignalReset(int64_t list, const char* name);

/* ---- Waits ---- */

/* Waits for the start signal. */
KELVO_API int32_t vlListAppendWaitStart(int64_t list, int32_t timeout_us);
/* Waits for a condition on an input port (above). */
KELVO_API int32_t vlListAppendWaitForInput(int64_t list, uint32_t mask, int32_t port, bool expected, bool all,
                                           uint32_t value, int32_t timeout_us);
/* Waits until a signal is set. */
KELVO_API int32_t vlListAppendWaitForSignal(int64_t list, const char* name, int32_t timeout_us);
/* Suspends the run until the card is told to go on. */
KELVO_API int32_t vlListAppendSuspend(int64_t list);

/* ---- Marking on the fly ---- */

/* Starts following the motion of the parts. */
KELVO_API int32_t vlListAppendStartMotf(int64_t list);
/* Stops following it, and jumps to (x, y). */
KELVO_API int32_t vlListAppendStopMotf2D(int64_t list, double x, double y);
/* Stops following it, and jumps to (x, y, z). */
KELVO_API int32_t vlListAppendStopMotf3D(int64_t list, double x, double y, double z);
/* Waits for a part. */
KELVO_API int32_t vlListAppendMotfWaitPart(int64_t list, int32_t part);
/* From where a distance counts. */
typedef enum vlMotfDistanceMode {
  vlMotfDistanceMode_RelativeToCurrent = 0,  /* from where the part is now */
  vlMotfDistanceMode_RelativeToPrevious = 1, /* from where the previous wait ended */
} vlMotfDistanceMode;

/* Waits until the parts have moved by a distance, which counts as `mode` (vlMotfDistanceMode) says; a number that is
 * none fails with "MotfDistanceMode::_from_integral: invalid argument". `source` is the number of the source of the
 * motion. */
KELVO_API int32_t vlListAppendMotfWaitDistance(int64_t list, double distance, int32_t mode, int32_t source);
/* Sets the offset of the tiles that large patterns are cut into. */
KELVO_API int32_t vlListAppendMotfTileOffset(int64_t list, double offset);

/* ---- Labels and branches ----
 *
 * The position of a command is its index from 0, the distance of a relative branch counts from the branch itself.
 * A label stands for the position of the command that follows it; labels may be used before they are declared.
 * They are resolved by vlListSet. Appending a list, or reading commands from text, takes no labels along. */

/* Declares a label at the present end of the list; appends no command. Fails with "Label 'NAME' is already
 * defined.". */
KELVO_API int32_t vlListAppendLabel(int64_t list, const char* label);
/* Goes on at a position. */
KELVO_API int32_t vlListAppendBranchAbs(int64_t list, int32_t position);
/* Goes on at a distance. */
KELVO_API int32_t vlListAppendBranchRel(int64_t list, int32_t distance);
/* Goes on at a label. */
KELVO_API int32_t vlListAppendBranchToLabel(int64_t list, const char* label);
/* Goes on at a position if a condition on an input port (above) holds. */
KELVO_API int32_t vlListAppendBranchAbsCondPort(int64_t list, int32_t position, uint32_t mask, int32_t port,
                                                bool expected, bool all, uint32_t value);
/* Goes on at a distance if a condition on an input port (above) holds. */
KELVO_API int32_t vlListAppendBranchRelCondPort(int64_t list, int32_t distance, uint32_t mask, int32_t port,
                                                bool expected, bool all, uint32_t value);
/* Goes on at a label if a condition on an input port (above) holds. */
KELVO_API int32_t vlListAppendBranchToLabelCondPort(int64_t list, const char* label, uint32_t mask,
                                                    int32_t port, bool expected, bool all, uint32_t value);
/* Goes on at a position if a boolean variable has the value. */
KELVO_API int32_t vlListAppendBranchAbsCondFlag(int64_t list, int32_t position, const char* name, bool value);
/* Goes on at a distance if a boolean variable has the value. */
KELVO_API int32_t vlListAppendBranchRelCondFlag(int64_t list, int32_t distance, const char* name, bool value);
/* Goes on at a label if a boolean variable has the value. */
KELVO_API int32_t vlListAppendBranchToLabelCondFlag(int64_t list, const char* label, const char* name,
                                                    bool value);

/* ---- Loops ---- */

/* Opens a loop that runs what follows, up to its loop end, `count` times. */
KELVO_API int32_t vlListAppendLoopStart(int64_t list, int32_t count);
/* Closes the innermost loop. Nothing checks that one is open: vlListSet refuses a list whose loops do not
 * match. */
KELVO_API int32_t vlListAppendLoopEnd(int64_t list);
/* Leaves the innermost loop. Fails with "No loop opened!" when none is open. */
KELVO_API int32_t vlListAppendLoopBreak(int64_t list);

/* ---- Switch: one of several cases, or the default behind them ----
 *
 * After a switch, the first case whose value equals the switch's value acts; a default acts when no case before it
 * has. Cases of a port compare 32 bits, cases of a variable 32-bit integers: the same on the card. */

/* Switches on the pins of a port that are set in `mask`; `shifted` moves them down so that the mask's lowest pin is
 * bit 0. */
KELVO_API int32_t vlListAppendSwitchPort(int64_t list, int32_t port, bool shifted, uint32_t mask);
/* Switches on an integer variable. */
KELVO_API int32_t vlListAppendSwitchValue(int64_t list, const char* name);
/* A case that goes on at a position. */
KELVO_API int32_t vlListAppendCaseAbsPort(int64_t list, int32_t position, uint32_t value);
/* The same for a variable. */
KELVO_API int32_t vlListAppendCaseAbsValue(int64_t list, int32_t position, int32_t value);
/* A case that goes on at a distance. */
KELVO_API int32_t vlListAppendCaseRelPort(int64_t list, int32_t distance, uint32_t value);
/* The same for a variable. */
KELVO_API int32_t vlListAppendCaseRelValue(int64_t list, int32_t distance, int32_t value);
/* A case that goes on at a label. */
KELVO_API int32_t vlListAppendCaseToLabelPort(int64_t list, const char* label, uint32_t value);
/* The same for a variable. */
KELVO_API int32_t vlListAppendCaseToLabelValue(int64_t list, const char* label, int32_t value);
/* A case that goes on in another list and does not come back. */
KELVO_API int32_t vlListAppendCaseBranchListPort(int64_t list, int32_t list_id, uint32_t value);
/* The same for a variable. */
KELVO_API int32_t vlListAppendCaseBranchListValue(int64_t list, int32_t list_id, int32_t value);
/* A case that runs another list and comes back. */
KELVO_API int32_t vlListAppendCaseCallListPort(int64_t list, int32_t list_id, uint32_t value);
/* The same for a variable. */
KELVO_API int32_t vlListAppendCaseCallListValue(int64_t list, int32_t list_id, int32_t value);
/* A default that goes on at a position. */
KELVO_API int32_t vlListAppendDefaultAbs(int64_t list, int32_t position);
/* A default that goes on at a distance. */
KELVO_API int32_t vlListAppendDefaultRel(int64_t list, int32_t distance);
/* A default that goes on at a label. */
KELVO_API int32_t vlListAppendDefaultToLabel(int64_t list, const char* label);
/* A default that goes on in another list and does not come back. */
KELVO_API int32_t vlListAppendDefaultBranchList(int64_t list, int32_t list_id);
/* A default that runs another list and comes back. */
KELVO_API int32_t vlListAppendDefaultCallList(int64_t list, int32_t list_id);

/* ---- Other lists on the card ---- */

/* Goes on in another list, at its first command, and does not come back. */
KELVO_API int32_t vlListAppendBranchList(int64_t list, int32_t list_id);
/* The same if a condition on an input port (above) holds. */
KELVO_API int32_t vlListAppendBranchListCondPort(int64_t list, int32_t list_id, uint32_t mask, int32_t port,
                                                 bool expected, bool all, uint32_t value);
/* The same if a boolean variable has the value. */
KELVO_API int32_t vlListAppendBranchListCondFlag(int64_t list, int32_t list_id, const char* name, bool value);
/* Runs another list and comes back. */
KELVO_API int32_t vlListAppendCallList(int64_t list, int32_t list_id);
/* The same if a condition on an input port (above) holds. */
KELVO_API int32_t vlListAppendCallListCondPort(int64_t list, int32_t list_id, uint32_t mask, int32_t port,
                                               bool expected, bool all, uint32_t value);
/* The same if a boolean variable has the value. */
KELVO_API int32_t vlListAppendCallListCondFlag(int64_t list, int32_t list_id, const char* name, bool value);
/* Ends this list: back to the one that called it, or the end of the run. */
KELVO_API int32_t vlListAppendExitList(int64_t list);
/* The same if a condition on an input port (above) holds. */
KELVO_API int32_t vlListAppendExitListCondPort(int64_t list, uint32_t mask, int32_t port, bool expected,
                                               bool all, uint32_t value);
/* The same if a boolean variable has the value. */
KELVO_API int32_t vlListAppendExitListCondFlag(int64_t list, const char* name, bool value);
/* Goes on in the list that the card runs on its own. */
KELVO_API int32_t vlListAppendBranchStandAloneList(int64_t list);

/* ---- Text, with the active font of the card (KelvoFontAPI.h) ---- */

/* Makes a font of the card the active one for the rest of the run. */
KELVO_API int32_t vlListAppendSelectFont(int64_t list, int32_t font_id);
/* Marks a character; a byte, which travels as 0 to 255. */
KELVO_API int32_t vlListAppendMarkChar(int64_t list, char character);
/* Marks a text: appends a command for every byte of it, none for an empty one. */
KELVO_API int32_t vlListAppendMarkText(int64_t list, const char* text);
/* Marks the time of day. */
KELVO_API int32_t vlListAppendMarkTime(int64_t list);
/* Marks a counter, with leading zeros to at least `digits` digits. The name's hash travels as the bit pattern of a
 * signed integer. */
KELVO_API int32_t vlListAppendMarkCounter(int64_t list, const char* name, int32_t digits);

/* ---- Peripherals ---- */

/* Sends an enhanced command to `axis` (vlAxis) of a scan head; a number that is none fails with
 * "Axis::_from_integral: invalid argument". */
KELVO_API int32_t vlListAppendEnhancedCommand(int64_t list, int32_t head, int32_t axis, uint32_t command);
/* Acts on pins of an output port. `port` is a vlIOPort, `action` a vlPinAction (KelvoGpioAPI.h). This library does
 * not check them: a card may have more. */
KELVO_API int32_t vlListAppendGpioValue(int64_t list, int32_t port, int32_t action, uint32_t value);
/* Writes a value to the output `target` (vlPowerTarget); a number that is none fails with
 * "PowerTarget::_from_integral: invalid argument". */
KELVO_API int32_t vlListAppendDacValue(int64_t list, int32_t target, uint32_t value);

/* What the card records in its trace buffer. The four numbers travel as they are: their meaning is the card's. */
typedef struct vltbTraceBufferConfig_Struct {
  int32_t Mode;     /* how it records */
  uint32_t Signals; /* which signals */
  uint32_t Period;  /* how often */
  uint32_t Length;  /* how much */
} vltbTraceBufferConfig_Struct;
KELVO_STATIC_ASSERT(sizeof(vltbTraceBufferConfig_Struct) == 16, "the layout is part of the interface");

/* Configures the trace buffer. */
KELVO_API int32_t vlListAppendTraceConfig(int64_t list, const vltbTraceBufferConfig_Struct* config);
/* Puts a label into the trace buffer. */
KELVO_API int32_t vlListAppendTraceLabel(int64_t list, int32_t label);
/* Writes a value to an SPI module. */
KELVO_API int32_t vlListAppendSpiWrite(int64_t list, int32_t module, uint32_t value);
/* Sends a text over the serial port. */
KELVO_API int32_t vlListAppendSerialPortTransmitString(int64_t list, const char* text);
/* Sends a text and the card's end of line over the serial port. */
KELVO_API int32_t vlListAppendSerialPortTransmitLine(int64_t list, const char* text);
/* Sends bytes over the serial port. */
KELVO_API int32_t vlListAppendSerialPortTransmitBytes(int64_t list, const uint8_t* bytes, uint32_t count);
/* Sends a text over the serial port and expects another as the answer. */
KELVO_API int32_t vlListAppendSerialPortVerifyResponseString(int64_t list, const char* request,
                                                             const char* response);
/* The same, each with the card's end of line. */
KELVO_API int32_t vlListAppendSerialPortVerifyResponseLine(int64_t list, const char* request,
                                                           const char* response);
/* The same with bytes. */
KELVO_API int32_t vlListAppendSerialPortVerifyResponseBytes(int64_t list, const uint8_t* request,
                                                            uint32_t request_count, const uint8_t* response,
                                                            uint32_t response_count);

KELVO_EXTERN_C_END

#endif
