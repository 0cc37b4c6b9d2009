// Every function that appends a command: what it appends, as text and, for every shape of value, as bytes.
#include <gtest/gtest.h>

#include <tuple>

#include "int/CardProcess.h"
#include "support/FailingMemory.h"
#include "support/FakeCard.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {
namespace {

const std::uint16_t powers[] = {7, 65535};
const double numbers[] = {0.5, -1e-9};
const std::uint8_t bytes[] = {0, 255};
const vlPoint2D points[] = {{1, 2}, {3, 4}};
const vlPoint3D spots[] = {{1, 2, 3}};
const vlPoint2DInt steps[] = {{-1, 2}};
const vlPoint3DInt stairs[] = {{-1, 2, 2147483647}};
const vlTransform3D transform = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {10, 11, 12}};
const vltbTraceBufferConfig_Struct trace = {-1, 2, 3, 4294967295};

struct Row {
  const char* name;
  std::int32_t (*append)(std::int64_t list);
  const char* text;       // of what it appends
  const char* wire = "";  // code and payload of its command
};

#define ROW(function, text, ...)                                                                 \
  {                                                                                              \
#function, [](std::int64_t list) { return function(list __VA_OPT__(, ) __VA_ARGS__); }, text \
  }
#define WIRE_ROW(function, wire, text, ...)                                                            \
  {                                                                                                    \
#function, [](std::int64_t list) { return function(list __VA_OPT__(, ) __VA_ARGS__); }, text, wire \
  }

