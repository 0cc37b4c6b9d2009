#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::ProcessVariables;
using ClientLib::Transform3D;

std::span<const Method> ProcessMethods() {
  static constexpr Method Rows[] = {
      {"GetSpeedScale", [](Card& card) { return card.Configuration.Variables.Get().SpeedScale; }},
      {"SetSpeedScale",
       [](Card& card, double scale) {
         card.Configuration.Variables.Edit(
             [&](ProcessVariables& variables) { variables.SpeedScale = scale; });
       }},
      {"GetTransformation", [](Card& card) { return card.Configuration.Variables.Get().Transformation; }},
      {"SetTransformation",
       [](Card& card, Transform3D transform) {
         card.Configuration.Variables.Edit(
             [&](ProcessVariables& variables) { variables.Transformation = transform; });
       }},
  };
  return Rows;
}

std::span<const Method> MotfMethods() {
  static constexpr Method Rows[] = {
      {"ResetMotfState", [](Card& card) { card.Motf.ResetState(); }},
      {"GetPendingParts", [](Card& card) { return card.Motf.GetPendingParts(); }},
      {"GetFactor1xSpeed", [](Card& card) { return card.Motf.Factor1xSpeed.load(); }},
      {"SetFactor1xSpeed", [](Card& card, double factor) { card.Motf.Factor1xSpeed = factor; }},
      {"ReadEncoderPosition",
       [](Card& card, std::int32_t module) { return card.Motf.ReadEncoderPosition(module); }},
      {"ResetEncoderPosition",
       [](Card& card, std::int32_t module) { card.Motf.ResetEncoderPosition(module); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
