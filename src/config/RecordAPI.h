// The four operations that every record of the card has.
#pragma once

#include <string>
#include <string_view>

#include "config/RecordText.h"
#include "config/RecordWire.h"
#include "rpc/RpcCaller.h"

namespace VELTRO::KELVO::ClientLib {

// The remote methods of a record, from what they have in common: "LaserConfig" gives "GetLaserConfig" and so on.
struct RecordMethods {
  explicit RecordMethods(std::string_view name)
      : Get("Get" + std::string(name)),
        Set("Set" + std::string(name)),
        Load("Load" + std::string(name)),
        Store("Store" + std::string(name)) {}

  const std::string Get, Set, Load, Store;
};

template <class R>
class RecordAPI {
 public:
  RecordAPI(RpcCaller& caller, std::string_view name) : caller_(caller), methods_(name) {}

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
  const RecordMethods methods_;
};

}  // namespace VELTRO::KELVO::ClientLib