// The hash of "a" is 3826002220 = E40C292C, that of "foobar" 3214735720 and that of no byte at all 2166136261.
// clang-format off
const Row rows[] = {
    WIRE_ROW(vlListAppendJumpAbs2D, "110: 01000011 6B 000000000000F83F 00000000000004C0", "JA, P2D[ X=1.5 Y=-2.5 ]", 1.5, -2.5),
    ROW(vlListAppendJumpRel2D, "JR, P2D[ X=1 Y=2 ]", 1, 2),
    WIRE_ROW(vlListAppendJumpAbs3D, "114: 01000019 AB 000000000000F03F 0000000000000040 0000000000000840", "J3A, P3D[ X=1 Y=2 Z=3 ]", 1, 2, 3),
    ROW(vlListAppendJumpRel3D, "J3R, P3D[ X=1 Y=2 Z=3 ]", 1, 2, 3),
    ROW(vlListAppendMarkAbs2D, "MA, P2D[ X=1 Y=2 ]", 1, 2),
    ROW(vlListAppendMarkRel2D, "MR, P2D[ X=1 Y=2 ]", 1, 2),
    ROW(vlListAppendMarkAbs3D, "M3A, P3D[ X=1 Y=2 Z=3 ]", 1, 2, 3),
    ROW(vlListAppendMarkRel3D, "M3R, P3D[ X=1 Y=2 Z=3 ]", 1, 2, 3),
    WIRE_ROW(vlListAppendMagnificationAbs, "50: 0100000B 2B 0000000000000040 01 01", "SPMA, F64[ 2 ], Bool[ True ]", 2, true),
    ROW(vlListAppendMagnificationRel, "SPMR, F64[ 2 ], Bool[ False ]", 2, false),
    WIRE_ROW(vlListAppendArcAbs2D, "310: 0100001A 6B 000000000000F03F 0000000000000040 2B 0000000000000840", "ARCA, P2D[ X=1 Y=2 ], F64[ 3 ]", 1, 2, 3),
    ROW(vlListAppendArcAbs3D, "ARC3A, P3D[ X=1 Y=2 Z=3 ], F64[ 4 ]", 1, 2, 3, 4),
    ROW(vlListAppendArcRel2D, "ARCR, P2D[ X=1 Y=2 ], F64[ 3 ]", 1, 2, 3),
    ROW(vlListAppendArcRel3D, "ARC3R, P3D[ X=1 Y=2 Z=3 ], F64[ 4 ]", 1, 2, 3, 4),
    ROW(vlListAppendEllipseAbs2D, "ELLA, P2D[ X=1 Y=2 ], F64[ 3 ], F64[ 4 ], F64[ 5 ]", 1, 2, 3, 4, 5),
    ROW(vlListAppendEllipseAbs3D, "ELL3A, P3D[ X=1 Y=2 Z=3 ], F64[ 4 ], F64[ 5 ], F64[ 6 ]", 1, 2, 3, 4, 5, 6),
    ROW(vlListAppendEllipseRel2D, "ELLR, P2D[ X=1 Y=2 ], F64[ 3 ], F64[ 4 ], F64[ 5 ]", 1, 2, 3, 4, 5),
    ROW(vlListAppendEllipseRel3D, "ELL3R, P3D[ X=1 Y=2 Z=3 ], F64[ 4 ], F64[ 5 ], F64[ 6 ]", 1, 2, 3, 4, 5, 6),
    ROW(vlListAppendEllipticCurveAbs2D, "ELLCA, P2D[ X=1 Y=2 ], F64[ 3 ], F64[ 4 ], F64[ 5 ]", 1, 2, 3, 4, 5),
    ROW(vlListAppendEllipticCurveAbs3D, "ELLC3A, P3D[ X=1 Y=2 Z=3 ], F64[ 4 ], F64[ 5 ], F64[ 6 ]", 1, 2, 3, 4, 5, 6),
    ROW(vlListAppendEllipticCurveRel2D, "ELLCR, P2D[ X=1 Y=2 ], F64[ 3 ], F64[ 4 ], F64[ 5 ]", 1, 2, 3, 4, 5),
    ROW(vlListAppendEllipticCurveRel3D, "ELLC3R, P3D[ X=1 Y=2 Z=3 ], F64[ 4 ], F64[ 5 ], F64[ 6 ]", 1, 2, 3, 4, 5, 6),
    ROW(vlListAppendGeneralEllipse, "ELLG, P3D[ X=1 Y=2 Z=3 ], P3D[ X=4 Y=5 Z=6 ], P3D[ X=7 Y=8 Z=9 ], F64[ 10 ]", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10),
    ROW(vlListAppendQuadraticBezierAbs2D, "BEZA, P2D[ X=1 Y=2 ], P2D[ X=3 Y=4 ]", 1, 2, 3, 4),
    ROW(vlListAppendQuadraticBezierAbs3D, "BEZ3A, P3D[ X=1 Y=2 Z=3 ], P3D[ X=4 Y=5 Z=6 ]", 1, 2, 3, 4, 5, 6),
    ROW(vlListAppendQuadraticBezierRel2D, "BEZR, P2D[ X=1 Y=2 ], P2D[ X=3 Y=4 ]", 1, 2, 3, 4),
    ROW(vlListAppendQuadraticBezierRel3D, "BEZ3R, P3D[ X=1 Y=2 Z=3 ], P3D[ X=4 Y=5 Z=6 ]", 1, 2, 3, 4, 5, 6),
    ROW(vlListAppendCubicBezierAbs2D, "BEZCA, P2D[ X=1 Y=2 ], P2D[ X=3 Y=4 ], P2D[ X=5 Y=6 ]", 1, 2, 3, 4, 5, 6),
    ROW(vlListAppendCubicBezierAbs3D, "BEZC3A, P3D[ X=1 Y=2 Z=3 ], P3D[ X=4 Y=5 Z=6 ], P3D[ X=7 Y=8 Z=9 ]", 1, 2, 3, 4, 5, 6, 7, 8, 9),
    ROW(vlListAppendCubicBezierRel2D, "BEZCR, P2D[ X=1 Y=2 ], P2D[ X=3 Y=4 ], P2D[ X=5 Y=6 ]", 1, 2, 3, 4, 5, 6),
    ROW(vlListAppendCubicBezierRel3D, "BEZC3R, P3D[ X=1 Y=2 Z=3 ], P3D[ X=4 Y=5 Z=6 ], P3D[ X=7 Y=8 Z=9 ]", 1, 2, 3, 4, 5, 6, 7, 8, 9),
    ROW(vlListAppendBitmapLineAbs2D, "BMPA, P2D[ X=1 Y=2 ], P2D[ X=3 Y=4 ], U16Arr[ 7 65535  ], I32[ 5 ]", 1, 2, 3, 4, powers, 2, 5),
    ROW(vlListAppendBitmapLineAbs3D, "BMP3A, P3D[ X=1 Y=2 Z=3 ], P3D[ X=4 Y=5 Z=6 ], U16Arr[ 7  ], I32[ 8 ]", 1, 2, 3, 4, 5, 6, powers, 1, 8),
    ROW(vlListAppendBitmapLineRel2D, "BMPR, P2D[ X=1 Y=2 ], P2D[ X=3 Y=4 ], U16Arr[  ], I32[ 5 ]", 1, 2, 3, 4, nullptr, 0, 5),
    ROW(vlListAppendBitmapLineRel3D, "BMP3R, P3D[ X=1 Y=2 Z=3 ], P3D[ X=4 Y=5 Z=6 ], U16Arr[ 7  ], I32[ 8 ]", 1, 2, 3, 4, 5, 6, powers, 1, 8),
    WIRE_ROW(vlListAppendPointAndShootLineAbs2D,
             "610: 01000043 6B 000000000000F03F 0000000000000040 6B 0000000000000840 0000000000001040 35 000002 0700 FFFF 3B 000002 000000000000E03F 95D626E80B2E11BE 22 F7FFFFFF",
             "PASA, P2D[ X=1 Y=2 ], P2D[ X=3 Y=4 ], U16Arr[ 7 65535  ], F64Arr[ 0.5 -1e-09  ], I32[ -9 ]", 1, 2, 3, 4, numbers, 2, powers, 2, -9),
    ROW(vlListAppendPointAndShootLineAbs3D, "PAS3A, P3D[ X=1 Y=2 Z=3 ], P3D[ X=4 Y=5 Z=6 ], U16Arr[ 7  ], F64Arr[ 0.5 -1e-09  ], I32[ 9 ]", 1, 2, 3, 4, 5, 6, numbers, 2, powers, 1, 9),
    ROW(vlListAppendPointAndShootLineRel2D, "PASA, P2D[ X=1 Y=2 ], P2D[ X=3 Y=4 ], U16Arr[ 7 65535  ], F64Arr[ 0.5  ], I32[ 9 ]", 1, 2, 3, 4, numbers, 1, powers, 2, 9),
    ROW(vlListAppendPointAndShootLineRel3D, "PAS3A, P3D[ X=1 Y=2 Z=3 ], P3D[ X=4 Y=5 Z=6 ], U16Arr[ 7  ], F64Arr[ 0.5  ], I32[ 9 ]", 1, 2, 3, 4, 5, 6, numbers, 1, powers, 1, 9),
    ROW(vlListAppendJumpAndShoot2D, "JASA, F64Arr[ 1 2 3 4  ], I32[ 5 ]", points, 2, 5),
    ROW(vlListAppendJumpAndShoot3D, "JAS3A, F64Arr[ 1 2 3  ], I32[ 5 ]", spots, 1, 5),
    WIRE_ROW(vlListAppendMicroVectors2D, "10010: 0100000C 72 000001 FFFFFFFF 02000000", "UV2, P2IArr[ ( X=-1 Y=2 )  ]", steps, 1),
    WIRE_ROW(vlListAppendMicroVectors3D, "10014: 01000010 B2 000001 FFFFFFFF 02000000 FFFFFF7F", "UV3, P3IArr[ ( X=-1 Y=2 Z=2147483647 )  ]", stairs, 1),
    WIRE_ROW(vlListAppendPositions2D, "810: 01000014 7B 000001 000000000000F03F 0000000000000040", "PV2, P2DArr[ ( X=1 Y=2 )  ]", points, 1),
    WIRE_ROW(vlListAppendPositions3D, "814: 0100001C BB 000001 000000000000F03F 0000000000000040 0000000000000840", "PV3, P3DArr[ ( X=1 Y=2 Z=3 )  ]", spots, 1),
    ROW(vlListAppendScalingFactor, "SCF, P2D[ X=1 Y=2 ]", 1, 2),
    ROW(vlListAppendHeadingScale, "HSCA, P3D[ X=1 Y=2 Z=3 ]", 1, 2, 3),
    ROW(vlListAppendTransformation, "TRA, F64Arr[ 1 2 3 4 5 6 7 8 9  ], F64Arr[ 10 11 12  ]", &transform),
    ROW(vlListAppendHeadBias, "HBS, I32[ 1 ], I32[ 5 ], F64Arr[ 0.5 -1e-09  ]", 1, vlAxes_X | vlAxes_Z, numbers, 2),
    ROW(vlListAppendSelectHeadCorrection, "FSCT, I32[ 1 ], I32[ 2 ]", 1, 2),
    ROW(vlListAppendJumpSpeed, "JS, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendMarkSpeed, "MS, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendMagnificationSpeed, "MAGS, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendSpeedScale, "SPSC, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendJumpDelay, "JD, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendMinJumpDelay, "JDM, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendJumpLengthLimit, "JLL, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendEnableVariableJumpDelay, "VJD, Bool[ True ]", true),
    ROW(vlListAppendMarkDelay, "MD, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendPolyDelay, "PD, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendEnableVariablePolyDelay, "VPD, Bool[ True ]", true),
    ROW(vlListAppendLaserOnDelay, "LN, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendLaserOffDelay, "LF, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendEvaluationLeadTime, "ELT, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendSleep, "SL, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendSkyWritingMode, "SKWM, I32[ 2 ]", vlSkyWritingMode_MinimumCoH),
    ROW(vlListAppendSkyWritingMinCoH, "SKMCH, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendSkyWritingMergedExtensionsMaxCoH, "SKMMEMCH, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendSkyWritingAccelerationDelay, "SKAD, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendSkyWritingDecelerationDelay, "SKDD, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendSkyWritingExtensionTime, "SKET, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendSkyWritingLaserOnDelay, "SKLON, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendSkyWritingLaserOffDelay, "SKLOF, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendEnableWobble, "WOBE, Bool[ True ]", true),
    ROW(vlListAppendWobbleAmplitude, "WOBA, P2D[ X=1 Y=2 ]", 1, 2),
    ROW(vlListAppendWobbleFrequency, "WOBF, P2D[ X=1 Y=2 ]", 1, 2),
    ROW(vlListAppendWobblePhase, "WOBP, P2D[ X=1 Y=2 ]", 1, 2),
    ROW(vlListAppendWobbleCircle, "WOBA, P2D[ X=1 Y=1 ] }, { WOBF, P2D[ X=2 Y=2 ] }, { WOBP, P2D[ X=0 Y=1.5707963267948966 ]", 1, 2),
    ROW(vlListAppendWobbleEight, "WOBA, P2D[ X=1 Y=2 ] }, { WOBF, P2D[ X=3 Y=6 ] }, { WOBP, P2D[ X=0 Y=0 ]", 1, 2, 3),
    ROW(vlListAppendEnableDashedLine, "DLE, Bool[ True ], F64[ 1.5 ]", true, 1.5),
    ROW(vlListAppendDashedLinePattern, "DLP, F64Arr[ 0.5 -1e-09  ]", numbers, 2),
    WIRE_ROW(vlListAppendLaserOn, "11:", "LON"),
    ROW(vlListAppendLaserOn2, "LONP, I32[ 5 ], Bool[ True ]", 5, true),
    ROW(vlListAppendLaserOff, "LOF"),
    WIRE_ROW(vlListAppendPower, "10: 01000008 25 FFFF 22 01000000", "PWR, U16[ 65535 ], I32[ 1 ]", 65535, 1),
    ROW(vlListAppendPower2, "PWRC, U16[ 1 ], F64[ 2 ], I32[ 3 ]", 1, 2, 3),
    ROW(vlListAppendPowerScale, "PWSC, F64[ 1.5 ], I32[ 2 ]", 1.5, 2),
    ROW(vlListAppendSimmerPower, "SPR, U16[ 1 ]", 1),
    ROW(vlListAppendLmFrequency, "LY, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendLmWidth, "LW, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendEnablePilot, "PIL, Bool[ True ]", true),
    ROW(vlListAppendArmLaser, "ARM, Bool[ True ]", true),
    ROW(vlListAppendEnableVelocityCorrection, "VDP, Bool[ True ], I32[ 2 ]", true, 2),
    ROW(vlListAppendEnablePowerCorrection, "PDP, Bool[ True ], I32[ 2 ]", true, 2),
    ROW(vlListAppendEnablePowerCalibration, "PCA, Bool[ False ], I32[ 2 ]", false, 2),
    WIRE_ROW(vlListAppendProgress, "1: 01000005 22 FEFFFFFF", "PI, I32[ -2 ]", -2),
    WIRE_ROW(vlListAppendIncrementCounter, "2: 01000005 26 2C290CE4", "IC, U32[ 3826002220 ]", "a"),
    ROW(vlListAppendBooleanSet, "BVS, U32[ 3214735720 ], Bool[ True ]", "foobar", true),
    ROW(vlListAppendIntegerSet, "IVS, U32[ 3826002220 ], I32[ -2 ]", "a", -2),
    ROW(vlListAppendSignalSet, "SIS, U32[ 2166136261 ]", ""),
    ROW(vlListAppendSignalReset, "SIR, U32[ 3826002220 ]", "a"),
    ROW(vlListAppendWaitStart, "WS, I32[ 5 ]", 5),
    ROW(vlListAppendWaitForInput, "WI, U32[ 1 ], I32[ 2 ], Bool[ True ], Bool[ False ], U32[ 4294967295 ], I32[ 4 ]", 1, 2, true, false, 4294967295, 4),
    ROW(vlListAppendWaitForSignal, "WFS, U32[ 3826002220 ], I32[ 2 ]", "a", 2),
    ROW(vlListAppendSuspend, "SUS"),
    ROW(vlListAppendStartMotf, "MFSTR"),
    ROW(vlListAppendStopMotf2D, "MFSTP, P2D[ X=1 Y=2 ]", 1, 2),
    ROW(vlListAppendStopMotf3D, "MFSTP3, P3D[ X=1 Y=2 Z=3 ]", 1, 2, 3),
    ROW(vlListAppendMotfWaitPart, "MFWP, I32[ 1 ]", 1),
    ROW(vlListAppendMotfWaitDistance, "MFWD, F64[ 1.5 ], I32[ 1 ], I32[ 2 ]", 1.5, vlMotfDistanceMode_RelativeToPrevious, 2),
    ROW(vlListAppendMotfTileOffset, "MFTOF, F64[ 1.5 ]", 1.5),
    ROW(vlListAppendBranchAbs, "BA, I32[ 5 ]", 5),
    ROW(vlListAppendBranchRel, "BR, I32[ -5 ]", -5),
    ROW(vlListAppendBranchToLabel, "BA, I32[ 0 ]", "label"),
    ROW(vlListAppendBranchAbsCondPort, "BAC, I32[ 1 ], U32[ 2 ], I32[ 3 ], Bool[ True ], Bool[ False ], U32[ 4 ]", 1, 2, 3, true, false, 4),
    ROW(vlListAppendBranchRelCondPort, "BRC, I32[ 1 ], U32[ 2 ], I32[ 3 ], Bool[ True ], Bool[ False ], U32[ 4 ]", 1, 2, 3, true, false, 4),
    ROW(vlListAppendBranchToLabelCondPort, "BAC, I32[ 0 ], U32[ 2 ], I32[ 3 ], Bool[ False ], Bool[ True ], U32[ 4 ]", "label", 2, 3, false, true, 4),
    ROW(vlListAppendBranchAbsCondFlag, "BACF, I32[ 1 ], U32[ 3826002220 ], Bool[ True ]", 1, "a", true),
    ROW(vlListAppendBranchRelCondFlag, "BRCF, I32[ 1 ], U32[ 3826002220 ], Bool[ True ]", 1, "a", true),
    ROW(vlListAppendBranchToLabelCondFlag, "BACF, I32[ 0 ], U32[ 3826002220 ], Bool[ True ]", "label", "a", true),
    ROW(vlListAppendSwitchPort, "SWI, I32[ 1 ], Bool[ True ], U32[ 2 ]", 1, true, 2),
    ROW(vlListAppendSwitchValue, "SWIV, I32[ 0 ], U32[ 3826002220 ]", "a"),
    ROW(vlListAppendCaseAbsPort, "CASGA, I32[ 1 ], I32[ -1 ]", 1, 4294967295),
    ROW(vlListAppendCaseAbsValue, "CASGA, I32[ 1 ], I32[ -2 ]", 1, -2),
    ROW(vlListAppendCaseRelPort, "CASGR, I32[ 1 ], I32[ -1 ]", 1, 4294967295),
    ROW(vlListAppendCaseRelValue, "CASGR, I32[ 1 ], I32[ -2 ]", 1, -2),
    ROW(vlListAppendCaseToLabelPort, "CASGA, I32[ 0 ], I32[ -1 ]", "label", 4294967295),
    ROW(vlListAppendCaseToLabelValue, "CASGA, I32[ 0 ], I32[ -2 ]", "label", -2),
    ROW(vlListAppendCaseBranchListPort, "CASBL, I32[ 1 ], I32[ -1 ]", 1, 4294967295),
    ROW(vlListAppendCaseBranchListValue, "CASBL, I32[ 1 ], I32[ -2 ]", 1, -2),
    ROW(vlListAppendCaseCallListPort, "CASCL, I32[ 1 ], I32[ -1 ]", 1, 4294967295),
    ROW(vlListAppendCaseCallListValue, "CASCL, I32[ 1 ], I32[ -2 ]", 1, -2),
    ROW(vlListAppendDefaultAbs, "DEFGA, I32[ 1 ]", 1),
    ROW(vlListAppendDefaultRel, "DEFGR, I32[ 1 ]", 1),
    ROW(vlListAppendDefaultToLabel, "DEFGA, I32[ 0 ]", "label"),
    ROW(vlListAppendDefaultBranchList, "DEFBL, I32[ 1 ]", 1),
    ROW(vlListAppendDefaultCallList, "DEFCL, I32[ 1 ]", 1),
    ROW(vlListAppendBranchList, "BRL, I32[ 1 ]", 1),
    ROW(vlListAppendBranchListCondPort, "BRLC, I32[ 1 ], U32[ 2 ], I32[ 3 ], Bool[ True ], Bool[ False ], U32[ 4 ]", 1, 2, 3, true, false, 4),
    ROW(vlListAppendBranchListCondFlag, "BRLCF, I32[ 1 ], U32[ 3826002220 ], Bool[ False ]", 1, "a", false),
    ROW(vlListAppendCallList, "CL, I32[ 1 ]", 1),
    ROW(vlListAppendCallListCondPort, "CLC, I32[ 1 ], U32[ 2 ], I32[ 3 ], Bool[ False ], Bool[ True ], U32[ 4 ]", 1, 2, 3, false, true, 4),
    ROW(vlListAppendCallListCondFlag, "CLCF, I32[ 1 ], U32[ 3826002220 ], Bool[ True ]", 1, "a", true),
    ROW(vlListAppendExitList, "EXL"),
    ROW(vlListAppendExitListCondPort, "EXLC, U32[ 2 ], I32[ 3 ], Bool[ True ], Bool[ False ], U32[ 4 ]", 2, 3, true, false, 4),
    ROW(vlListAppendExitListCondFlag, "EXLF, U32[ 3826002220 ], Bool[ True ]", "a", true),
    ROW(vlListAppendBranchStandAloneList, "GTSAL"),
    ROW(vlListAppendSelectFont, "SF, I32[ 1 ]", 1),
    ROW(vlListAppendMarkChar, "MCH, I32[ 228 ]", '\xE4'),
    ROW(vlListAppendMarkText, "MCH, I32[ 228 ] }, { MCH, I32[ 65 ]", "\xE4" "A"),
    ROW(vlListAppendMarkTime, "MT"),
    ROW(vlListAppendMarkCounter, "MC, I32[ -468965076 ], I32[ 5 ]", "a", 5),
    ROW(vlListAppendEnhancedCommand, "PEC, I32[ 1 ], U32[ 5 ], U32[ 3 ]", 1, vlAxis_SensorZ, 3),
    ROW(vlListAppendGpioValue, "PPT, U32[ 4294967295 ], U32[ 2 ], U32[ 3 ]", -1, 2, 3),
    ROW(vlListAppendDacValue, "PDA, I32[ 12 ], U32[ 3 ]", vlPowerTarget_LmWidth, 3),
    ROW(vlListAppendTraceConfig, "PTC, I32[ -1 ], U32[ 2 ], U32[ 3 ], U32[ 4294967295 ]", &trace),
    ROW(vlListAppendTraceLabel, "PTL, I32[ 1 ]", 1),
    ROW(vlListAppendSpiWrite, "PSP, I32[ 1 ], U32[ 2 ]", 1, 2),
    ROW(vlListAppendSerialPortTransmitString, "STX, ByteArr[ 65 66  ]", "AB"),
    ROW(vlListAppendSerialPortTransmitLine, "STXL, ByteArr[  ]", ""),
    WIRE_ROW(vlListAppendSerialPortTransmitBytes, "1612: 01000006 34 000002 00 FF", "STX, ByteArr[ 0 255  ]", bytes, 2),
    ROW(vlListAppendSerialPortVerifyResponseString, "SVR, ByteArr[ 65  ], ByteArr[ 66  ]", "A", "B"),
    ROW(vlListAppendSerialPortVerifyResponseLine, "SVRL, ByteArr[ 65  ], ByteArr[ 66  ]", "A", "B"),
    ROW(vlListAppendSerialPortVerifyResponseBytes, "SVR, ByteArr[ 0  ], ByteArr[ 0 255  ]", bytes, 1, bytes, 2),
    ROW(vlListAppendLoopStart, "LOS, I32[ 9 ], I32[ 1 ]", 9),
    ROW(vlListAppendLoopEnd, "LOE, I32[ 1 ]"),
    ROW(vlListAppendCommandFromString, "MA, P2D[ X=1 Y=2 ]", "{MA,P2D[X=1 Y=2]}"),
};
const Row appendingNothing[] = {
    ROW(vlListAppendLabel, "", "label"),
    ROW(vlListAppendMarkText, "", ""),
};
// What they fail with.
const Row failing[] = {
    ROW(vlListAppendLoopBreak, "No loop opened!"),
    ROW(vlListAppendJumpAndShoot2D, "There must be at least one point", points, 0, 1),
    ROW(vlListAppendJumpAndShoot3D, "There must be at least one point", nullptr, 0, 1),
    ROW(vlListAppendJumpAndShoot3D, "A null pointer was passed for 'points'.", nullptr, 1, 1),
    ROW(vlListAppendMicroVectors2D, "There must be at least one MicroVector", steps, 0),
    ROW(vlListAppendMicroVectors3D, "There must be at least one MicroVector", stairs, 0),
    ROW(vlListAppendPointAndShootLineAbs2D, "There must be at least one powerValue and one exposureTimeValue", 1, 2, 3, 4, numbers, 0, powers, 1, 1),
    ROW(vlListAppendPointAndShootLineRel3D, "There must be at least one powerValue and one exposureTimeValue", 1, 2, 3, 4, 5, 6, numbers, 1, powers, 0, 1),
    ROW(vlListAppendPointAndShootLineAbs3D, "A null pointer was passed for 'powers'.", 1, 2, 3, 4, 5, 6, numbers, 1, nullptr, 1, 1),
    ROW(vlListAppendBitmapLineAbs2D, "A null pointer was passed for 'powers'.", 1, 2, 3, 4, nullptr, 1, 1),
    ROW(vlListAppendTransformation, "A null pointer was passed for 'transform'.", nullptr),
    ROW(vlListAppendTraceConfig, "A null pointer was passed for 'config'.", nullptr),
    ROW(vlListAppendBranchToLabel, "A null pointer was passed for 'label'.", nullptr),
    ROW(vlListAppendBooleanSet, "A null pointer was passed for 'name'.", nullptr, true),
    ROW(vlListAppendSerialPortVerifyResponseLine, "A null pointer was passed for 'response'.", "A", nullptr),
    ROW(vlListAppendSkyWritingMode, "SkyWritingMode::_from_integral: invalid argument", 3),
    ROW(vlListAppendEnhancedCommand, "Axis::_from_integral: invalid argument", 1, 6, 1),
    ROW(vlListAppendDacValue, "PowerTarget::_from_integral: invalid argument", 7, 1),
    ROW(vlListAppendMotfWaitDistance, "MotfDistanceMode::_from_integral: invalid argument", 1, -1, 1),
    ROW(vlListAppendCommandFromString, "Unable to parse command code", "{ XYZ }"),
    ROW(vlListAppendCommandFromString, "A null pointer was passed for 'text'.", nullptr),
};
// clang-format on

std::string TextOf(std::int64_t list) {
  std::string text(static_cast<std::size_t>(vlListStringLen(list)) + 2, '?');
  std::uint32_t length = 0;
  EXPECT_EQ(vlListToString(list, text.data(), static_cast<std::uint32_t>(text.size() - 1), &length), -1);
  EXPECT_EQ(LastError(), "Buffer is too small.");
  EXPECT_EQ(vlListToString(list, text.data(), static_cast<std::uint32_t>(text.size()), &length), 0);
  return text.substr(0, length);
}

std::string WithoutBlanks(std::string text) {
  std::erase(text, ' ');
  return text;
}

// "CODE:PAYLOAD" in hexadecimal digits of the only command of an uploaded list.
std::string Wire(const Request& upload) {
  std::string text;
  char digits[16];
  const auto list = upload.Arguments.get().via.array.ptr[1];
  const auto [code, payload] = list.via.array.ptr[1].as<std::tuple<std::int32_t, std::vector<char>>>();
  std::snprintf(digits, sizeof digits, "%X:", static_cast<unsigned>(code));
  text = digits;
  for (const char byte : payload) {
    std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(byte));
    text += digits;
  }
  return text;
}

TEST(Append, EveryFunctionAppendsItsCommand) {
  std::string wire;
  FakeCard card(FakeCard::Answering([&](const Request& request) {
    if (request.Method == "SetList") wire = Wire(request);
    return Response(request.Id, false);
  }));
  Connection connection(card.Port());
  const std::int64_t list = vlListAllocate(connection);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.append(list + 1), -1);
    EXPECT_EQ(LastError(), "List does not exist.");
    EXPECT_EQ(row.append(list), 0);
    EXPECT_EQ(TextOf(list), std::string("[ { ") + row.text + " } ]");
    if (*row.wire != '\0') {
      EXPECT_EQ(vlListSet(connection, 1, list, false, -1), 0);
      EXPECT_EQ(wire, WithoutBlanks(row.wire));
    }
    EXPECT_EQ(vlListClear(list), 0);
  }
  for (const Row& row : appendingNothing) EXPECT_EQ(row.append(list), 0) << row.name;
  for (const Row& row : failing) {
    EXPECT_EQ(row.append(list), -1) << row.name;
    EXPECT_EQ(LastError(), row.text) << row.name;
  }
  EXPECT_EQ(vlListCommandCount(list), 0);
}

