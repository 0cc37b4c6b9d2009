// Fonts on the card.
#pragma once

#include <cstdint>

#include "rpc/RpcCaller.h"
#include "services/Font.h"

namespace VELTRO::KELVO::ClientLib {

class FontAPI {
 public:
  explicit FontAPI(RpcCaller& caller) : caller_(caller) {}

  void Set(const Font& font) { caller_.Call("SetFont", font); }
  Font Get(std::int32_t fontId) { return caller_.Call<Font>("GetFont", fontId); }
  void Delete(std::int32_t fontId) { caller_.Call("DeleteFont", fontId); }
  void Load(std::int32_t fontId) { caller_.Call("LoadFont", fontId); }
  void Store(std::int32_t fontId) { caller_.Call("StoreFont", fontId); }
  void SetActive(std::int32_t fontId) { caller_.Call("SetFontActive", fontId); }

 private:
  RpcCaller& caller_;
};

}  // namespace VELTRO::KELVO::ClientLib
