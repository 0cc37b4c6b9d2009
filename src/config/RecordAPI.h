// The four operations that every record of the card has.
#pragma once

#include "config/RecordMethods.h"
#include "config/RecordText.h"
#include "config/RecordWire.h"
#include "rpc/RpcCaller.h"

namespace VELTRO::KELVO::ClientLib {

template <class R>
class RecordAPI {
 public:
  explicit RecordAPI(RpcCaller& caller) : caller_(caller) {}

  R GetConfig() { return caller_.Call<R>(Methods::Get); }
  void SetConfig(const R& record) { caller_.Call(Methods::Set, record); }
  // The card's stored record becomes the active one.
  void LoadConfig() { caller_.Call(Methods::Load); }
  // The card's active record is stored.
  void StoreConfig() { caller_.Call(Methods::Store); }
  // The defaults; the version stays.
  void init(R& record) const { record.init(); }

 protected:
  RpcCaller& caller_;

 private:
  using Methods = RecordMethods<R>;
};

}  // namespace VELTRO::KELVO::ClientLib