TEST(Lists, ComeBackFromTheCardAndFromTextAsTheyWere) {
  const CardProcess card;
  Connection connection(card.GetPort());
  const std::int64_t list = vlListAllocate(connection);
  for (const Row& row : rows) row.append(list);
  const std::int64_t fetched = vlListAllocate(connection);
  EXPECT_EQ(vlListAppendLaserOff(fetched), 0);
  for (int round = 0; round < 2; ++round) {  // all commands there are, then none
    const std::int64_t read = vlListAllocateFromString(connection, TextOf(list).c_str());
    EXPECT_EQ(vlListSet(connection, 4, read, false, 9), 0) << LastError();
    EXPECT_EQ(vlListGet(connection, 4, fetched), 0) << LastError();
    EXPECT_EQ(TextOf(fetched), TextOf(list));
    EXPECT_EQ(vlListClear(list), 0);
  }
}

TEST(Lists, AreAppendedToByManyThreads) {
  constexpr std::uint32_t Marks = 20000;
  FakeCard card(FakeCard::Obliging());
  Connection connection(card.Port());
  std::vector<std::int64_t> own(16);
  for (std::int64_t& list : own) list = vlListAllocate(connection);
  const std::int64_t common = vlListAllocate(connection);
  Together(16, [&](std::uint32_t thread) {
    for (std::uint32_t i = 0; i < Marks; ++i) {
      vlListAppendMarkAbs2D(own[thread], thread, i);
      if (thread % 4 == 0) vlListAppendMarkAbs2D(common, thread, thread);
    }
  });
  const auto mark = [](std::uint32_t x, std::uint32_t y) {
    return "{ MA, P2D[ X=" + std::to_string(x) + " Y=" + std::to_string(y) + " ] }";
  };
  for (std::uint32_t thread = 0; thread < own.size(); ++thread) {
    std::string expected;
    for (std::uint32_t i = 0; i < Marks; ++i) expected.append(i == 0 ? "[ " : ", ").append(mark(thread, i));
    EXPECT_EQ(TextOf(own[thread]), expected + " ]");
  }
  std::string left = TextOf(common);
  for (std::uint32_t thread = 0; thread < own.size(); thread += 4) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = left.find(mark(thread, thread), at)) != std::string::npos; ++at) ++count;
    EXPECT_EQ(count, Marks);
  }
  EXPECT_EQ(vlListCommandCount(common), 4 * Marks);
}

