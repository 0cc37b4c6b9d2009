#include "execution/StartingValues.h"

namespace VELTRO::KELVO::Simulation {

ClientLib::CommandList StartingValues(const ClientLib::ProcessVariables& v) {
  ClientLib::CommandList list;
  list.AppendSpeedScale(v.SpeedScale);
  list.AppendJumpSpeed(v.JumpSpeed);
  list.AppendJumpDelay(v.JumpDelay);
  list.AppendEnableVariableJumpDelay(v.EnableVariableJumpDelay);
  list.AppendMinimumJumpDelay(v.MinJumpDelay);
  list.AppendJumpLengthLimit(v.JumpLengthLimit);
  list.AppendMarkSpeed(v.MarkSpeed);
  list.AppendMarkDelay(v.MarkDelay);
  list.AppendMagnificationSpeed(v.MagnificationSpeed);
  list.AppendEnableVariablePolyDelay(v.EnableVariablePolyDelay);
  list.AppendPolyDelay(v.PolyDelay);
  list.AppendLaserOnDelay(v.LaserOnDelay);
  list.AppendLaserOffDelay(v.LaserOffDelay);
  list.AppendLmFrequency(v.LmFrequency);
  list.AppendLmWidth(v.LmWidth);
  list.AppendPower(v.Power, 0);
  list.AppendPower(v.Power1, 1);
  list.AppendTransformation(v.Transformation);
  list.AppendHeadingTransformation(v.HeadingScale);
  list.AppendMotfTileOffset(v.TileOffset);
  list.AppendDashedLinePattern(v.OnOffPattern);
  list.AppendEnableDashedLine(v.EnableDashedLine, 0);
  list.AppendEvaluationLeadTime(v.EvaluationLeadTime);
  const auto& sky = v.SkyWriting;
  list.AppendSkyWritingMode(sky.Mode);
  list.AppendSkyWritingMinCoH(sky.MinCoH);
  list.AppendSkyWritingMergedExtensionsMaxCoH(sky.MergedExtensionsMaxCoH);
  list.AppendSkyWritingExtensionTime(sky.ExtensionTime);
  list.AppendSkyWritingAccelerationDelay(sky.AccelerationDelay);
  list.AppendSkyWritingDecelerationDelay(sky.DecelerationDelay);
  list.AppendSkyWritingLaserOnDelay(sky.LaserOnDelay);
  list.AppendSkyWritingLaserOffDelay(sky.LaserOffDelay);
  list.AppendWobbleAmplitude({v.Wobble.Amplitude});
  list.AppendWobbleFrequency({v.Wobble.Frequency});
  list.AppendWobblePhase({v.Wobble.Phase});
  return list;
}

}  // namespace VELTRO::KELVO::Simulation
