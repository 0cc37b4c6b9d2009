#include "session/FrameLine.h"

namespace VELTRO::KELVO::ClientLib::Recording {

std::string_view ContentName(LineKind kind) {
  switch (kind) {
    case LineKind::Request:
      return "arguments";
    case LineKind::Response:
      return "result";
    case LineKind::Notification:
      return "values";
    case LineKind::Error:
    case LineKind::ErrorNotification:
      return "error";
    default:
      return {};
  }
}

}  // namespace VELTRO::KELVO::ClientLib::Recording
