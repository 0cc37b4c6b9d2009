#include "peripherals/InternalAPI.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "rpc/RemoteMethods.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

// Cards begin it in upper or lower case.
bool SaysUnknownMethod(std::string_view text) {
  constexpr std::string_view Words = "unknown method";
  return std::search(text.begin(), text.end(), Words.begin(), Words.end(),
                     [](unsigned char there, unsigned char sought) {
                       return std::tolower(there) == sought;
                     }) != text.end();
}

}  // namespace

MethodSupport InternalAPI::GetMethodSupport(const std::string& method) {
  try {
    return caller_.Call<bool>("IsMethodSupported", method) ? MethodSupport::Yes : MethodSupport::No;
  } catch (const RpcRemoteException& error) {
    const std::size_t index = FindRemoteMethod(method);
    const bool isExtension = index < std::size(RemoteMethods) && RemoteMethods[index].IsExtension;
    return isExtension && SaysUnknownMethod(error.GetText()) ? MethodSupport::No : MethodSupport::NotKnown;
  }
}

}  // namespace VELTRO::KELVO::ClientLib
