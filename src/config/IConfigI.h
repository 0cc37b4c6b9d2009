// What every configuration record is.
#pragma once

#include <cstdint>
#include <string>

namespace VELTRO::KELVO::ClientLib {

class IConfigI {
 public:
  virtual ~IConfigI() = default;
  // Every field but the version back to its default.
  virtual void init() {}
  // The version that the record has, not the newest one.
  virtual std::int32_t GetConfigVersion() const { return 0; }
  virtual std::string ToString() const { return {}; }

 protected:
  IConfigI() = default;
  IConfigI(const IConfigI&) = default;
  IConfigI& operator=(const IConfigI&) = default;
};

inline std::string to_string(const IConfigI& config) {
  return config.ToString();
}

}  // namespace VELTRO::KELVO::ClientLib
