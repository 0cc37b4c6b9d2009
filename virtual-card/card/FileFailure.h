// How the card tells that the machine's file system refused it.
#pragma once

#include <string>

namespace VELTRO::KELVO::VirtualCard {

// Throws std::runtime_error "Cannot ACTION 'FILE': REASON." with the reason that errno holds.
[[noreturn]] void ThrowCannot(const char* action, const std::string& file);

}  // namespace VELTRO::KELVO::VirtualCard
