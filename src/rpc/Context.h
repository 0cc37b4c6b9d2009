// What the transport sees of the client above it.
#pragma once

namespace VELTRO::KELVO::ClientLib {

struct RpcClientConfiguration;

class Context {
 public:
  virtual ~Context() = default;
  virtual const RpcClientConfiguration& GetConfig() const = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
