// What the four remote methods of a record are called.
#pragma once

#include <string>

namespace VELTRO::KELVO::ClientLib {

// From what they have in common: "LaserConfig" gives "GetLaserConfig" and so on.
struct RecordMethods {
  explicit RecordMethods(const std::string& name)
      : Get("Get" + name), Set("Set" + name), Load("Load" + name), Store("Store" + name) {}

  const std::string Get, Set, Load, Store;
};

}  // namespace VELTRO::KELVO::ClientLib
