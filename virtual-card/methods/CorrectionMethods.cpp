#include "config/RecordWire.h"
#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::OpticalParameters;
using ClientLib::Point3D;

std::span<const Method> HeadCorrectionMethods() {
  static constexpr Method Rows[] = {
      {"HeadCorrectionExists", [](Card& card, std::int32_t head,
                                  std::int32_t slot) { return card.HeadCorrections.Exists(head, slot); }},
      {"HeadCorrectionDelete",
       [](Card& card, std::int32_t head, std::int32_t slot) { card.HeadCorrections.Delete(head, slot); }},
      {"SetHeadCorrection",
       [](Card& card, std::int32_t head, std::int32_t slot) { card.HeadCorrections.Set(head, slot); }},
      {"LoadHeadCorrections", [](Card& card) { card.HeadCorrections.Load(); }},
      {"StoreHeadCorrections", [](Card& card) { card.HeadCorrections.Store(); }},
      {"SelectHeadCorrection",
       [](Card& card, std::int32_t head, std::int32_t slot) { card.HeadCorrections.Select(head, slot); }},
      {"GetSelectedHeadCorrection",
       [](Card& card, std::int32_t head) { return card.HeadCorrections.GetSelected(head); }},
      {"GetHeadCorrectionHash", [](Card& card, std::int32_t head,
                                   std::int32_t slot) { return card.HeadCorrections.GetHash(head, slot); }},
      {"GetOpticalParametersHeadCorrection",
       [](Card& card, std::int32_t head, std::int32_t slot) {
         return card.HeadCorrections.GetParameters(head, slot);
       }},
  };
  return Rows;
}

std::span<const Method> PowerCorrectionMethods() {
  static constexpr Method Rows[] = {
      {"CreatePowerCorrection",
       [](Card& card, OpticalParameters parameters) { card.PowerCorrection.Create(std::move(parameters)); }},
      {"LoadPowerCorrection", [](Card& card) { card.PowerCorrection.Load(); }},
      {"StorePowerCorrection", [](Card& card) { card.PowerCorrection.Store(); }},
      {"ChangePowerCorrectionValue",
       [](Card& card, Point3D position, double value) { card.PowerCorrection.ChangeValue(position, value); }},
      {"GetOpticalParametersPowerCorrection",
       [](Card& card) { return card.PowerCorrection.GetParameters(); }},
      {"GetPowerCorrection", [](Card& card) { card.PowerCorrection.PutCopy(); }},
      {"SetPowerCorrection", [](Card& card) { card.PowerCorrection.TakeCopy(); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
