#include "rpc/LogText.h"

#include <locale>
#include <sstream>

namespace VELTRO::KELVO::ClientLib {

std::string LogText(const msgpack::object& value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << value;
  return stream.str();
}

}  // namespace VELTRO::KELVO::ClientLib