TEST(Labels, StandForPositionsOnceAListIsSet) {
  std::vector<std::string> branches;
  FakeCard card(FakeCard::Answering([&](const Request& request) {
    if (request.Method == "SetList") branches.push_back(Wire(request));
    return Response(request.Id, false);
  }));
  Connection connection(card.Port());
  const std::int64_t list = vlListAllocate(connection);
  const auto set = [&] { return vlListSet(connection, 1, list, false, -1) == 0 ? "" : LastError(); };
  EXPECT_EQ(vlListAppendBranchToLabel(list, "end"), 0);
  EXPECT_EQ(vlListAppendCaseToLabelValue(list, "begin", 7), 0);
  EXPECT_EQ(set(), "Label 'begin' not defined (referenced from '1048945' at 1).");
  EXPECT_EQ(vlListAppendLabel(list, "begin"), 0);
  EXPECT_EQ(vlListAppendLaserOff(list), 0);
  EXPECT_EQ(vlListAppendLabel(list, "begin"), -1);
  EXPECT_EQ(LastError(), "Label 'begin' is already defined.");
  EXPECT_EQ(set(), "Label 'end' not defined (referenced from '1048849' at 0).");
  EXPECT_EQ(vlListAppendLabel(list, "end"), 0);
  EXPECT_EQ(set(), "");
  EXPECT_EQ(branches, std::vector<std::string>{"100111:010000052203000000"});
  EXPECT_EQ(TextOf(list),
            "[ { BA, I32[ 3 ] }, { CASGA, I32[ 2 ], I32[ 7 ] }, { LOF } ]");  // in the list itself
  const std::int64_t copy = vlListAllocate(connection);
  EXPECT_EQ(vlListAppendList(copy, list), 0);
  EXPECT_EQ(vlListAppendList(copy, copy), 0);
  EXPECT_EQ(vlListAppendLabel(copy, "end"), 0);  // labels do not come along
  EXPECT_EQ(vlListCommandCount(copy), 6);
  const std::int64_t read = vlListAllocateFromString(connection, TextOf(copy).c_str());
  EXPECT_EQ(TextOf(read), TextOf(copy));
  for (const char* text : {"", "[ { MA, P2D[ X=1 ] } ]", "[ { MA, P2D[ X=1 Y=2 ] } x ]"}) {
    EXPECT_EQ(vlListAllocateFromString(connection, text), -1);
    EXPECT_EQ(LastError(), "Illegal list content!");
  }
  std::string large = "{NO,ByteArr[";
  for (int i = 0; i < 921600; ++i) large += "1 ";
  EXPECT_EQ(vlListAllocateFromString(connection, (large + "]}").c_str()), -1);
  EXPECT_EQ(
      LastError(),
      "Command exceeds the maximum allowed command size of 921600 . Please split into several commands.");
  {
    const FailingMemory once(0, 1);
    EXPECT_EQ(vlListAllocateFromString(connection, "{LOF}"), -1);
  }
  EXPECT_EQ(LastError(), "std::bad_alloc");
  EXPECT_EQ(vlListAllocate(connection), read + 1);  // nothing half-made has taken a number
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
