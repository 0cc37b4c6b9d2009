#include "card/FileFailure.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace VELTRO::KELVO::VirtualCard {

void ThrowCannot(const char* action, const std::string& file) {
  throw std::runtime_error(std::string("Cannot ") + action + " '" + file +
                           "': " + std::generic_category().message(errno) + ".");
}

}  // namespace VELTRO::KELVO::VirtualCard
