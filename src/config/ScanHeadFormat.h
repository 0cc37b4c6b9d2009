// The kinds of scan heads that a card can have: protocol, number of heads and axes.
#pragma once

#include "common/KelvoAPIEnums.h"

namespace VELTRO::KELVO::ClientLib {

// Bits 0 and 1 are the heads' protocol.
KELVO_FLAGS(SHFlags, std::int32_t, XY2 = 0, SL2 = 1, VL3 = 2, Defocus = 4, SingleHead = 0, DualHead = 8,
            Auxiliary = 16, Extended = 32, FourD = 64)

// The combinations of flags that there are, a row each: what is not in this table is no format. In their names, D is
// the number of dimensions, F with Defocus, X with Extended, A with Auxiliary.
#define KELVO_FLAG(flag) (std::int32_t) SHFlags::flag
#define KELVO_SINGLE(protocol) KELVO_FLAG(protocol) | KELVO_FLAG(SingleHead)
#define KELVO_DUAL(protocol) KELVO_FLAG(protocol) | KELVO_FLAG(DualHead)
// clang-format off
KELVO_ENUM(ScanHeadFormat, std::int32_t,
    XY2_Single3D = KELVO_SINGLE(XY2),
    XY2_Dual3D = KELVO_DUAL(XY2),
    SL2_Single3D = KELVO_SINGLE(SL2),
    SL2_Single3DX = KELVO_SINGLE(SL2) | KELVO_FLAG(Extended),
    SL2_Single3DA = KELVO_SINGLE(SL2) | KELVO_FLAG(Auxiliary),
    SL2_Single4DF = KELVO_SINGLE(SL2) | KELVO_FLAG(FourD) | KELVO_FLAG(Defocus),
    SL2_Single4DFX = KELVO_SINGLE(SL2) | KELVO_FLAG(FourD) | KELVO_FLAG(Defocus) | KELVO_FLAG(Extended),
    SL2_Single4DFA = KELVO_SINGLE(SL2) | KELVO_FLAG(FourD) | KELVO_FLAG(Defocus) | KELVO_FLAG(Auxiliary),
    SL2_Single4D = KELVO_SINGLE(SL2) | KELVO_FLAG(FourD),
    SL2_Dual2D = KELVO_DUAL(SL2),
    VL3_Single3D = KELVO_SINGLE(VL3),
    VL3_Single3DX = KELVO_SINGLE(VL3) | KELVO_FLAG(Extended),
    VL3_Single3DA = KELVO_SINGLE(VL3) | KELVO_FLAG(Auxiliary),
    VL3_Single3DXA = KELVO_SINGLE(VL3) | KELVO_FLAG(Extended) | KELVO_FLAG(Auxiliary),
    VL3_Single4DF = KELVO_SINGLE(VL3) | KELVO_FLAG(FourD) | KELVO_FLAG(Defocus),
    VL3_Single4DFX = KELVO_SINGLE(VL3) | KELVO_FLAG(FourD) | KELVO_FLAG(Defocus) | KELVO_FLAG(Extended),
    VL3_Single4DFA = KELVO_SINGLE(VL3) | KELVO_FLAG(FourD) | KELVO_FLAG(Defocus) | KELVO_FLAG(Auxiliary),
    VL3_Single4DFXA = KELVO_SINGLE(VL3) | KELVO_FLAG(FourD) | KELVO_FLAG(Defocus) | KELVO_FLAG(Extended) | KELVO_FLAG(Auxiliary),
    VL3_Single4D = KELVO_SINGLE(VL3) | KELVO_FLAG(FourD),
    VL3_Single4DX = KELVO_SINGLE(VL3) | KELVO_FLAG(FourD) | KELVO_FLAG(Extended),
    VL3_Single4DA = KELVO_SINGLE(VL3) | KELVO_FLAG(FourD) | KELVO_FLAG(Auxiliary),
    VL3_Single4DXA = KELVO_SINGLE(VL3) | KELVO_FLAG(FourD) | KELVO_FLAG(Extended) | KELVO_FLAG(Auxiliary),
    VL3_Dual3D = KELVO_DUAL(VL3))
// clang-format on
#undef KELVO_DUAL
#undef KELVO_SINGLE
#undef KELVO_FLAG

// Throw std::runtime_error "Unknown head format".
std::int32_t GetHeadCount(ScanHeadFormat format);
std::int32_t GetAxisCount(ScanHeadFormat format);
std::int32_t GetDimensions(ScanHeadFormat format);
bool HasOpticalZoom(ScanHeadFormat format);

// Flags. Throws std::runtime_error "Unknown head format." (the full stop, unlike above, is meant).
Axes GetAxes(ScanHeadFormat format);

// They look at their flag alone, also of what is no format.
bool HasAuxiliary(ScanHeadFormat format);
bool IsExtended(ScanHeadFormat format);

// The axes of a format are numbered in the order of Axis. Throw as GetAxes, or std::runtime_error "The head format
// has no such axis.".
std::int32_t GetIndexOfAxis(ScanHeadFormat format, Axis axis);
Axis GetAxisAtIndex(ScanHeadFormat format, std::int32_t index);

}  // namespace VELTRO::KELVO::ClientLib
