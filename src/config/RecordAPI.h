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

  R GetConfig() { return caller_.Call<R>(methods_.Get); }
  void SetConfig(const R& record) { caller_.Call(methods_.Set, record); }
  // The card's stored record becomes the active one.
  void LoadConfig() { caller_.Call(methods_.Load); }
  // The card's active record is stored.
  void StoreConfig() { caller_.Call(methods_.Store); }
  // The defaults; the version stays.
  void init(R& record) const { record.init(); }

 protected:
  RpcCaller& caller_;

 private:
  const RecordMethods methods_{R::Name};
};

}  // namespace VELTRO::KELVO::ClientLib
