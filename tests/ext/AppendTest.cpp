// Every function that appends a command: what it appends, as text; codes and bytes are in CommandTest.
#include "int/CardProcess.h"
#include "support/FakeCard.h"

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
  const char* text;  // of what it appends, in a short form
};

#define ARGUMENTS(...) __VA_OPT__(, ) __VA_ARGS__
#define ROW(function, arguments, ...)                                                            \
  {                                                                                              \
#function, [](std::int64_t list) { return function(list ARGUMENTS arguments); }, __VA_ARGS__ \
  }

// The hash of "a" is 3826002220 = E40C292C, that of "foobar" 3214735720 and that of no byte at all 2166136261.
const Row rows[] = {
    ROW(vlListAppendJumpAbs2D, (1.5, -2.5), "JA,P2D[1.5,-2.5]"),
    ROW(vlListAppendJumpRel2D, (1, 2), "JR,P2D[1,2]"),
    ROW(vlListAppendJumpAbs3D, (1, 2, 3), "J3A,P3D[1,2,3]"),
    ROW(vlListAppendJumpRel3D, (1, 2, 3), "J3R,P3D[1,2,3]"),
    ROW(vlListAppendMarkAbs2D, (1, 2), "MA,P2D[1,2]"),
    ROW(vlListAppendMarkRel2D, (1, 2), "MR,P2D[1,2]"),
    ROW(vlListAppendMarkAbs3D, (1, 2, 3), "M3A,P3D[1,2,3]"),
    ROW(vlListAppendMarkRel3D, (1, 2, 3), "M3R,P3D[1,2,3]"),
    ROW(vlListAppendMagnificationAbs, (2, true), "SPMA,F64[2],Bool[True]"),
    ROW(vlListAppendMagnificationRel, (2, false), "SPMR,F64[2],Bool[False]"),
    ROW(vlListAppendArcAbs2D, (1, 2, 3), "ARCA,P2D[1,2],F64[3]"),
    ROW(vlListAppendArcAbs3D, (1, 2, 3, 4), "ARC3A,P3D[1,2,3],F64[4]"),
    ROW(vlListAppendArcRel2D, (1, 2, 3), "ARCR,P2D[1,2],F64[3]"),
    ROW(vlListAppendArcRel3D, (1, 2, 3, 4), "ARC3R,P3D[1,2,3],F64[4]"),
    ROW(vlListAppendEllipseAbs2D, (1, 2, 3, 4, 5), "ELLA,P2D[1,2],F64[3],F64[4],F64[5]"),
    ROW(vlListAppendEllipseAbs3D, (1, 2, 3, 4, 5, 6), "ELL3A,P3D[1,2,3],F64[4],F64[5],F64[6]"),
    ROW(vlListAppendEllipseRel2D, (1, 2, 3, 4, 5), "ELLR,P2D[1,2],F64[3],F64[4],F64[5]"),
    ROW(vlListAppendEllipseRel3D, (1, 2, 3, 4, 5, 6), "ELL3R,P3D[1,2,3],F64[4],F64[5],F64[6]"),
    ROW(vlListAppendEllipticCurveAbs2D, (1, 2, 3, 4, 5), "ELLCA,P2D[1,2],F64[3],F64[4],F64[5]"),
    ROW(vlListAppendEllipticCurveAbs3D, (1, 2, 3, 4, 5, 6), "ELLC3A,P3D[1,2,3],F64[4],F64[5],F64[6]"),
    ROW(vlListAppendEllipticCurveRel2D, (1, 2, 3, 4, 5), "ELLCR,P2D[1,2],F64[3],F64[4],F64[5]"),
    ROW(vlListAppendEllipticCurveRel3D, (1, 2, 3, 4, 5, 6), "ELLC3R,P3D[1,2,3],F64[4],F64[5],F64[6]"),
    ROW(vlListAppendGeneralEllipse, (1, 2, 3, 4, 5, 6, 7, 8, 9, 10),
        "ELLG,P3D[1,2,3],P3D[4,5,6],P3D[7,8,9],F64[10]"),
    ROW(vlListAppendQuadraticBezierAbs2D, (1, 2, 3, 4), "BEZA,P2D[1,2],P2D[3,4]"),
    ROW(vlListAppendQuadraticBezierAbs3D, (1, 2, 3, 4, 5, 6), "BEZ3A,P3D[1,2,3],P3D[4,5,6]"),
    ROW(vlListAppendQuadraticBezierRel2D, (1, 2, 3, 4), "BEZR,P2D[1,2],P2D[3,4]"),
    ROW(vlListAppendQuadraticBezierRel3D, (1, 2, 3, 4, 5, 6), "BEZ3R,P3D[1,2,3],P3D[4,5,6]"),
    ROW(vlListAppendCubicBezierAbs2D, (1, 2, 3, 4, 5, 6), "BEZCA,P2D[1,2],P2D[3,4],P2D[5,6]"),
    ROW(vlListAppendCubicBezierAbs3D, (1, 2, 3, 4, 5, 6, 7, 8, 9), "BEZC3A,P3D[1,2,3],P3D[4,5,6],P3D[7,8,9]"),
    ROW(vlListAppendCubicBezierRel2D, (1, 2, 3, 4, 5, 6), "BEZCR,P2D[1,2],P2D[3,4],P2D[5,6]"),
    ROW(vlListAppendCubicBezierRel3D, (1, 2, 3, 4, 5, 6, 7, 8, 9), "BEZC3R,P3D[1,2,3],P3D[4,5,6],P3D[7,8,9]"),
    ROW(vlListAppendBitmapLineAbs2D, (1, 2, 3, 4, powers, 2, 5),
        "BMPA,P2D[1,2],P2D[3,4],U16Arr[7 65535],I32[5]"),
    ROW(vlListAppendBitmapLineAbs3D, (1, 2, 3, 4, 5, 6, powers, 1, 8),
        "BMP3A,P3D[1,2,3],P3D[4,5,6],U16Arr[7],I32[8]"),
    ROW(vlListAppendBitmapLineRel2D, (1, 2, 3, 4, nullptr, 0, 5), "BMPR,P2D[1,2],P2D[3,4],U16Arr[],I32[5]"),
    ROW(vlListAppendBitmapLineRel3D, (1, 2, 3, 4, 5, 6, powers, 1, 8),
        "BMP3R,P3D[1,2,3],P3D[4,5,6],U16Arr[7],I32[8]"),
    ROW(vlListAppendPointAndShootLineAbs2D, (1, 2, 3, 4, numbers, 2, powers, 2, -9),
        "PASA,P2D[1,2],P2D[3,4],U16Arr[7 65535],F64Arr[0.5 -1e-09],I32[-9]"),
    ROW(vlListAppendPointAndShootLineAbs3D, (1, 2, 3, 4, 5, 6, numbers, 2, powers, 1, 9),
        "PAS3A,P3D[1,2,3],P3D[4,5,6],U16Arr[7],F64Arr[0.5 -1e-09],I32[9]"),
    ROW(vlListAppendPointAndShootLineRel2D, (1, 2, 3, 4, numbers, 1, powers, 2, 9),
        "PASA,P2D[1,2],P2D[3,4],U16Arr[7 65535],F64Arr[0.5],I32[9]"),
    ROW(vlListAppendPointAndShootLineRel3D, (1, 2, 3, 4, 5, 6, numbers, 1, powers, 1, 9),
        "PAS3A,P3D[1,2,3],P3D[4,5,6],U16Arr[7],F64Arr[0.5],I32[9]"),
    ROW(vlListAppendJumpAndShoot2D, (points, 2, 5), "JASA,F64Arr[1 2 3 4],I32[5]"),
    ROW(vlListAppendJumpAndShoot3D, (spots, 1, 5), "JAS3A,F64Arr[1 2 3],I32[5]"),
    ROW(vlListAppendMicroVectors2D, (steps, 1), "UV2,P2IArr[(-1,2)]"),
    ROW(vlListAppendMicroVectors3D, (stairs, 1), "UV3,P3IArr[(-1,2,2147483647)]"),
    ROW(vlListAppendPositions2D, (points, 1), "PV2,P2DArr[(1,2)]"),
    ROW(vlListAppendPositions3D, (spots, 1), "PV3,P3DArr[(1,2,3)]"),
    ROW(vlListAppendScalingFactor, (1, 2), "SCF,P2D[1,2]"),
    ROW(vlListAppendHeadingScale, (1, 2, 3), "HSCA,P3D[1,2,3]"),
    ROW(vlListAppendTransformation, (&transform), "TRA,F64Arr[1 2 3 4 5 6 7 8 9],F64Arr[10 11 12]"),
    ROW(vlListAppendHeadBias, (1, vlAxes_X | vlAxes_Z, numbers, 2), "HBS,I32[1],I32[5],F64Arr[0.5 -1e-09]"),
    ROW(vlListAppendSelectHeadCorrection, (1, 2), "FSCT,I32[1],I32[2]"),
    ROW(vlListAppendJumpSpeed, (1.5), "JS,F64[1.5]"),
    ROW(vlListAppendMarkSpeed, (1.5), "MS,F64[1.5]"),
    ROW(vlListAppendMagnificationSpeed, (1.5), "MAGS,F64[1.5]"),
    ROW(vlListAppendSpeedScale, (1.5), "SPSC,F64[1.5]"),
    ROW(vlListAppendJumpDelay, (1.5), "JD,F64[1.5]"),
    ROW(vlListAppendMinJumpDelay, (1.5), "JDM,F64[1.5]"),
    ROW(vlListAppendJumpLengthLimit, (1.5), "JLL,F64[1.5]"),
    ROW(vlListAppendEnableVariableJumpDelay, (true), "VJD,Bool[True]"),
    ROW(vlListAppendMarkDelay, (1.5), "MD,F64[1.5]"),
    ROW(vlListAppendPolyDelay, (1.5), "PD,F64[1.5]"),
    ROW(vlListAppendEnableVariablePolyDelay, (true), "VPD,Bool[True]"),
    ROW(vlListAppendLaserOnDelay, (1.5), "LN,F64[1.5]"),
    ROW(vlListAppendLaserOffDelay, (1.5), "LF,F64[1.5]"),
    ROW(vlListAppendEvaluationLeadTime, (1.5), "ELT,F64[1.5]"),
    ROW(vlListAppendSleep, (1.5), "SL,F64[1.5]"),
    ROW(vlListAppendSkyWritingMode, (vlSkyWritingMode_MinimumCoH), "SKWM,I32[2]"),
    ROW(vlListAppendSkyWritingMinCoH, (1.5), "SKMCH,F64[1.5]"),
    ROW(vlListAppendSkyWritingMergedExtensionsMaxCoH, (1.5), "SKMMEMCH,F64[1.5]"),
    ROW(vlListAppendSkyWritingAccelerationDelay, (1.5), "SKAD,F64[1.5]"),
    ROW(vlListAppendSkyWritingDecelerationDelay, (1.5), "SKDD,F64[1.5]"),
    ROW(vlListAppendSkyWritingExtensionTime, (1.5), "SKET,F64[1.5]"),
    ROW(vlListAppendSkyWritingLaserOnDelay, (1.5), "SKLON,F64[1.5]"),
    ROW(vlListAppendSkyWritingLaserOffDelay, (1.5), "SKLOF,F64[1.5]"),
    ROW(vlListAppendEnableWobble, (true), "WOBE,Bool[True]"),
    ROW(vlListAppendWobbleAmplitude, (1, 2), "WOBA,P2D[1,2]"),
    ROW(vlListAppendWobbleFrequency, (1, 2), "WOBF,P2D[1,2]"),
    ROW(vlListAppendWobblePhase, (1, 2), "WOBP,P2D[1,2]"),
    ROW(vlListAppendWobbleCircle, (1, 2), "WOBA,P2D[1,1]},{WOBF,P2D[2,2]},{WOBP,P2D[0,1.5707963267948966]"),
    ROW(vlListAppendWobbleEight, (1, 2, 3), "WOBA,P2D[1,2]},{WOBF,P2D[3,6]},{WOBP,P2D[0,0]"),
    ROW(vlListAppendEnableDashedLine, (true, 1.5), "DLE,Bool[True],F64[1.5]"),
    ROW(vlListAppendDashedLinePattern, (numbers, 2), "DLP,F64Arr[0.5 -1e-09]"),
    ROW(vlListAppendLaserOn, (), "LON"),
    ROW(vlListAppendLaserOn2, (5, true), "LONP,I32[5],Bool[True]"),
    ROW(vlListAppendLaserOff, (), "LOF"),
    ROW(vlListAppendPower, (65535, 1), "PWR,U16[65535],I32[1]"),
    ROW(vlListAppendPower2, (1, 2, 3), "PWRC,U16[1],F64[2],I32[3]"),
    ROW(vlListAppendPowerScale, (1.5, 2), "PWSC,F64[1.5],I32[2]"),
    ROW(vlListAppendSimmerPower, (1), "SPR,U16[1]"),
    ROW(vlListAppendLmFrequency, (1.5), "LY,F64[1.5]"),
    ROW(vlListAppendLmWidth, (1.5), "LW,F64[1.5]"),
    ROW(vlListAppendEnablePilot, (true), "PIL,Bool[True]"),
    ROW(vlListAppendArmLaser, (true), "ARM,Bool[True]"),
    ROW(vlListAppendEnableVelocityCorrection, (true, 2), "VDP,Bool[True],I32[2]"),
    ROW(vlListAppendEnablePowerCorrection, (true, 2), "PDP,Bool[True],I32[2]"),
    ROW(vlListAppendEnablePowerCalibration, (false, 2), "PCA,Bool[False],I32[2]"),
    ROW(vlListAppendProgress, (-2), "PI,I32[-2]"),
    ROW(vlListAppendIncrementCounter, ("a"), "IC,U32[3826002220]"),
    ROW(vlListAppendBooleanSet, ("foobar", true), "BVS,U32[3214735720],Bool[True]"),
    ROW(vlListAppendIntegerSet, ("a", -2), "IVS,U32[3826002220],I32[-2]"),
    ROW(vlListAppendSignalSet, (""), "SIS,U32[2166136261]"),
    ROW(vlListAppendSignalReset, ("a"), "SIR,U32[3826002220]"),
    ROW(vlListAppendWaitStart, (5), "WS,I32[5]"),
    ROW(vlListAppendWaitForInput, (1, 2, true, false, 4294967295, 4),
        "WI,U32[1],I32[2],Bool[True],Bool[False],U32[4294967295],I32[4]"),
    ROW(vlListAppendWaitForSignal, ("a", 2), "WFS,U32[3826002220],I32[2]"),
    ROW(vlListAppendSuspend, (), "SUS"),
    ROW(vlListAppendStartMotf, (), "MFSTR"),
    ROW(vlListAppendStopMotf2D, (1, 2), "MFSTP,P2D[1,2]"),
    ROW(vlListAppendStopMotf3D, (1, 2, 3), "MFSTP3,P3D[1,2,3]"),
    ROW(vlListAppendMotfWaitPart, (1), "MFWP,I32[1]"),
    ROW(vlListAppendMotfWaitDistance, (1.5, vlMotfDistanceMode_RelativeToPrevious, 2),
        "MFWD,F64[1.5],I32[1],I32[2]"),
    ROW(vlListAppendMotfTileOffset, (1.5), "MFTOF,F64[1.5]"),
    ROW(vlListAppendBranchAbs, (5), "BA,I32[5]"),
    ROW(vlListAppendBranchRel, (-5), "BR,I32[-5]"),
    ROW(vlListAppendBranchToLabel, ("label"), "BA,I32[0]"),
    ROW(vlListAppendBranchAbsCondPort, (1, 2, 3, true, false, 4),
        "BAC,I32[1],U32[2],I32[3],Bool[True],Bool[False],U32[4]"),
    ROW(vlListAppendBranchRelCondPort, (1, 2, 3, true, false, 4),
        "BRC,I32[1],U32[2],I32[3],Bool[True],Bool[False],U32[4]"),
    ROW(vlListAppendBranchToLabelCondPort, ("label", 2, 3, false, true, 4),
        "BAC,I32[0],U32[2],I32[3],Bool[False],Bool[True],U32[4]"),
    ROW(vlListAppendBranchAbsCondFlag, (1, "a", true), "BACF,I32[1],U32[3826002220],Bool[True]"),
    ROW(vlListAppendBranchRelCondFlag, (1, "a", true), "BRCF,I32[1],U32[3826002220],Bool[True]"),
    ROW(vlListAppendBranchToLabelCondFlag, ("label", "a", true), "BACF,I32[0],U32[3826002220],Bool[True]"),
    ROW(vlListAppendSwitchPort, (1, true, 2), "SWI,I32[1],Bool[True],U32[2]"),
    ROW(vlListAppendSwitchValue, ("a"), "SWIV,I32[0],U32[3826002220]"),
    ROW(vlListAppendCaseAbsPort, (1, 4294967295), "CASGA,I32[1],I32[-1]"),
    ROW(vlListAppendCaseAbsValue, (1, -2), "CASGA,I32[1],I32[-2]"),
    ROW(vlListAppendCaseRelPort, (1, 4294967295), "CASGR,I32[1],I32[-1]"),
    ROW(vlListAppendCaseRelValue, (1, -2), "CASGR,I32[1],I32[-2]"),
    ROW(vlListAppendCaseToLabelPort, ("label", 4294967295), "CASGA,I32[0],I32[-1]"),
    ROW(vlListAppendCaseToLabelValue, ("label", -2), "CASGA,I32[0],I32[-2]"),
    ROW(vlListAppendCaseBranchListPort, (1, 4294967295), "CASBL,I32[1],I32[-1]"),
    ROW(vlListAppendCaseBranchListValue, (1, -2), "CASBL,I32[1],I32[-2]"),
    ROW(vlListAppendCaseCallListPort, (1, 4294967295), "CASCL,I32[1],I32[-1]"),
    ROW(vlListAppendCaseCallListValue, (1, -2), "CASCL,I32[1],I32[-2]"),
    ROW(vlListAppendDefaultAbs, (1), "DEFGA,I32[1]"),
    ROW(vlListAppendDefaultRel, (1), "DEFGR,I32[1]"),
    ROW(vlListAppendDefaultToLabel, ("label"), "DEFGA,I32[0]"),
    ROW(vlListAppendDefaultBranchList, (1), "DEFBL,I32[1]"),
    ROW(vlListAppendDefaultCallList, (1), "DEFCL,I32[1]"),
    ROW(vlListAppendBranchList, (1), "BRL,I32[1]"),
    ROW(vlListAppendBranchListCondPort, (1, 2, 3, true, false, 4),
        "BRLC,I32[1],U32[2],I32[3],Bool[True],Bool[False],U32[4]"),
    ROW(vlListAppendBranchListCondFlag, (1, "a", false), "BRLCF,I32[1],U32[3826002220],Bool[False]"),
    ROW(vlListAppendCallList, (1), "CL,I32[1]"),
    ROW(vlListAppendCallListCondPort, (1, 2, 3, false, true, 4),
        "CLC,I32[1],U32[2],I32[3],Bool[False],Bool[True],U32[4]"),
    ROW(vlListAppendCallListCondFlag, (1, "a", true), "CLCF,I32[1],U32[3826002220],Bool[True]"),
    ROW(vlListAppendExitList, (), "EXL"),
    ROW(vlListAppendExitListCondPort, (2, 3, true, false, 4),
        "EXLC,U32[2],I32[3],Bool[True],Bool[False],U32[4]"),
    ROW(vlListAppendExitListCondFlag, ("a", true), "EXLF,U32[3826002220],Bool[True]"),
    ROW(vlListAppendBranchStandAloneList, (), "GTSAL"),
    ROW(vlListAppendSelectFont, (1), "SF,I32[1]"),
    ROW(vlListAppendMarkChar, ('\xE4'), "MCH,I32[228]"),
    ROW(vlListAppendMarkText,
        ("\xE4"
         "A"),
        "MCH,I32[228]},{MCH,I32[65]"),
    ROW(vlListAppendMarkTime, (), "MT"),
    ROW(vlListAppendMarkCounter, ("a", 5), "MC,I32[-468965076],I32[5]"),
    ROW(vlListAppendEnhancedCommand, (1, vlAxis_SensorZ, 3), "PEC,I32[1],U32[5],U32[3]"),
    ROW(vlListAppendGpioValue, (-1, 2, 3), "PPT,U32[4294967295],U32[2],U32[3]"),
    ROW(vlListAppendDacValue, (vlPowerTarget_LmWidth, 3), "PDA,I32[12],U32[3]"),
    ROW(vlListAppendTraceConfig, (&trace), "PTC,I32[-1],U32[2],U32[3],U32[4294967295]"),
    ROW(vlListAppendTraceLabel, (1), "PTL,I32[1]"),
    ROW(vlListAppendSpiWrite, (1, 2), "PSP,I32[1],U32[2]"),
    ROW(vlListAppendSerialPortTransmitString, ("AB"), "STX,ByteArr[65 66]"),
    ROW(vlListAppendSerialPortTransmitLine, (""), "STXL,ByteArr[]"),
    ROW(vlListAppendSerialPortTransmitBytes, (bytes, 2), "STX,ByteArr[0 255]"),
    ROW(vlListAppendSerialPortVerifyResponseString, ("A", "B"), "SVR,ByteArr[65],ByteArr[66]"),
    ROW(vlListAppendSerialPortVerifyResponseLine, ("A", "B"), "SVRL,ByteArr[65],ByteArr[66]"),
    ROW(vlListAppendSerialPortVerifyResponseBytes, (bytes, 1, bytes, 2), "SVR,ByteArr[0],ByteArr[0 255]"),
    ROW(vlListAppendLoopStart, (9), "LOS,I32[9],I32[1]"),
    ROW(vlListAppendLoopEnd, (), "LOE,I32[1]"),
    ROW(vlListAppendCommandFromString, ("{MA,P2D[1,2]}"), "MA,P2D[1,2]"),
};
// What they fail with.
const Row failing[] = {
    ROW(vlListAppendLoopBreak, (), "No loop opened!"),
    ROW(vlListAppendJumpAndShoot2D, (points, 0, 1), "There must be at least one point"),
    ROW(vlListAppendJumpAndShoot3D, (nullptr, 0, 1), "There must be at least one point"),
    ROW(vlListAppendMicroVectors2D, (steps, 0), "There must be at least one MicroVector"),
    ROW(vlListAppendMicroVectors3D, (stairs, 0), "There must be at least one MicroVector"),
    ROW(vlListAppendPointAndShootLineAbs2D, (1, 2, 3, 4, numbers, 0, powers, 1, 1),
        "There must be at least one powerValue and one exposureTimeValue"),
    ROW(vlListAppendPointAndShootLineRel3D, (1, 2, 3, 4, 5, 6, numbers, 1, powers, 0, 1),
        "There must be at least one powerValue and one exposureTimeValue"),
    ROW(vlListAppendSkyWritingMode, (3), "SkyWritingMode::_from_integral: invalid argument"),
    ROW(vlListAppendEnhancedCommand, (1, 6, 1), "Axis::_from_integral: invalid argument"),
    ROW(vlListAppendDacValue, (7, 1), "PowerTarget::_from_integral: invalid argument"),
    ROW(vlListAppendMotfWaitDistance, (1, -1, 1), "MotfDistanceMode::_from_integral: invalid argument"),
    ROW(vlListAppendCommandFromString, ("{ XYZ }"), "Unable to parse command code"),
};

TEST(Append, EveryFunctionAppendsItsCommand) {
  const FakeConnection connection;
  const std::int64_t list = vlListAllocate(connection);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_OK(row.append(list));
    const std::string text = "{" + std::string(row.text) + "}";
    EXPECT_EQ(TextOf(list), TextOf(vlListAllocateFromString(connection, text.c_str())));
    EXPECT_OK(vlListClear(list));
  }
}

TEST(Append, ALoopThatIsOpenCanBeBrokenButNotSet) {
  const FakeConnection connection;
  const std::int64_t list = vlListAllocate(connection);
  EXPECT_OK(vlListAppendLoopStart(list, 9));
  EXPECT_OK(vlListAppendLoopBreak(list));
  EXPECT_FAILS(vlListSet(connection, 1, list, false, -1), "There are open loops inside the list!");
  EXPECT_EQ(TextOf(list), "[ { LOS, I32[ 9 ], I32[ 1 ] }, { LOB } ]");
}

TEST(Append, WhatIsEmptyAppendsNothing) {
  const FakeConnection connection;
  const std::int64_t list = vlListAllocate(connection);
  EXPECT_OK(vlListAppendLabel(list, "label"));
  EXPECT_OK(vlListAppendMarkText(list, ""));
  EXPECT_EQ(vlListCommandCount(list), 0);
}

TEST(Append, WhatCannotBeAppendedIsRefusedWithAText) {
  const FakeConnection connection;
  const std::int64_t list = vlListAllocate(connection);
  for (const Row& row : failing) EXPECT_TRUE(FailsWith(row.name, nullptr, row.append(list), row.text));
  EXPECT_EQ(vlListCommandCount(list), 0);
}

TEST(Append, ListsOfEveryCommandComeBackFromTheCardAndFromTextAsTheyWere) {
  const CardConnection connection;
  const std::int64_t list = vlListAllocate(connection);
  for (const Row& row : rows) ASSERT_OK(row.append(list)) << row.name;
  const std::int64_t fetched = vlListAllocate(connection);
  EXPECT_OK(vlListAppendLaserOff(fetched));
  for (int round = 0; round < 2; ++round) {  // all commands there are, then none
    const std::int64_t read = vlListAllocateFromString(connection, TextOf(list).c_str());
    EXPECT_OK(vlListSet(connection, 4, read, false, 9));
    EXPECT_OK(vlListGet(connection, 4, fetched));
    EXPECT_EQ(TextOf(fetched), TextOf(list));
    EXPECT_OK(vlListClear(list));
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
